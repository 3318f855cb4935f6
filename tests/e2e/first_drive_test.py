#!/usr/bin/python3
"""The first drive of the README, step by step as it stands there, and five laps more.

    first_drive_test.py DEMONSTRATION LAYOUT
"""

import re
import sys
import unittest

import two_trains
from demonstration import DemonstrationTest
from picture import CURVED, SIGNAL, STRAIGHT, find_diagram, pointer
from zemblar_ui import press_keys, wait_for

DEMONSTRATION, LAYOUT = sys.argv[1:3]
LAPS = 5
SHUTTLES = 3  # of the railcar, which lets all others go first
LAP = 120.0  # seconds, with room for a slow machine


class FirstDrive(DemonstrationTest):

    def setUp(self):
        self.start(DEMONSTRATION, layout=LAYOUT)

    def test_goes_on_lap_after_lap(self):
        self.throttle = self.program.window('Throttle')
        self.editor = self.program.window('Zemblar 0.1 — Track Editor')
        self.diagram = find_diagram(self.program)
        two_trains.run(self.program, self.throttle, self.log, tell=lambda text: None)
        for step in (self.stop_and_drive_on, self.look_after_the_railcar,
                     self.click_in_the_track_view, self.set_a_point_in_the_list,
                     self.start_the_scripts):
            step()
        self.go_on()

    def stop_and_drive_on(self):
        scale = self.throttle.find('slider', 'Speed')
        self.log.wait_for('Local 24 enters West Curve')
        self.throttle.find('push button', 'Emergency Stop').press()
        local = self.log.wait_for(r'<- set\((\d+),stop\)').group(1)
        wait_for(lambda: scale.value() == 0, 'the scale to fall')
        scale.set_value(110)
        self.log.wait_for(rf'<- set\({local},speed\[110\]\)')

    def look_after_the_railcar(self):
        two_trains.choose_locomotive(self.program, self.throttle, 'Railcar 5', 'Local 24')
        self.throttle.find('push button', 'Direction').press()
        railcar = self.log.wait_for(r'<- set\((\d+),dir\[1\]\)').group(1)
        self.throttle.find('toggle button', 'Light').press()
        self.log.wait_for(rf'<- set\({railcar},func\[0,1\]\)')
        pointer('search', '--name', 'Throttle', 'windowactivate', '--sync')
        press_keys('1')
        self.log.wait_for(rf'<- set\({railcar},func\[1,1\]\)')

    def wait_until_nobody_is_near_the_station(self):
        self.log.wait_for('Express 103 enters North Line East', LAP)

    def click_in_the_track_view(self):
        pointer('search', '--name', 'Track View', 'windowactivate', '--sync')
        self.wait_until_nobody_is_near_the_station()
        for leg, side in ((CURVED, 'g'), (STRAIGHT, 'r')):
            pointer('mousemove', *self.diagram.on_screen(leg), 'click', 1)
            self.log.wait_for(rf'<- set\(11,switch\[DCC5{side}\]')
        pointer('mousemove', *self.diagram.on_screen(SIGNAL, (16, 0)), 'click', 1)
        self.log.wait_for(r'<- set\(11,switch\[DCC13g\]')

    def set_a_point_in_the_list(self):
        self.editor.show_page('All')
        objects = self.editor.find('tree table', 'Objects')
        objects.unfold_row('Blocks')
        objects.select_row('East Curve')
        wait_for(lambda: self.editor.find_all('push button', 'Express 103'), 'who passes there', LAP)
        objects.select_row('East Point')
        self.wait_until_nobody_is_near_the_station()
        for state, side in (('Curved', 'g'), ('Straight', 'r')):
            self.editor.labelled('State:').find('menu item', state).press()
            self.log.wait_for(rf'<- set\(11,switch\[DCC5{side}\]')

    def start_the_scripts(self):
        self.editor.find('tree table', 'Objects').select_row('Scripts')
        start = self.editor.find('push button', 'Start Scripts')
        start.press()
        wait_for(lambda: not start.sensitive, 'scripts that are all awake')

    def go_on(self):
        before = self.arrivals()
        wanted = {'Express 103': LAPS, 'Local 24': LAPS, 'Railcar 5': SHUTTLES}
        wait_for(lambda: all(self.arrivals().get(train, 0) - before.get(train, 0) >= laps
                             for train, laps in wanted.items()),
                 f'{LAPS} laps of either train', LAPS * LAP)
        told = self.log.lines()
        self.assertFalse([line for line in told if re.search('run into|end of|set against', line)])

    def arrivals(self):
        """By train: how often it has come to the station, or to the far end of the branch."""
        count = {}
        for line in self.log.lines():
            found = re.search(r'\*\* (.*) enters (Station 1|Branch South)$', line)
            if found:
                count[found.group(1)] = count.get(found.group(1), 0) + 1
        return count


unittest.main(argv=sys.argv[:1], verbosity=2)
