#!/usr/bin/python3
"""Trains on the simulated railway, driven by a LI-USB as a person would.

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
        # More than one locomotive of the club has an address that a LI-USB can drive.
        self.start(DEMONSTRATION, '--liusb', layout=LAYOUT.replace('sample', 'club'))

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


unittest.main(argv=sys.argv[:1], verbosity=2)
