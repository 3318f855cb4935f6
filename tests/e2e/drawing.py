"""Drawing in the track editor by pointer and keys, as the window system reports them."""

import os
import shutil
import subprocess
import tempfile
import time
import unittest

from zemblar_ui import SPLASH, Program, wait_for

TITLE = 'Zemblar 0.1 — Track Editor'


def pointer(*commands):
    """Moves, buttons and keys; each seen on its own."""
    subprocess.run(['xdotool', *map(str, commands)], check=True)
    time.sleep(0.15)


def drag(start, end, button=1):
    pointer('mousemove', *start)
    pointer('mousedown', button)
    for share in (0.1, 0.5, 0.9, 1.0):
        pointer('mousemove', *(round(a + share * (b - a)) for a, b in zip(start, end)))
    pointer('mouseup', button)


class DrawingTest(unittest.TestCase):
    """The program with one track editor, on an empty layout or a given file."""

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.path = os.path.join(self.folder, 'drawn.zblt')
        os.environ['XDG_CONFIG_HOME'] = os.path.join(self.folder, 'config')

    def start(self, program, *arguments):
        self.output = open(os.path.join(self.folder, 'log'), 'w', encoding='utf-8')
        self.addCleanup(self.output.close)
        self.program = Program(program, *arguments, output=self.output)
        self.addCleanup(self.program.__exit__)
        self.editor = self.program.window(TITLE)

    def start_drawing(self, program):
        self.start(program, '-e')
        time.sleep(SPLASH)
        self.find_canvas()

    def find_canvas(self):
        pointer('search', '--onlyvisible', '--name', 'Track Editor', 'windowactivate', '--sync')
        canvas = wait_for(lambda: [item for item in self.editor.walk() if item.name == 'View 1'
                                   and item.role != 'page tab'], 'the canvas')[0]
        x, y, width, height = canvas.extents()
        self.middle = (x + width // 2, y + height // 2)

    def at(self, x, y):
        """A place of the view on the screen."""
        return (self.middle[0] + x, self.middle[1] + y)

    def place(self, tool, x, y):
        """With the middle of what is new at that place of the view."""
        self.editor.find('push button', tool).press()
        pointer('mousemove', *self.at(x + 5, y + 5))
        pointer('mousemove', *self.at(x, y))
        pointer('click', 1)

    def join(self, start, end):
        """The end of a track that is at one place to the one at the other."""
        pointer('keydown', 'ctrl')
        drag(self.at(*start), self.at(*end))
        pointer('keyup', 'ctrl')

    def saved(self):
        if os.path.exists(self.path):
            os.remove(self.path)
            self.editor.choose('File', 'Save')
        else:
            self.editor.choose('File', 'Save As')
            dialog = self.program.window('Save As')
            dialog.find('text').type_text(self.path)
            dialog.find('push button', 'Save').press()
        wait_for(lambda: os.path.exists(self.path), 'the file')
        with open(self.path, encoding='utf-8') as file:
            return file.read()

    def next_steps(self):
        """What the entries of the menu say."""
        items = self.editor.find('menu', 'Edit').walk()
        return [item.name for item in items if item.role == 'menu item']

    def undo_all(self, most):
        """How many steps that were."""
        steps = 0
        while 'Undo' not in self.next_steps() and steps < most:
            pointer('key', 'ctrl+z')
            steps += 1
        return steps

    def redo(self, steps):
        for _ in range(steps):
            pointer('key', 'ctrl+shift+z')
