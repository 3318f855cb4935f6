"""The picture of the sample layout in the track view, as the pointer meets it."""

import subprocess
import time

import zemblar_ui
from zemblar_ui import SPLASH, wait_for

TITLE = 'Zemblar 0.1 — Track View'

# On either leg of East Point, away from the other; where Exit Signal 1 stands, which looks to the
# right; and in the middle of a zone.
CURVED, STRAIGHT = (254.7, 219.0), (255.0, 230.0)
SIGNAL = (195, 248)
ZONE = (0, 230)


def pointer(*commands):
    """Moves, buttons and the wheel, as the window system reports them."""
    subprocess.run(['xdotool', *map(str, commands)], check=True)


def pixels(x, y, width=1, height=1):
    """Red, green and blue of each pixel around a place on the screen."""
    data = zemblar_ui.pixels(x - width // 2, y - height // 2, width, height)
    return list(zip(data[0::3], data[1::3], data[2::3]))


class Diagram:
    """Where the places of a view are on the screen. Its origin is in the middle at first."""

    def __init__(self, canvas):
        x, y, width, height = canvas.extents()
        self.zoom, self.x, self.y = 1.0, x + width / 2, y + height / 2

    def on_screen(self, place, beside=(0, 0)):
        return (round(self.x + self.zoom * place[0]) + beside[0],
                round(self.y + self.zoom * place[1]) + beside[1])

    def turn_wheel(self, steps, x, y):
        pointer('mousemove', x, y, 'click', '--repeat', abs(steps), 4 if steps > 0 else 5)
        factor = 1.1 ** steps
        self.zoom *= factor
        self.x, self.y = x + factor * (self.x - x), y + factor * (self.y - y)

    def pan(self, x, y):
        pointer('mousemove', 640, 460, 'mousedown', 2)
        pointer('mousemove', 640 + x // 2, 460, 'mousemove', 640 + x, 460 + y, 'mouseup', 2)
        self.x, self.y = self.x + x, self.y + y


def find_diagram(program):
    window = program.window(TITLE)
    program.window('Throttle')
    time.sleep(SPLASH)
    pointer('search', '--name', 'Track View', 'windowactivate', '--sync')
    canvas = wait_for(lambda: [item for item in window.walk() if item.name == 'Station'
                               and item.role != 'page tab'], 'the canvas')[0]
    return Diagram(canvas)
