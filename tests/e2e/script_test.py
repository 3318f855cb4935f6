#!/usr/bin/python3
"""Scripts are written in their editor, by keys and with the pointer, and drive a train.

    script_test.py DEMONSTRATION LAYOUT
"""

import subprocess
import sys
import time
import unittest

from demonstration import DemonstrationTest
from picture import pointer
from two_trains import choose_locomotive
from zemblar_ui import SPLASH, NotSeen, pixels, press_keys, type_keys, wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]
TITLE = 'Script Editor'
SHORTEST_WORD = 8  # pixels of a line under a word


def colours(x, y, width, height):
    """Of a part of the screen, row by row."""
    data = pixels(x, y, width, height)
    points = list(zip(data[0::3], data[1::3], data[2::3]))
    return [points[i:i + width] for i in range(0, len(points), width)]


def underlined(row):
    """The middles of the parts of a pixel row in which one dark colour goes on and on."""
    found = []
    begin = 0
    for x in range(1, len(row) + 1):
        if x < len(row) and row[x] == row[begin]:
            continue
        if x - begin >= SHORTEST_WORD and sum(row[begin]) < 600:
            found.append((begin + x) // 2)
        begin = x
    return found


class Scripts(DemonstrationTest):

    def setUp(self):
        self.start(DEMONSTRATION, layout=LAYOUT)
        self.log.wait_for(r'Express 103 stands in Station 1')
        time.sleep(SPLASH)
        self.open_new_script()

    def open_new_script(self):
        editor = self.program.window('Zemblar 0.1 — Track Editor')
        editor.show_page('All')
        objects = editor.find('tree table', 'Objects')
        objects.select_row('Scripts')
        before = set(objects.rows())
        editor.find('push button', 'New Script').press()
        [name] = wait_for(lambda: set(objects.rows()) - before, 'the new script')
        objects.select_row(name)
        editor.find('push button', 'Edit Script').press()
        self.window = self.program.window(TITLE)
        wait_for(lambda: self.window.has('active'), f'{TITLE} in front')
        self.sentences = self.window.find('tree table', 'Event/Command')
        self.expect('Add Condition…', 'Add Command…')

    def expect(self, *sentences):
        wait_for(lambda: self.sentences.rows() == list(sentences),
                 f'{sentences}, not {self.sentences.rows()}')

    def menu_item(self, name):
        return self.program.application().find('menu item', name)

    def is_shown(self, role, name):
        """Items of menus that are not open have the same names."""
        return any(item.has('showing') for item in self.program.application().find_all(role, name))

    def choose_by_keys(self, name):
        """In the menu that is open."""
        wait_for(lambda: self.is_shown('menu item', name), f'a menu with {name}')
        for _ in range(40):
            if any(item.has('focused')
                   for item in self.program.application().find_all('menu item', name)):
                return press_keys('Return')
            press_keys('Down')
            time.sleep(0.05)
        raise NotSeen(f'the keys do not reach {name}')

    def click_word(self, sentence, word):
        """The word counts from 0, among those that can be clicked."""
        row = self.sentences.rows().index(sentence)
        box = self.sentences.accessible.queryTable().getAccessibleAt(row, 0)
        x, y, width, height = list(box.queryComponent().getExtents(0))
        words = max((underlined(line) for line in colours(x, y, width, height)), key=len)
        subprocess.run(['xdotool', 'mousemove', str(x + words[word]), str(y + height // 2),
                        'click', '1'], check=True)

    def choose_by_pointer(self, name):
        wait_for(lambda: self.menu_item(name).has('showing'), f'a menu with {name}')
        time.sleep(0.6)  # a release that follows too soon leaves a menu open
        self.menu_item(name).click()

    def type_number(self, number):
        """Into the editor that is about to open, which assistive technology does not see."""
        time.sleep(0.5)
        type_keys(number)
        press_keys('Return')

    def expect_speed(self):
        """40 % of 126."""
        self.log.wait_for(r'<- set\(\d+,speed\[50\]\)')

    def test_is_written_by_keys_and_starts_a_train_when_its_block_is_chosen(self):
        press_keys('Down', 'Return')
        self.choose_by_keys('Set Locomotive Speed')
        press_keys('Return')
        self.choose_by_keys('Express 103')
        self.expect('Add Condition…', 'Set Express 103 Speed to 100%', 'Add Command…')
        press_keys('Right', 'Return')
        type_keys('40')
        press_keys('Return')
        self.expect('Add Condition…', 'Set Express 103 Speed to 40%', 'Add Command…')
        press_keys('Home', 'Return')
        self.choose_by_keys('Block is (un)occupied')
        self.choose_by_keys('Station 1')
        self.expect('When Station 1 is Occupied', 'Add Condition…',
                    'Set Express 103 Speed to 40%', 'Add Command…')
        self.expect_speed()
        press_keys('ctrl+w')
        self.program.gone(TITLE)

    def test_is_written_with_the_pointer_and_starts_the_train_that_is_in_its_block(self):
        self.click_word('Add Command…', 0)
        self.choose_by_pointer('Set Locomotive Speed')
        self.click_word('Add Command…', 0)
        self.choose_by_pointer('Wait')
        self.expect('Add Condition…', 'Set This Locomotive Speed to 100%', 'Wait 10 seconds',
                    'Add Command…')
        self.click_word('Set This Locomotive Speed to 100%', 1)
        type_keys('40')
        self.window.find('push button', 'Up').click()
        self.click_word('Add Condition…', 0)
        self.choose_by_pointer('Block is (un)occupied')
        self.choose_by_pointer('Station 1')
        self.expect('When Station 1 is Occupied', 'Add Condition…',
                    'Set This Locomotive Speed to 40%', 'Wait 10 seconds', 'Add Command…')
        self.expect_speed()
        self.window.find('push button', 'Close').click()
        self.program.gone(TITLE)

    def test_a_shuttle_goes_to_and_fro(self):
        """One end is written with the pointer, the other one by keys."""
        lines = ('Wait 3 seconds', 'Set This Locomotive Speed to 0%', 'Wait 5 seconds',
                 'Set This Locomotive {}', 'Set This Locomotive Speed to 40%', 'Add Command…')
        for command, word, value in (('Wait', 0, '3'), ('Set Locomotive Speed', 1, '0'),
                                     ('Wait', 0, '5'), ('Set Locomotive Direction', 1, 'Reverse'),
                                     ('Set Locomotive Speed', 1, '40')):
            self.click_word('Add Command…', 0)
            self.choose_by_pointer(command)
            written = self.sentences.rows()[-2]
            press_keys('Home')  # words are found by their line, which a selected row hides
            self.click_word(written, word)
            if value.isdigit():
                self.type_number(value)
            else:
                self.choose_by_pointer(value)
            wait_for(lambda: self.sentences.rows()[-2] != written, f'{value} in {written}')
        self.click_word('Add Condition…', 0)
        self.choose_by_pointer('Block is (un)occupied')
        self.choose_by_pointer('Branch South')
        self.expect('When Branch South is Occupied', 'Add Condition…',
                    *(line.format('Reverse') for line in lines))
        self.window.find('push button', 'Close').click()
        self.program.gone(TITLE)

        self.open_new_script()
        for command, way, value in (('Wait', (), '3'), ('Set Locomotive Speed', ('Right',), '0'),
                                    ('Wait', (), '5'), ('Set Locomotive Direction', (), ''),
                                    ('Set Locomotive Speed', ('Right',), '40')):
            press_keys('End', 'Return')
            self.choose_by_keys(command)
            if value:
                press_keys(*way, 'Return')
                self.type_number(value)
        press_keys('Home', 'Return')
        self.choose_by_keys('Block is (un)occupied')
        self.choose_by_keys('Branch North')
        self.expect('When Branch North is Occupied', 'Add Condition…',
                    *(line.format('Forwards') for line in lines))
        for end in ('South', 'North', 'South'):
            self.log.wait_for(f'Railcar 5 enters Branch {end}')

    def choose_object_by_keys(self, key, kind, *steps):
        """In the submenu of that kind. Assistive technology does not tell when its entries show."""
        press_keys(key)
        wait_for(lambda: self.is_shown('menu', kind), f'a menu with {kind}')
        press_keys(*steps, 'Return')
        wait_for(lambda: not self.is_shown('menu', kind), 'the menu to be closed')
        time.sleep(0.3)  # until the dialog has the keys again

    def test_a_click_on_an_entry_signal_sets_the_way_of_a_train(self):
        """Written by keys alone, line by line and once more from the template."""
        press_keys('Down', 'Return')
        self.choose_by_keys('Set Point or Signal')
        press_keys('Return')
        self.choose_by_keys('West Point')
        press_keys('Right', 'Return')
        self.choose_by_keys('Curved')
        press_keys('Home', 'Return')
        self.choose_by_keys('Point or Signal Is…')
        self.choose_by_keys('Exit Signal 2')
        press_keys('Right', 'Return')
        self.choose_by_keys('Go')
        self.expect('When Exit Signal 2 is Go', 'Add Condition…', 'Set West Point to Curved',
                    'Add Command…')
        press_keys('ctrl+w')
        self.program.gone(TITLE)

        editor = self.program.window('Zemblar 0.1 — Track Editor')
        objects = editor.find('tree table', 'Objects')
        objects.select_row('Scripts')
        pointer('search', '--name', editor.name, 'windowactivate', '--sync')
        wait_for(lambda: editor.has('active'), 'the track editor in front')
        press_keys('alt+t')
        self.choose_by_keys('Route by Entry Signal')
        dialog = self.program.window('Route by Entry Signal')
        wait_for(lambda: dialog.has('active'), 'the dialog in front')
        self.choose_object_by_keys('alt+s', 'Points & Signals', 'Down', 'Right', *4 * ['Down'])
        press_keys('Tab', 'Down')
        self.choose_object_by_keys('alt+f', 'Points & Signals', 'Down', 'Right')
        press_keys('Tab', 'Down')
        self.choose_object_by_keys('alt+b', 'Blocks', 'Down', 'Down', 'Right', 'Down')
        press_keys('alt+e')
        wait_for(lambda: 'Route by Exit Signal 2' in objects.rows(), 'the script')

        throttle = self.program.window('Throttle')
        choose_locomotive(self.program, throttle, 'Local 24')
        throttle.find('slider', 'Speed').set_value(60)
        view = self.program.window('Zemblar 0.1 — Track View').find('drawing area', 'Station')
        [signal] = [item for item in view.children() if item.name.startswith('Exit Signal 2')]
        signal.press()
        self.log.wait_for('Local 24 enters Station 2')
        wait_for(lambda: signal.name.endswith('Stop'), f'a signal at stop, not {signal.name}')


unittest.main(argv=sys.argv[:1], verbosity=2)
