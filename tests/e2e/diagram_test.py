#!/usr/bin/python3
"""The railway is operated by clicks on its picture, with the pointer.

    diagram_test.py DEMONSTRATION LAYOUT
"""

import sys
import time
import unittest

from demonstration import DemonstrationTest
from picture import CURVED, SIGNAL, STRAIGHT, ZONE, find_diagram, pixels, pointer
from zemblar_ui import wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]


class Clicks(DemonstrationTest):

    def setUp(self):
        self.start(DEMONSTRATION, layout=LAYOUT)

    def click_signal(self, diagram, clicks, colour):
        """It is drawn in pixels, whatever the zoom, with its head beside its place."""
        head = diagram.on_screen(SIGNAL, (16, 0))
        pointer('mousemove', *head, 'click', '--repeat', clicks, '--delay', 40, 1)

        def lamps():
            seen = pixels(*head, 30, 14)
            return {'green' if g > r else 'red' for r, g, b in seen if abs(g - r) > 60}
        wait_for(lambda: lamps() == {colour}, f'{colour} light', 5)

    def test_points_and_signals_are_set_where_they_are_seen(self):
        diagram = find_diagram(self.program)
        self.log.wait_for('stands in Station 1')
        looks = (lambda: None,
                 lambda: diagram.turn_wheel(6, 900, 700),
                 lambda: diagram.pan(-150, -60),
                 lambda: diagram.turn_wheel(-9, 400, 300))
        for look in looks:
            look()
            curved, straight = diagram.on_screen(CURVED), diagram.on_screen(STRAIGHT)
            for leg, command in ((curved, r'<- set\(11,switch\[DCC5g\]'),
                                 (straight, r'<- set\(11,switch\[DCC5r\]')):
                wait_for(lambda: 100 < pixels(*leg)[0][0] < 190, f'grey track at {leg}', 5)
                pointer('mousemove', *leg, 'click', 1)
                wait_for(lambda: pixels(*leg)[0][0] < 95, f'black track at {leg}', 5)
                self.log.wait_for(command)
            self.click_signal(diagram, 1, 'green')
            self.log.wait_for(r'<- set\(11,switch\[DCC13g\]')
            time.sleep(0.5)  # or the toolkit takes the next for one of the same double click
            self.click_signal(diagram, 2, 'red')
            self.log.wait_for(r'<- set\(11,switch\[DCC13r\]')
            time.sleep(0.5)
        told = len(self.log.lines())
        pointer('mousemove', *diagram.on_screen(ZONE), 'click', 1)
        pointer('mousemove', *straight, 'click', 1)
        time.sleep(0.5)
        self.assertFalse([line for line in self.log.lines()[told:] if 'switch[' in line])


unittest.main(argv=sys.argv[:1], verbosity=2)
