#!/usr/bin/python3
"""An oval with a point and a siding is drawn from nothing, taken back and made again, and then a
train goes round on it in the simulated railway.

    oval_test.py ZEMBLAR DEMONSTRATION LAYOUT

The layout lends its locomotives and its bus of readers.
"""

import os
import re
import sys
import time
import unittest

import two_trains
from drawing import DrawingTest, pointer
from zemblar_ui import SPLASH

ZEMBLAR, DEMONSTRATION, LAYOUT = sys.argv[1:4]
# In the order in which they are drawn. The demonstration puts a train on the third.
TRACKS = ('Bottom', 'Right', 'North Line East', 'Left', 'Siding')
TRAIN = 'Local 24'
MOST_STEPS = 60


class Oval(DrawingTest):

    def borrow_equipment(self):
        head, *entries = re.split(r'^(?=  - !)', open(LAYOUT, encoding='utf-8').read(),
                                  flags=re.MULTILINE)
        lent = [entry for entry in entries if entry.startswith(('  - !lok', '  - !device'))]
        with open(self.path, 'w', encoding='utf-8') as file:
            file.write(head + ''.join(lent))

    def draw(self):
        self.place('Point', 20, 100)
        for x, y in ((-90, 100), (170, 0), (-30, -100), (-200, 0), (150, 160)):
            self.place('Zone', x, y)
        self.join((-50, 100), (-10, 90))
        self.join((130, 0), (40, 90))
        self.join((210, 0), (10, -100))
        self.join((-160, 0), (-70, -100))
        self.join((-240, 0), (-130, 100))
        self.join((110, 160), (40, 110))
        for x, y in ((23, -2), (-100, 0)):
            pointer('mousemove', *self.at(x, y))
            pointer('click', 3)
            self.program.application().find('radio menu item', 'Curved Line').press()

    def edit_tracks(self):
        """Gives each a name and an input of a reader, the point as well."""
        self.editor.show_page('All')
        for number, name in enumerate(TRACKS, 1):
            self.find_object(f'Zone {number}')
            self.editor.labelled('Name:').click()
            pointer('key', 'ctrl+a')
            pointer('type', name)
            pointer('key', 'Return')
            self.choose_detector(f'Input {number}')
        self.find_object('Point 1')
        self.editor.show_page('Occupancy')
        self.choose_detector(f'Input {len(TRACKS) + 1}')

    def find_object(self, name):
        self.editor.labelled('Find:').click()
        pointer('key', 'ctrl+a')
        pointer('type', name)
        pointer('key', 'Return')

    def choose_detector(self, name):
        self.editor.labelled('Detector:').press()
        self.program.application().find('menu item', name).press()

    def test_a_train_goes_round_on_an_oval_that_was_just_drawn(self):
        self.borrow_equipment()
        self.start(ZEMBLAR, '-e')
        time.sleep(SPLASH)
        self.program.open_layout(self.editor, self.path)
        empty = self.saved()
        self.editor.find('push button', 'New View').press()
        self.find_canvas()
        self.draw()
        self.edit_tracks()
        drawn = self.saved()
        joins = re.findall(r'^ +(?:left|right|common|state:\w+): (~|\[.*)$', drawn, re.MULTILINE)
        self.assertEqual(len([join for join in joins if join != '~']), 12, drawn)
        steps = self.undo_all(MOST_STEPS)
        self.assertEqual(self.saved(), empty)
        self.redo(steps)
        self.assertEqual(self.saved(), drawn)
        self.program.__exit__()

        self.start(DEMONSTRATION, self.path)
        log = two_trains.Log(self.output.name)
        log.wait_for(f'{TRAIN} stands in North Line East')
        time.sleep(SPLASH)
        throttle = self.program.window('Throttle')
        two_trains.choose_locomotive(self.program, throttle, TRAIN)
        throttle.find('slider', 'Speed').set_value(126)
        entered = [log.wait_for(f'{TRAIN} enters (.+)').group(1) for _ in range(6)]
        self.assertEqual(set(entered), {'Point 1', *TRACKS} - {'Siding'}, entered)
        self.assertEqual(entered[0], entered[5], entered)


unittest.main(argv=sys.argv[:1], verbosity=2)
