#!/usr/bin/python3
"""Every function of a throttle, and every point and signal of a view, by keys alone and by what a
screen reader can press.

    hands_test.py ZEMBLAR LAYOUT
"""

import os
import shutil
import sys
import tempfile
import unittest

from layout_text import FUNCTIONS, with_all_functions
from picture import TITLE, pointer
from two_trains import choose_locomotive
from zemblar_ui import Program, press_keys, type_keys, wait_for

ZEMBLAR, LAYOUT = sys.argv[1:3]
LOCOMOTIVE = 'Express 103'
VIEW = 'Main Line'


def key_of(number):
    return ('', 'shift+', 'ctrl+')[number // 10] + str(number % 10)


class Hands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        source = os.path.dirname(LAYOUT)
        for name in ('layouts', 'signals'):
            shutil.copytree(os.path.join(source, '..', name), os.path.join(folder, name))
        copy = os.path.join(folder, 'layouts', os.path.basename(LAYOUT))
        with open(copy, encoding='utf-8') as file:
            text = file.read()
        with open(copy, 'w', encoding='utf-8') as file:
            file.write(with_all_functions(text, LOCOMOTIVE))
        self.program = Program(ZEMBLAR, '-v')
        self.addCleanup(self.program.__exit__)
        self.window = self.program.window(TITLE)
        self.program.open_layout(self.window, copy)

    def activate(self, window):
        pointer('search', '--name', window.name, 'windowactivate', '--sync')
        wait_for(lambda: window.has('active'), f'{window} in front')

    def test_points_and_signals_are_switched(self):
        canvas = self.window.find('drawing area', VIEW)
        names = [item.name for item in canvas.children()]
        self.assertEqual(len(names), 39)
        for item in canvas.children():
            seen = [item.name]
            while len(seen) < 2 or seen[-1] != seen[0]:
                item.press()
                seen.append(item.name)
            self.assertGreater(len(seen), 2, f'one state alone: {seen}')

        self.activate(self.window)
        left, top, width, height = canvas.extents()
        for item in canvas.children():
            name = item.name
            press_keys('Tab')
            wait_for(lambda: item.has('focused'), f'the ring at {name}')
            press_keys('Return')
            wait_for(lambda: item.name != name, f'another state than {name}')
            x, y, wide, high = item.extents()
            self.assertTrue(left < x and x + wide < left + width, f'{name} is out of sight')
            self.assertTrue(top < y and y + high < top + height, f'{name} is out of sight')
        press_keys('Tab')
        wait_for(lambda: not canvas.has('focused'), 'the focus elsewhere')

    def test_a_point_that_is_deleted_and_brought_back_is_told_of(self):
        canvas = self.window.find('drawing area', VIEW)
        name = canvas.children()[0].name.split(':')[0]
        self.window.choose('View', 'Track Editor')
        editor = self.program.window('Zemblar 0.1 — Track Editor')
        editor.show_page('All')
        self.activate(editor)
        press_keys('alt+i')
        type_keys(name)
        press_keys('Return', 'Delete')
        wait_for(lambda: len(canvas.children()) == 38, 'the point to be gone')
        press_keys('ctrl+z')
        wait_for(lambda: len(canvas.children()) == 39, 'the point to be back')

    def test_functions_are_pressed(self):
        self.window.choose('View', 'Throttle')
        throttle = self.program.window('Throttle')
        choose_locomotive(self.program, throttle, LOCOMOTIVE)
        buttons = [throttle.find('toggle button', f'Function {number}')
                   for number in range(FUNCTIONS)]

        def expect(number, checked):
            wait_for(lambda: buttons[number].checked == checked, f'{number} to be {checked}')
            others = [i for i, b in enumerate(buttons) if b.checked and i != number]
            self.assertEqual(others, [], f'besides {number}')

        self.activate(throttle)
        for number in range(FUNCTIONS):
            for press in (buttons[number].press, lambda: press_keys(key_of(number))):
                for checked in (True, False):
                    press()
                    expect(number, checked)
        scale = throttle.find('slider', 'Speed')
        wait_for(lambda: scale.has('focused'), 'the scale to have the focus')
        press_keys('Up', 'Right', 'Prior')
        wait_for(lambda: scale.value() == 12, 'the speed 12')
        press_keys('Tab', 'Tab', 'Tab')
        for number in range(FUNCTIONS):
            press_keys('Return')
            expect(number, True)
            press_keys('Return', 'Right')
        press_keys('space')
        wait_for(lambda: scale.value() == 0, 'the emergency stop')


unittest.main(argv=sys.argv[:1], verbosity=2)
