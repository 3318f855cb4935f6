#!/usr/bin/python3
"""From an empty layout to a train that is driven, stopped and found again: by visible names, with
the simulated station writing down what reaches it.

    drive_test.py ZEMBLAR ZEMBLAR-STATION
"""

import sys
import unittest

from station import Station
from two_trains import choose_locomotive
from zemblar_ui import Program, wait_for

EDITOR = 'Zemblar 0.1 — Track Editor'


def controlled(command):
    return 'request(1000,control,force)', command, 'release(1000,control)'


class Drive(unittest.TestCase):
    def setUp(self):
        self.station = self.enterContext(Station(STATION))
        self.program = self.enterContext(Program(ZEMBLAR, '-e'))
        self.editor = self.program.window(EDITOR)
        self.show_all_objects()

    def show_all_objects(self):
        self.editor.show_page('All')
        self.objects = self.editor.find('tree table', 'Objects')

    def panel_of(self, row):
        self.objects.select_row(row)
        return self.editor

    def make_station(self):
        self.panel_of('Devices').find('push button', 'New Device').press()
        self.program.application().find('menu item', 'ESU ECoS').press()
        panel = self.panel_of('ESU ECoS 1')
        panel.labelled('Address:').type_text(f'127.0.0.1:{self.station.port}')
        wait_for(lambda: 'get(1,status)' in self.station.commands(), 'the connection')
        self.station.wait_for('request(1,view)', 'request(10,view)', 'get(1,status)')

    def make_locomotive(self):
        self.panel_of('Locomotives').find('push button', 'New Locomotive').press()
        panel = self.panel_of('Locomotive 1')
        panel.labelled('Address:').set_value(3)
        panel.find('push button', 'New Function').press()

    def open_throttle(self):
        self.editor.choose('View', 'Throttle')
        throttle = self.program.window('Throttle')
        choose_locomotive(self.program, throttle, 'Locomotive 1')
        return throttle

    def test_a_new_locomotive_is_driven_and_found_again(self):
        station = self.station
        self.make_station()
        self.make_locomotive()
        throttle = self.open_throttle()
        scale = throttle.find('slider', 'Speed')
        self.assertEqual(station.commands(), [], 'choosing a locomotive commands nothing')

        scale.set_value(63)
        station.wait_for('queryObjects(10,addr)',
                         'create(10,addr[3],name["Locomotive 3"],append)',
                         *controlled('set(1000,speed[63])'))
        throttle.find('push button', 'Direction').press()
        station.wait_for(*controlled('set(1000,dir[1])'))
        throttle.find('toggle button', 'Function 1').press()
        station.wait_for(*controlled('set(1000,func[0,1])'))

        throttle.find('push button', 'Emergency Stop').press()
        station.wait_for(*controlled('set(1000,stop)'))
        wait_for(lambda: scale.value() == 0, 'the scale to fall')
        self.assertEqual(station.commands(), [], 'the scale that follows lifts no emergency stop')
        scale.set_value(40)
        station.wait_for(*controlled('set(1000,speed[40])'))

        station.type('silent set')  # dies in the middle of a command
        scale.set_value(90)
        wait_for(lambda: 'set(1000,speed[90])' in station.commands(), 'the command')
        station.kill()
        scale.set_value(0)
        station.forget()
        station.start()
        wait_for(lambda: 'release(1000,control)' in station.commands(), 'the latest wish')
        self.assertIn('set(1000,speed[0])', station.commands())
        self.assertNotIn('set(1000,speed[90])', station.commands())

    def test_track_power_is_switched_from_the_tool_bar(self):
        self.make_station()
        self.editor.choose('View', 'Track View')
        view = self.program.window('Zemblar 0.1 — Track View')
        wait_for(lambda: view.find('push button', 'Track Power On').sensitive, 'power buttons')
        view.find('push button', 'Track Power On').press()
        self.station.wait_for('set(1,go)')
        view.find('push button', 'Track Power Off').press()
        self.station.wait_for('set(1,stop)')


if __name__ == '__main__':
    ZEMBLAR, STATION = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
