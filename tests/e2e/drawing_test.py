#!/usr/bin/python3
"""A railway is drawn with pointer and keyboard, taken back step by step, and made again.

    drawing_test.py ZEMBLAR
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from zemblar_ui import Program, wait_for

ZEMBLAR = sys.argv[1]
TITLE = 'Zemblar 0.1 — Track Editor'
SPLASH = 5.5  # seconds until it has gone


def pointer(*commands):
    """Moves, buttons and keys, as the window system reports them; each seen on its own."""
    subprocess.run(['xdotool', *map(str, commands)], check=True)
    time.sleep(0.15)


def drag(start, end, button=1):
    pointer('mousemove', *start)
    pointer('mousedown', button)
    for share in (0.1, 0.5, 0.9, 1.0):
        pointer('mousemove', *(round(a + share * (b - a)) for a, b in zip(start, end)))
    pointer('mouseup', button)


class Drawing(unittest.TestCase):

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        os.environ['XDG_CONFIG_HOME'] = self.folder
        output = open(os.path.join(self.folder, 'log'), 'w', encoding='utf-8')
        self.addCleanup(output.close)
        self.program = Program(ZEMBLAR, '-e', output=output)
        self.addCleanup(self.program.__exit__)
        self.editor = self.program.window(TITLE)
        time.sleep(SPLASH)
        pointer('search', '--name', 'Track Editor', 'windowactivate', '--sync')
        canvas = wait_for(lambda: [item for item in self.editor.walk() if item.name == 'View 1'
                                   and item.role != 'page tab'], 'the canvas')[0]
        x, y, width, height = canvas.extents()
        self.middle = (x + width // 2, y + height // 2)

    def at(self, x, y):
        return (self.middle[0] + x, self.middle[1] + y)

    def place(self, tool, x, y):
        """With the middle of what is new at that place of the view."""
        self.editor.find('push button', tool).press()
        pointer('mousemove', *self.at(x + 5, y + 5))
        pointer('mousemove', *self.at(x, y))
        pointer('click', 1)

    def saved(self):
        path = os.path.join(self.folder, 'drawn.zblt')
        if os.path.exists(path):
            os.remove(path)
            self.editor.choose('File', 'Save')
        else:
            self.editor.choose('File', 'Save As')
            dialog = self.program.window('Save As')
            dialog.find('text').type_text(path)
            dialog.find('push button', 'Save').press()
        wait_for(lambda: os.path.exists(path), 'the file')
        with open(path, encoding='utf-8') as file:
            return file.read()

    def next_steps(self):
        """What the entries of the menu say."""
        items = self.editor.find('menu', 'Edit').walk()
        return [item.name for item in items if item.role == 'menu item']

    def test_all_that_was_drawn_is_undone_and_redone(self):
        empty = self.saved()
        self.place('Zone', -150, 0)
        self.place('Point', 50, -60)
        pointer('keydown', 'ctrl')
        drag(self.at(-110, 0), self.at(17, -65))
        pointer('keyup', 'ctrl')
        self.assertIn('Undo Join “Zone 1”', self.next_steps())
        # Back by one step and on again: what was joined lets go and holds again.
        joined = self.saved()
        self.assertIn('link: [1, common]', joined)
        pointer('key', 'ctrl+z')
        self.assertNotIn('link:', self.saved())
        pointer('key', 'ctrl+shift+z')
        self.assertEqual(self.saved(), joined)

        # What is being placed goes by Escape and leaves no step.
        self.editor.find('push button', 'Signal').press()
        pointer('mousemove', *self.at(0, 100))
        pointer('key', 'Escape')
        self.assertIn('Undo Join “Zone 1”', self.next_steps())

        drag(self.at(-190, 0), self.at(-220, 90))
        self.assertIn('Undo Move “Zone 1”', self.next_steps())
        self.editor.labelled('Name:').click()
        pointer('key', 'ctrl+a')
        pointer('type', 'Yard')
        pointer('key', 'Return')
        wait_for(lambda: 'name: Yard' in self.saved(), 'the name')
        drawn = self.saved()
        steps = 0
        while 'Undo' not in self.next_steps() and steps < 10:
            pointer('key', 'ctrl+z')
            steps += 1
        self.assertEqual(self.saved(), empty)
        for _ in range(steps):
            pointer('key', 'ctrl+shift+z')
        self.assertEqual(self.saved(), drawn)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
