#!/usr/bin/python3
"""Drives a locomotive in the demonstration as a person would, and takes a picture.

    drive.py PICTURE PROGRAM [ARGUMENT...]

Runs inside tests/e2e/session.sh, with the program's helper for end-to-end tests.
"""

import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
from zemblar_ui import Program, screenshot, wait_for  # noqa: E402

# Seconds between two acts, so that the log reads as it would for a person; and what the splash
# takes to go.
PAUSE = 0.4
SPLASH = 4.5


def act(what, action, *arguments):
    print(what, flush=True)
    action(*arguments)
    time.sleep(PAUSE)


def choose_first_locomotive(program, throttle):
    throttle.find('push button', '(None)').press()
    names = [item.name for item in program.application().find_all('menu item')]
    name = names[names.index('Locomotives') + 1]
    program.application().find('menu item', name).press()
    wait_for(lambda: throttle.find('slider', 'Speed').sensitive, 'the locomotive')
    print(f'Chose {name}.', flush=True)


def show_devices(editor):
    for tabs in editor.find_all('page tab list'):
        if 'All' in [tab.name for tab in tabs.children()]:
            tabs.select(1)
    editor.find('tree table', 'Objects').select_row('ESU ECoS 1')


def drive(program, picture):
    editor = program.window('Zemblar 0.1 — Track Editor')
    throttle = program.window('Throttle')
    time.sleep(SPLASH)
    show_devices(editor)
    choose_first_locomotive(program, throttle)
    scale = throttle.find('slider', 'Speed')
    act('Speed 40.', scale.set_value, 40)
    act('The other way.', throttle.find('push button', 'Direction').press)
    act('A function.', throttle.find_all('toggle button')[0].press)
    act('Emergency stop.', throttle.find('push button', 'Emergency Stop').press)
    act('Speed 63.', scale.set_value, 63)
    screenshot(picture)
    editor.choose('File', 'Quit')
    return program.wait_for_end()


def main(picture, *command):
    with Program(*command) as program:
        return drive(program, picture)


sys.exit(main(*sys.argv[1:]))
