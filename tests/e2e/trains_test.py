#!/usr/bin/python3
"""Two trains on the simulated railway, driven as a person would.

    trains_test.py DEMONSTRATION LAYOUT
"""

import sys
import unittest

import two_trains
from demonstration import DemonstrationTest
from zemblar_ui import wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]


class Trains(DemonstrationTest):

    def setUp(self):
        self.start(DEMONSTRATION, LAYOUT)

    def test_the_second_stops_short_of_the_first_and_goes_on_when_the_way_is_free(self):
        throttle = self.program.window('Throttle')
        two_trains.run(self.program, throttle, self.log, tell=lambda text: None)

    def test_a_point_is_set_in_the_object_list_and_trains_are_watched_there(self):
        editor = self.program.window('Zemblar 0.1 — Track Editor')
        editor.show_page('All')
        objects = editor.find('tree table', 'Objects')
        self.log.wait_for('stands in Station 1')
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
        wait_for(lambda: '4 scripts sleep' in self.program.status(), 'the status line')
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
