#!/usr/bin/python3
"""Trains on the simulated railway, driven and watched as a person would.

    trains_test.py DEMONSTRATION LAYOUT
"""

import sys
import time
import unittest

import two_trains
from demonstration import DemonstrationTest
from zemblar_ui import wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]


class Trains(DemonstrationTest):

    def setUp(self):
        if 'LI_USB' in self._testMethodName:
            # There more than one locomotive has an address that a LI-USB can drive.
            self.start(DEMONSTRATION, '--liusb', layout=LAYOUT.replace('sample', 'club'))
        else:
            self.start(DEMONSTRATION, layout=LAYOUT)

    def test_a_train_is_stopped_while_the_LI_USB_is_deaf_to_another_one(self):
        program = self.program
        throttle = program.window('Throttle')
        wait_for(lambda: any('LI-USB <- 21 24' in line for line in self.log.lines()), 'the LI-USB')
        self.type('liusb deaf e4 13 00 18')  # all speeds of address 24
        two_trains.choose_locomotive(program, throttle, 'Local 24')
        throttle.find('slider', 'Speed').set_value(40)
        self.log.wait_for('LI-USB <- e4 13 00 18')
        program.wait_for_status('does not answer')
        two_trains.choose_locomotive(program, throttle, 'Goods 44', 'Local 24')
        throttle.find('slider', 'Speed').set_value(30)
        self.log.wait_for('LI-USB <- e4 13 00 2c 9f')
        began = time.monotonic()
        throttle.find('push button', 'Emergency Stop').press()
        self.log.wait_for('LI-USB <- e4 13 00 2c 81')
        self.assertLess(time.monotonic() - began, 2.5)
        self.type('liusb well')
        wait_for(lambda: 'does not answer' not in program.status(), 'the other one')

    def test_a_point_is_set_in_the_object_list_and_trains_are_watched_there(self):
        editor = self.program.window('Zemblar 0.1 — Track Editor')
        editor.show_page('All')
        objects = editor.find('tree table', 'Objects')
        self.log.wait_for('stands in Station 1')
        objects.unfold_row('Blocks')
        objects.select_row('Station 1')
        wait_for(lambda: editor.find_all('push button', 'Express 103'), 'who stands there')
        objects.select_row('East Point')
        editor.labelled('State:').find('menu item', 'Curved').press()
        self.log.wait_for(r'<- set\(11, *switch\[DCC')
        self.choose_output_types(editor)
        self.assertIsNone(self.program.process.poll())

    def test_the_scripts_of_the_file_sleep_until_they_are_started(self):
        editor = self.program.window('Zemblar 0.1 — Track Editor')
        self.log.wait_for('Railcar 5 stands in Branch North')
        editor.show_page('All')
        editor.find('tree table', 'Objects').select_row('Scripts')
        start = editor.find('push button', 'Start Scripts')
        wait_for(lambda: '6 scripts sleep' in self.program.status(), 'the status line')
        start.press()
        wait_for(lambda: not start.sensitive, 'nothing sleeps any more')
        self.log.wait_for('Railcar 5 enters Branch South')

    def choose_output_types(self, editor):
        """Each type of output has rows of its own, shown when it is chosen."""
        editor.show_page('Outputs')
        for kind, row in (('Locomotive Function', 'Function:'), ('Servo', None),
                          ('Extended Accessory', 'Address:'), ('Basic Accessory', 'Output:')):
            editor.labelled('Type:').find('menu item', kind).press()
            shown = [label.name for label in editor.find_all('label')]
            rows = [name for name in ('Function:', 'Output:') if name in shown]
            self.assertEqual(rows, [row] if row in ('Function:', 'Output:') else [], kind)
            self.assertEqual('Address:' in shown, kind != 'Servo', kind)


unittest.main(argv=sys.argv[:1], verbosity=2)
