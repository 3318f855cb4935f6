#!/usr/bin/python3
"""The railway is operated by clicks on its picture, with the pointer.

    diagram_test.py DEMONSTRATION LAYOUT
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

import two_trains
from zemblar_ui import Program, wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]
TITLE = 'Zemblar 0.1 — Track View'
SPLASH = 5.5  # seconds until it has gone

# In the sample layout. On either leg of East Point, away from the other; where Exit Signal 1
# stands, which looks to the right; and in the middle of a zone.
CURVED, STRAIGHT = (254.7, 159.0), (255.0, 170.0)
SIGNAL = (195, 188)
ZONE = (0, 170)


def pointer(*commands):
    """Moves, buttons and the wheel, as the window system reports them."""
    subprocess.run(['xdotool', *map(str, commands)], check=True)


def pixels(x, y, width=1, height=1):
    """Red, green and blue of each pixel around a place on the screen."""
    area = f'{width}x{height}+{x - width // 2}+{y - height // 2}'
    data = subprocess.run(['import', '-window', 'root', '-crop', area, '-depth', '8', 'rgb:-'],
                          check=True, capture_output=True).stdout
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


class Clicks(unittest.TestCase):

    def setUp(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        os.environ['XDG_CONFIG_HOME'] = folder
        output = open(os.path.join(folder, 'log'), 'w', encoding='utf-8')
        self.addCleanup(output.close)
        # With the pictures of its signals beside it.
        source = os.path.dirname(LAYOUT)
        for name in ('layouts', 'signals'):
            shutil.copytree(os.path.join(source, '..', name), os.path.join(folder, name))
        layout = os.path.join(folder, 'layouts', os.path.basename(LAYOUT))
        self.program = Program(DEMONSTRATION, layout, output=output)
        self.addCleanup(self.program.__exit__)
        self.log = two_trains.Log(output.name)

    def open_diagram(self):
        window = self.program.window(TITLE)
        self.program.window('Throttle')
        time.sleep(SPLASH)
        pointer('search', '--name', 'Track View', 'windowactivate', '--sync')
        canvas = wait_for(lambda: [item for item in window.walk() if item.name == 'Station'
                                   and item.role != 'page tab'], 'the canvas')[0]
        return Diagram(canvas)

    def click_signal(self, diagram, clicks, colour):
        """It is drawn in pixels, whatever the zoom, with its head beside its place."""
        head = diagram.on_screen(SIGNAL, (16, 0))
        pointer('mousemove', *head, 'click', '--repeat', clicks, '--delay', 40, 1)

        def lamps():
            seen = pixels(*head, 30, 14)
            return {'green' if g > r else 'red' for r, g, b in seen if abs(g - r) > 60}
        wait_for(lambda: lamps() == {colour}, f'{colour} light', 5)

    def test_points_and_signals_are_set_where_they_are_seen(self):
        diagram = self.open_diagram()
        self.log.wait_for('stands in Station 1')
        looks = (lambda: None,
                 lambda: diagram.turn_wheel(6, 900, 700),
                 lambda: diagram.pan(-150, -60),
                 lambda: diagram.turn_wheel(-9, 400, 300))
        for look in looks:
            look()
            curved, straight = diagram.on_screen(CURVED), diagram.on_screen(STRAIGHT)
            for leg, command in ((curved, r'<- set\(11,switch\[DCC5g\]'),
                                 (straight, r'<- set\(11,switch\[DCC5r\]')):
                wait_for(lambda: 100 < pixels(*leg)[0][0] < 190, f'grey track at {leg}', 5)
                pointer('mousemove', *leg, 'click', 1)
                wait_for(lambda: pixels(*leg)[0][0] < 95, f'black track at {leg}', 5)
                self.log.wait_for(command)
            self.click_signal(diagram, 1, 'green')
            self.log.wait_for(r'<- set\(11,switch\[DCC13g\]')
            time.sleep(0.5)  # or the toolkit takes the next for one of the same double click
            self.click_signal(diagram, 2, 'red')
            self.log.wait_for(r'<- set\(11,switch\[DCC13r\]')
            time.sleep(0.5)
        told = len(self.log.lines())
        pointer('mousemove', *diagram.on_screen(ZONE), 'click', 1)
        pointer('mousemove', *straight, 'click', 1)
        time.sleep(0.5)
        self.assertFalse([line for line in self.log.lines()[told:] if 'switch[' in line])


unittest.main(argv=sys.argv[:1], verbosity=2)
