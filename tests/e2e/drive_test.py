#!/usr/bin/python3
"""From an empty layout to a train that is driven, stopped and found again: by visible names, with
the simulated station writing down what reaches it.

    drive_test.py ZEMBLAR ZEMBLAR-STATION
"""

import sys
import unittest

from station import Station
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

    def make_locomotive(self, name='Locomotive 1', address=3, functions=1):
        self.panel_of('Locomotives').find('push button', 'New Locomotive').press()
        panel = self.panel_of(name)
        panel.labelled('Address:').set_value(address)
        for _ in range(functions):
            panel.find('push button', 'New Function').press()

    def open_throttle(self, name='Locomotive 1'):
        former = len([w for w in self.program.windows() if w.name == 'Throttle'])
        self.editor.choose('View', 'Throttle')

        def unused():
            throttles = [w for w in self.program.windows() if w.name == 'Throttle']
            buttons = [(t, t.find_all('push button', '(None)')) for t in throttles]
            unset = [(t, b[0]) for t, b in buttons if b]
            return len(throttles) > former and unset
        throttle, button = wait_for(unused, 'a throttle')[0]
        button.press()
        self.program.application().find('menu item', name).press()
        wait_for(lambda: throttle.find('slider', 'Speed').sensitive, 'the chosen locomotive')
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

    def test_others_are_stopped_while_the_station_refuses_a_function(self):
        station = self.station
        self.make_station()
        self.make_locomotive()
        self.make_locomotive('Locomotive 2', 4)
        refused, stopped = (self.open_throttle(f'Locomotive {n}') for n in (1, 2))
        for throttle in (refused, stopped):
            throttle.find('slider', 'Speed').set_value(50)
        wait_for(lambda: 'set(1001,speed[50])' in station.commands(), 'both trains')
        station.type('fail 25 all set(1000,func')
        refused.find('toggle button', 'Function 1').press()
        wait_for(lambda: 'set(1000,func[0,1])' in station.commands(), 'the refused function')
        stopped.find('push button', 'Emergency Stop').press()
        wait_for(lambda: 'set(1001,stop)' in station.commands(), 'the emergency stop', limit=2.5)
        self.program.wait_for_status('refused function 0 of Locomotive 1: 25 (no control)')
        station.type('well')
        wait_for(lambda: self.program.status() == '', 'the function on its next try')

    def test_a_command_that_is_not_answered_is_told_of_and_cut_off(self):
        station = self.station
        self.make_station()
        self.make_locomotive(functions=0)
        scale = self.open_throttle().find('slider', 'Speed')
        station.type('silent set(1000,speed[50')
        scale.set_value(50)
        self.program.wait_for_status('does not answer')
        scale.set_value(0)
        self.assertNotIn('set(1000,speed[0])', station.commands(), 'that one is still waited for')
        self.panel_of('ESU ECoS 1').find('push button', 'Reconnect').press()
        wait_for(lambda: 'set(1000,speed[0])' in station.commands(), 'the stop', limit=2.5)
        wait_for(lambda: 'does not answer' not in self.program.status(), 'the end of the message')

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
