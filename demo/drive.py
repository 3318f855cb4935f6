#!/usr/bin/python3
"""Drives the demonstration as a person would, and takes a picture.

    drive.py PICTURE PROGRAM [ARGUMENT...]

Runs inside tests/e2e/session.sh, with the program's helper for end-to-end tests.
"""

import os
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
import two_trains  # noqa: E402
from zemblar_ui import Program, screenshot  # noqa: E402

# Seconds between two acts, so that the log reads as it would for a person; and what the splash
# takes to go.
PAUSE = 0.4
SPLASH = 4.5


def act(what, action, *arguments):
    print(what, flush=True)
    action(*arguments)
    time.sleep(PAUSE)


def show_object(editor, name):
    editor.find('tree table', 'Objects').select_row(name)


def drive(program, picture, log):
    editor = program.window('Zemblar 0.1 — Track Editor')
    throttle = program.window('Throttle')
    time.sleep(SPLASH)
    editor.show_page('All')
    editor.find('tree table', 'Objects').unfold_row('Blocks')
    show_object(editor, 'East Curve')
    two_trains.run(program, throttle, log, tell=lambda text: print(text, flush=True),
                   picture=lambda: screenshot(picture))
    show_object(editor, 'Scripts')
    act('Scripts are started: the railcar on the branch goes to and fro.',
        editor.find('push button', 'Start Scripts').press)
    log.wait_for('Railcar 5 enters Branch South')
    act('A function.', throttle.find_all('toggle button')[0].press)
    act('Emergency stop.', throttle.find('push button', 'Emergency Stop').press)
    editor.choose('File', 'Quit')
    return program.wait_for_end()


def print_as_it_grows(path, ended):
    """What the program prints, between what this prints."""
    with open(path, encoding='utf-8') as file:
        while True:
            over = ended.is_set()
            sys.stdout.write(file.read())
            sys.stdout.flush()
            if over:
                return
            time.sleep(0.05)


def main(picture, *command):
    ended = threading.Event()
    with tempfile.NamedTemporaryFile('w', encoding='utf-8') as output:
        printing = threading.Thread(target=print_as_it_grows, args=(output.name, ended))
        printing.start()
        try:
            with Program(*command, output=output) as program:
                return drive(program, picture, two_trains.Log(output.name))
        finally:
            ended.set()
            printing.join()


sys.exit(main(*sys.argv[1:]))
