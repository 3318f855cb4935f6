#!/usr/bin/python3
"""Takes the pictures in docs/images. scripts/pictures calls it.

    pictures.py FOLDER PROGRAM [ARGUMENT...]
"""

import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
from zemblar_ui import Program, screenshot, wait_for  # noqa: E402

SPLASH = 5.5  # seconds until it has gone
STOPPED = 4  # seconds until block control has stopped the train


def take(folder, name, box=None):
    """The screen, or the part of it that an x, y, width and height name."""
    time.sleep(0.6)
    path = os.path.join(folder, name + '.png')
    screenshot(path)
    crop = ['-crop', '{2}x{3}+{0}+{1}'.format(*box), '+repage'] if box else []
    subprocess.run(['convert', path, *crop, '-colors', '200', path], check=True)


def frame_of(window, title=24, edge=2):
    x, y, width, height = window.extents()
    return x - edge, y - title, width + 2 * edge, height + title + edge


def activate(title):
    subprocess.run(['xdotool', 'search', '--name', title, 'windowactivate', '--sync'], check=True)


def drive_with_throttle(program, throttle):
    throttle.find('push button', '(None)').press()
    program.application().find('menu item', 'Express 103').press()
    wait_for(lambda: throttle.find('slider', 'Speed').sensitive)
    throttle.find('slider', 'Speed').set_value(84)
    throttle.find('toggle button', 'Light').press()


def show(editor, name):
    for tabs in editor.find_all('page tab list'):
        if 'All' in [tab.name for tab in tabs.children()]:
            tabs.select(1)
    editor.find('tree table', 'Objects').select_row(name)


def main(folder, *command):
    with Program(*command) as program:
        editor = program.window('Zemblar 0.1 — Track Editor')
        throttle = program.window('Throttle')
        time.sleep(SPLASH)
        show(editor, 'Express 103')
        subprocess.run(['xdotool', 'search', '--name', 'Throttle', 'windowmove', '200', '300'],
                       check=True)
        drive_with_throttle(program, throttle)
        activate('Throttle')
        take(folder, 'throttle', frame_of(throttle))
        time.sleep(STOPPED)
        take(folder, 'overview')
        subprocess.run(['xdotool', 'search', '--name', 'Throttle', 'windowminimize'], check=True)
        show(editor, 'East Point')
        activate('Track Editor')
        take(folder, 'track-editor', frame_of(editor))
        # The tray stands in the upper right corner.
        width = int(os.environ['ZEMBLAR_SCREEN'].split('x')[0])
        subprocess.run(['xdotool', 'mousemove', str(width - 12), '14', 'click', '3'], check=True)
        take(folder, 'tray-menu', (width - 260, 0, 260, 320))
        subprocess.run(['xdotool', 'key', 'Escape'], check=True)


main(*sys.argv[1:])
