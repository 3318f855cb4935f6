"""What is not lost when the program ends, in whatever way."""

import os
import shutil
import signal
import subprocess
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

    def kept(self, editor):
        return editor.find('menu', 'Recover Unsaved Work')

    def recovery_copies(self):
        paths = [os.path.join(self.copies, c) for c in os.listdir(self.copies)]
        texts = []
        for path in paths:
            if path.endswith('.current'):
                with open(path, encoding='utf-8') as file:
                    texts.append(file.read())
        return texts

    def add_view(self, editor):
        editor.show_page('All')
        editor.find('tree table', 'Objects').select_row('Views')
        editor.find('push button', 'New View').press()

    def test_a_killed_program_loses_nothing_but_the_last_seconds(self):
        with self.start() as program:
            editor = program.window(EDITOR)
            editor.find('page tab', 'Quay')
            self.assertFalse(self.kept(editor).sensitive)
            self.add_view(editor)
            editor.find('page tab', 'View 1')
            wait_for(self.recovery_copies, 'the recovery copy')
            program.process.kill()
            program.wait_for_end()
        self.assertEqual(self.saved(), SAMPLE)

        with self.start() as program:
            editor = program.window(EDITOR)
            program.wait_for_status('Unsaved work on harbour.zblt was found')
            self.assertFalse(editor.find_all('page tab', 'View 1'))
            entries = self.kept(editor).find_all('menu item')
            self.assertEqual(len(entries), 1)
            self.assertIn('Unsaved Work on harbour.zblt', entries[0].name)
            entries[0].press()
            editor.find('page tab', 'View 1')
            program.wait_for_status('Opened what was kept of harbour.zblt')
            editor.choose('File', 'Save')
            wait_for(lambda: 'View 1' in self.saved(), 'the saved file')
            program.wait_for_status('Saved harbour.zblt')
            wait_for(lambda: not self.kept(editor).sensitive, 'the end of the copy')
            editor.choose('File', 'Quit')
            self.assertEqual(program.wait_for_end(), 0)

        with self.start() as program:
            editor = program.window(EDITOR)
            editor.find('page tab', 'View 1')
            self.assertEqual(program.status(), '')
            with self.assertRaises(NotSeen):
                program.wait_for_status('Unsaved', limit=1)
            self.assertFalse(self.kept(editor).sensitive)

    def test_an_evening_with_an_ecos_is_there_the_next_day(self):
        complete = self.path + '.complete'
        with self.start() as program:
            editor = program.window(EDITOR)
            self.add_view(editor)
            editor.find('tree table', 'Objects').select_row('Devices')
            editor.find('push button', 'New Device').press()
            program.application().find('menu item', 'ESU ECoS').press()
            editor.find('tree table', 'Objects').select_row('ESU ECoS 1')
            editor.choose('File', 'Save')
            program.wait_for_status('Saved harbour.zblt. A layout file cannot hold “ESU ECoS 1”')
            program.wait_for_status('the whole layout is in harbour.zblt.complete')
            editor.choose('File', 'Quit')
            self.assertEqual(program.wait_for_end(), 0)

        with self.start() as program:
            editor = program.window(EDITOR)
            editor.find('page tab', 'View 1')
            program.wait_for_status('Opened harbour.zblt.complete')
            self.assertFalse(self.kept(editor).sensitive)
            first = os.stat(complete).st_mtime_ns
            editor.choose('File', 'Save')
            wait_for(lambda: os.stat(complete).st_mtime_ns != first, 'the second evening')
            with open(complete, encoding='utf-8') as file:
                self.assertIn('ESU ECoS 1', file.read())

            other = os.path.join(self.folder.name, 'other')
            os.mkdir(other)
            for ending in '', '.complete':
                shutil.copy(self.path + ending, os.path.join(other, 'yard.zblt' + ending))
            editor.choose('File', 'New')
            program.open_layout(editor, os.path.join(other, 'yard.zblt'))
            editor.find('page tab', 'View 1')
            program.wait_for_status('Opened yard.zblt.complete')

    def test_an_end_from_outside_keeps_the_work_of_the_last_second(self):
        for number in signal.SIGTERM, signal.SIGINT, signal.SIGHUP:
            # Whoever runs the tests may ignore it, and so would the program.
            signal.signal(number, signal.SIG_DFL)
            with self.subTest(number.name), self.start() as program:
                self.work_of_a_moment(program)
                program.process.send_signal(number)
                self.assertEqual(program.wait_for_end(), -number)
                self.assertTrue(any('View 1' in text for text in self.recovery_copies()))

    def test_the_loss_of_the_display_keeps_the_work_of_the_last_second(self):
        reader, writer = os.pipe()
        display = subprocess.Popen(['Xvfb', '-displayfd', str(writer), '-screen', '0', '1280x800x24'],
                                   pass_fds=[writer], stderr=subprocess.DEVNULL)
        number = os.read(reader, 16).decode().strip()
        with Program(PROGRAM, '-e', env={'DISPLAY': ':' + number}) as program:
            self.work_of_a_moment(program)
            display.kill()
            display.wait()
            self.assertEqual(program.wait_for_end(), 1)
        self.assertTrue(any('View 1' in text for text in self.recovery_copies()))

    def work_of_a_moment(self, program):
        shutil.rmtree(self.copies, ignore_errors=True)
        editor = program.window(EDITOR)
        editor.find('page tab', 'Quay')
        self.add_view(editor)
        editor.find('page tab', 'View 1')


if __name__ == '__main__':
    unittest.main(verbosity=2)
