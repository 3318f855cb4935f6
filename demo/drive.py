#!/usr/bin/python3
"""Drives a locomotive in the demonstration as a person would, and takes a picture.

    drive.py PICTURE PROGRAM [ARGUMENT...]

Runs inside tests/e2e/session.sh.
"""

import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
from zemblar_ui import Program, screenshot, wait_for  # noqa: E402


def choose_locomotive(throttle, name):
    button = throttle.labelled('Locomotive:')
    button.press()
    return button


def drive(program, picture):
    throttle = program.window('Throttle')
    program.window('Zemblar 0.1 — Track Editor')
    print(throttle.tree())
    screenshot(picture)


def main(picture, *command):
    with Program(*command) as program:
        drive(program, picture)


main(*sys.argv[1:])
