"""What is not lost when the program is killed."""

import os
import sys
import tempfile
import unittest

from zemblar_ui import NotSeen, Program, wait_for

PROGRAM = sys.argv.pop(1)
EDITOR = 'Zemblar 0.1 — Track Editor'
SAMPLE = '%YAML 1.2\ntitle: Harbour\nobjects:\n  - !view\n    name: Quay\n    id: 0\n'


class Recovery(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = os.path.join(self.folder.name, 'harbour.zblt')
        with open(self.path, 'w', encoding='utf-8') as file:
            file.write(SAMPLE)
        options = os.path.join(os.environ['XDG_CONFIG_HOME'], 'zemblar')
        os.makedirs(options, exist_ok=True)
        with open(os.path.join(options, 'options.ini'), 'w', encoding='utf-8') as file:
            file.write(f'[zemblar]\nlayout=file://{self.path}\n')
        self.copies = os.path.join(options, 'recovery')

    def tearDown(self):
        self.folder.cleanup()

    def start(self):
        return Program(PROGRAM, '-e', env={'G_DEBUG': 'fatal-criticals'})

    def saved(self):
        with open(self.path, encoding='utf-8') as file:
            return file.read()

    def further_files(self, editor):
        return editor.find('menu', 'Further Files')

    def add_view(self, editor):
        editor.show_page('All')
        editor.find('tree table', 'Objects').select_row('Views')
        editor.find('push button', 'New View').press()

    def test_a_killed_program_loses_nothing_but_the_last_seconds(self):
        with self.start() as program:
            editor = program.window(EDITOR)
            editor.find('page tab', 'Quay')
            self.assertFalse(self.further_files(editor).sensitive)
            self.add_view(editor)
            editor.find('page tab', 'View 1')
            wait_for(lambda: [c for c in os.listdir(self.copies) if c.endswith('.current')],
                     'the recovery copy')
            program.process.kill()
            program.wait_for_end()
        self.assertEqual(self.saved(), SAMPLE)

        with self.start() as program:
            editor = program.window(EDITOR)
            program.wait_for_status('Unsaved work on harbour.zblt was found')
            self.assertFalse(editor.find_all('page tab', 'View 1'))
            entries = self.further_files(editor).find_all('menu item')
            self.assertEqual(len(entries), 1)
            self.assertIn('Unsaved Work on harbour.zblt', entries[0].name)
            entries[0].press()
            editor.find('page tab', 'View 1')
            program.wait_for_status('Opened what was kept of harbour.zblt')
            editor.choose('File', 'Save')
            wait_for(lambda: 'View 1' in self.saved(), 'the saved file')
            wait_for(lambda: not self.further_files(editor).sensitive, 'the end of the copy')
            editor.choose('File', 'Quit')
            self.assertEqual(program.wait_for_end(), 0)

        with self.start() as program:
            editor = program.window(EDITOR)
            editor.find('page tab', 'View 1')
            self.assertEqual(program.status(), '')
            with self.assertRaises(NotSeen):
                program.wait_for_status('Unsaved', limit=1)
            self.assertFalse(self.further_files(editor).sensitive)


if __name__ == '__main__':
    unittest.main(verbosity=2)
