"""Start, tray, windows and the end of the program."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from zemblar_ui import Program, press_keys, type_keys, wait_for

PROGRAM, OPENER = os.path.abspath(sys.argv.pop(1)), os.path.abspath(sys.argv.pop(1))
EDITOR = 'Zemblar 0.1 — Track Editor'
VIEW = 'Zemblar 0.1 — Track View'
SAMPLE = '%YAML 1.2\ntitle: Harbour\nobjects:\n  - !view\n    name: Quay\n    id: 0\n'


def remember(path):
    """Makes the program start with this layout."""
    folder = os.path.join(os.environ['XDG_CONFIG_HOME'], 'zemblar')
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, 'options.ini'), 'w', encoding='utf-8') as options:
        options.write(f'[zemblar]\nlayout=file://{path}\n' if path else '')


def objects(editor):
    """The tree of all objects in an editor's panel."""
    editor.show_page('All')
    return editor.find('tree table', 'Objects')


class Start(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        remember(None)

    def tearDown(self):
        self.folder.cleanup()

    def path(self, name, text=None):
        path = os.path.join(self.folder.name, name)
        if text is not None:
            with open(path, 'w', encoding='utf-8') as file:
                file.write(text)
        return path

    def start(self, *arguments):
        # What the toolkit calls critical is a fault of ours.
        return Program(PROGRAM, *arguments, env={'G_DEBUG': 'fatal-criticals'})

    def test_opens_an_editor_on_a_new_layout_and_quits_from_its_menu(self):
        with self.start('somefile.zblt') as program:
            editor = program.window(EDITOR)
            rows = objects(editor)
            wait_for(lambda: rows.rows() == ['New Layout', 'Views', 'View 1', 'Locomotives',
                                             'Points & Signals', 'Blocks', 'Devices', 'Scripts'],
                     'the objects of a new layout')
            self.assertNotIn(VIEW, [w.name for w in program.windows()])
            editor.choose('File', 'Quit')
            self.assertEqual(program.wait_for_end(), 0)

    def test_follows_new_open_save_and_rename_in_every_window(self):
        with self.start('-e', '-v') as program:
            editor, view = program.window(EDITOR), program.window(VIEW)
            rows = objects(editor)
            rows.select_row('Views')
            editor.find('push button', 'New View').press()
            view.find('page tab', 'View 2')
            rows.select_row('View 2')
            wait_for(lambda: editor.labelled('Name:').text() == 'View 2')
            editor.labelled('Name:').type_text('Yard')
            view.find('page tab', 'Yard')
            self.assertIn('Yard', rows.rows())
            editor.labelled('Hidden:').press()
            wait_for(lambda: not view.find_all('page tab', 'Yard'), 'the hidden page to go')
            self.save_as(program, editor, self.path('railway'))
            self.assertTrue(os.path.exists(self.path('railway.zblt')))
            view.choose('File', 'New')
            wait_for(lambda: not editor.find_all('page tab', 'Yard'), 'New')
            program.open_layout(view, self.path('railway.zblt'))
            editor.find('page tab', 'Yard')
            wait_for(lambda: 'Yard' in rows.rows(), 'the view of the file')
            program.open_layout(view, self.path('broken.zblt', 'objects: [!ship {}]'))
            program.wait_for_status('Unimplemented Load: !ship')
            self.assertIn('Yard', rows.rows())

    def test_renames_and_deletes_in_the_tree_by_keys_and_context_menu(self):
        with self.start('-e') as program:
            editor = program.window(EDITOR)
            rows = objects(editor)
            rows.select_row('View 1')
            rows.accessible.queryComponent().grabFocus()
            press_keys('F2')
            type_keys('Quay')
            press_keys('Return')
            wait_for(lambda: 'Quay' in rows.rows(), 'the new name')
            editor.find('page tab', 'Quay')
            rows.select_row('Views')
            press_keys('F2', 'Delete')  # neither applies
            self.assertIn('Views', rows.rows())
            rows.select_row('Quay')
            press_keys('shift+F10')
            self.popup_item(program, 'Delete').press()
            program.wait_for_status('Deleted “Quay”.')
            editor.find('push button', 'New View').press()
            editor.find('page tab', 'View 1')
            wait_for(lambda: 'View 1' in rows.rows(), 'the new view')

    def test_starts_with_the_remembered_layout_and_lives_on_without_windows(self):
        remember(self.path('harbour.zblt', SAMPLE))
        with self.start() as program:
            view = program.window(VIEW)
            view.find('page tab', 'Quay')
            view.choose('Block Control', 'Enable Block Control')
            view.choose('File', 'Close')
            wait_for(lambda: not program.windows(), 'the end of the last window')
            self.open_tray_menu(program)
            self.popup_item(program, 'Track View').press()
            again = program.window(VIEW)
            wait_for(lambda: not again.find('check menu item', 'Enable Block Control').checked,
                     'the switch as it was left')
            self.open_tray_menu(program)
            self.popup_item(program, 'Quit').press()
            self.assertEqual(program.wait_for_end(), 0)

    def test_says_which_layout_cannot_be_opened_and_runs_on(self):
        remember(self.path('missing.zblt'))
        with self.start() as program:
            program.window(VIEW).find('page tab', 'View 1')
            program.wait_for_status(f"Couldn't open {self.path('missing.zblt')}: Empty File")
            self.open_tray_menu(program)
            self.assertFalse(self.popup_item(program, 'New').sensitive)
            self.assertTrue(self.popup_item(program, 'Save').sensitive)

    def test_a_second_start_shows_the_program_that_runs(self):
        with self.start() as program:
            program.window(EDITOR)
            self.run_beside(PROGRAM)
            self.assertEqual([w.name for w in program.windows()].count(EDITOR), 1)
            self.run_beside(PROGRAM, '--track-view')
            view = program.window(VIEW)
            self.run_beside(OPENER, self.path('harbour.zblt', SAMPLE))
            view.find('page tab', 'Quay')
            view.choose('File', 'Close')
            program.window(EDITOR).choose('File', 'Close')
            wait_for(lambda: not program.windows(), 'the end of the last window')
            self.run_beside(PROGRAM)
            program.window(VIEW).find('page tab', 'Quay')
            with self.start('--new-instance', '-e') as another:
                another.window(EDITOR)

    def test_a_file_is_opened_by_a_program_that_is_started_for_it(self):
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.folder.name)
        self.path('harbour.zblt', SAMPLE)
        with Program(OPENER, 'harbour.zblt') as program:
            view = program.window(VIEW)
            view.find('page tab', 'Quay')
            view.choose('File', 'Quit')
            self.assertEqual(program.wait_for_end(), 0)
        self.assertEqual(subprocess.run([OPENER, 'none.zblt'], check=False).returncode, 1)

    def run_beside(self, *command):
        self.assertEqual(subprocess.run(command, check=False, timeout=20).returncode, 0)

    def test_shows_what_a_damaged_file_says_of_itself(self):
        remember(self.path('damaged.zblt', '%YAML 1.2\ntitle: "\\ü"\nobjects: []\n'))
        with self.start() as program:
            program.window(VIEW)
            program.wait_for_status("Couldn't open")

    def test_tells_in_the_status_line_why_a_file_cannot_be_saved(self):
        os.mkdir(self.path('shelf'))
        remember(self.path('shelf/harbour.zblt', SAMPLE))
        with self.start() as program:
            view = program.window(VIEW)
            view.find('page tab', 'Quay')
            shutil.rmtree(self.path('shelf'))
            view.choose('File', 'Save')
            program.wait_for_status(f"Couldn't save {self.path('shelf/harbour.zblt')}")

    def test_a_wrong_option_ends_the_program_with_a_message(self):
        for language, option in [('C.UTF-8', '--no-such-option'), ('C', '--größe')]:
            run = subprocess.run([PROGRAM, option], capture_output=True, text=True, check=False,
                                 env={**os.environ, 'LANG': language})
            self.assertEqual(run.returncode, 1)
            self.assertIn('zemblar: ', run.stderr)

    def save_as(self, program, window, path):
        window.choose('File', 'Save As')
        dialog = program.window('Save As')
        dialog.find('text').type_text(path)
        dialog.find('push button', 'Save').press()
        program.gone('Save As')
        wait_for(lambda: os.path.exists(path) or os.path.exists(path + '.zblt'), 'the saved file')

    def open_tray_menu(self, program):
        """A right click on the status icon, at the right end of the tray."""
        def look():
            subprocess.run(['xdotool', 'mousemove', '1266', '14', 'click', '3'], check=True)
            # Another click would close a menu that is slow to come.
            return self.popup_item(program, 'Quit', limit=5)
        wait_for(look, 'the menu of the status icon', limit=40)

    def popup_item(self, program, name, limit=15):
        def look():
            menus = [w for w in program.windows() if w.role == 'window']
            return [item for menu in menus for item in menu.find_all('menu item', name)]
        return wait_for(look, f'the entry "{name}"', limit)[0]


if __name__ == '__main__':
    unittest.main(verbosity=2)
