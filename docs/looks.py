#!/usr/bin/python3
"""Takes a sheet of the windows for docs/seeing.md. scripts/pictures calls it, in a session that has the
type and the colours of the sheet.

    looks.py FILE FOLDER DEMONSTRATION LAYOUT [CONVERT-OPTION...]

Works in the folder. The options of ImageMagick's convert are for the whole sheet.
"""

import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
from layout_text import with_all_functions  # noqa: E402
from picture import SPLASH, TITLE, pointer  # noqa: E402
from zemblar_ui import Program, press_keys, screenshot, type_keys, wait_for  # noqa: E402

EDITOR = 'Zemblar 0.1 — Track Editor'
LOCOMOTIVE = 'Express 103'
UNKNOWN = 'Railcar 5'
MANY = 60  # locomotives, more than a menu holds


def prepare(layout, folder):
    """A layout whose windows have much to show: all functions, and so many locomotives that one searches."""
    with open(layout, encoding='utf-8') as file:
        text = with_all_functions(file.read(), LOCOMOTIVE)
    place = text.index('\n  - !lok')
    more = ''.join(f'\n  - !lok\n    name: Goods Engine 56-{number:03}\n    id: {8000 + number}'
                   for number in range(MANY))
    path = os.path.join(folder, 'looks.zblt')
    with open(path, 'w', encoding='utf-8') as file:
        file.write(text[:place] + more + text[place:])
    return path


class Sheet:
    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.pictures = []

    def take(self):
        time.sleep(1)
        path = os.path.join(self.folder, f'look-{len(self.pictures)}.png')
        screenshot(path)
        self.pictures.append(path)

    def manage(self, title, *what):
        pointer('search', '--onlyvisible', '--name', title, *what)
        time.sleep(0.3)

    def activate(self, title):
        self.manage(title, 'windowactivate', '--sync')

    def throttle(self):
        self.activate('Throttle')
        window = self.program.window('Throttle')
        window.find('push button', '(None)').press()
        self.take()
        type_keys(LOCOMOTIVE)
        press_keys('Return')
        wait_for(lambda: window.find('slider', 'Speed').sensitive)
        self.manage('Throttle', 'windowmove', '0', '0')
        self.take()
        self.manage('Throttle', 'windowminimize')

    def track_view(self):
        self.activate('Track View')
        self.take()
        press_keys('ctrl+o')
        self.take()
        press_keys('Escape')
        self.manage('Track View', 'windowminimize')

    def editor(self):
        editor = self.program.window(EDITOR)
        self.activate('Track Editor')
        self.manage('Track Editor', 'windowmove', '0', '0', 'windowsize', '1024', '740')
        self.show(editor, 'East Point')
        self.take()
        self.show(editor, LOCOMOTIVE)
        self.take()
        self.show(editor, 'Station Stop')
        editor.find('push button', 'Edit Script').press()
        self.program.window('Script Editor')
        self.manage('Script Editor', 'windowmove', '0', '0')
        press_keys('Down', 'Down', 'Down', 'Right', 'Return')
        self.take()
        press_keys('Escape', 'ctrl+w')

    def show(self, editor, name):
        editor.show_page('All')
        press_keys('alt+i', 'ctrl+a')
        type_keys(name)
        press_keys('Return')

    def forget_a_locomotive(self):
        """What stands there from now on is nobody's."""
        self.show(self.program.window(EDITOR), UNKNOWN)
        press_keys('Delete')
        time.sleep(2)

    def messages(self):
        self.program.window(TITLE).choose('View', 'Messages')
        self.program.window('Messages')
        self.manage('Messages', 'windowmove', '0', '0')
        self.take()

    def write(self, path, options):
        whole = os.path.join(self.folder, 'looks.png')
        subprocess.run(['montage', *self.pictures, '-tile', '2x', '-geometry', '512x+4+4', whole],
                       check=True)
        subprocess.run(['convert', whole, *options, '+dither', '-colors', '128',
                        'PNG8:' + path], check=True)


def main(path, folder, demonstration, layout, *options):
    with Program(demonstration, prepare(layout, folder)) as program:
        program.window(EDITOR)
        time.sleep(SPLASH)
        sheet = Sheet(program, folder)
        sheet.activate('Track Editor')
        sheet.forget_a_locomotive()
        sheet.track_view()
        sheet.throttle()
        sheet.editor()
        sheet.messages()
        sheet.write(path, options)


main(*sys.argv[1:])
