#!/usr/bin/python3
"""What becomes of the trains when the program ends by itself: it is killed at random moments,
stopped for a while, and ended from its menu.

    guard_test.py ZEMBLAR ZEMBLAR-STATION [KILLS]
"""

import os
import random
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from station import Station
from zemblar_ui import Program, wait_for

EDITOR = 'Zemblar 0.1 — Track Editor'
LAYOUT = '%YAML 1.2\ntitle: Guarded\nobjects:\n  - !lok\n    name: Shunter\n    id: 0\n'
DEADLY = [signal.SIGKILL] * 4 + [signal.SIGSEGV, signal.SIGABRT, signal.SIGTERM, signal.SIGHUP]


class HandThrottle:
    """Another client of the station, which switches its power on and sees whether it is on."""

    def __init__(self, port):
        self.socket = socket.create_connection(('127.0.0.1', port))
        self.answers = self.socket.makefile('r', encoding='utf-8', newline='\r\n')

    def close(self):
        self.answers.close()
        self.socket.close()

    def ask(self, command):
        self.socket.sendall((command + '\n').encode())
        lines = []
        while not lines or not lines[-1].startswith('<END'):
            lines.append(self.answers.readline())
        return ''.join(lines)

    def switch_on(self):
        self.ask('set(1, go)')

    def power_is_on(self):
        return 'status[GO]' in self.ask('get(1, status)')


class Guard(unittest.TestCase):
    def setUp(self):
        self.station = self.enterContext(Station(STATION))
        self.hand = HandThrottle(self.station.port)
        self.addCleanup(self.hand.close)
        self.layout = tempfile.NamedTemporaryFile('w', suffix='.zblt', encoding='utf-8')
        self.addCleanup(self.layout.close)
        self.layout.write(LAYOUT)
        self.layout.flush()
        folder = os.path.join(os.environ['XDG_CONFIG_HOME'], 'zemblar')
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, 'options.ini'), 'w', encoding='utf-8') as options:
            options.write(f'[zemblar]\nlayout=file://{self.layout.name}\n')

    def start(self):
        program = self.enterContext(Program(ZEMBLAR, '-e'))
        self.addCleanup(program.process.send_signal, signal.SIGCONT)
        return program

    def start_with_station(self):
        program = self.start()
        editor = program.window(EDITOR)
        editor.show_page('All')
        objects = editor.find('tree table', 'Objects')
        objects.select_row('Devices')
        editor.find('push button', 'New Device').press()
        program.application().find('menu item', 'ESU ECoS').press()
        objects.select_row('ESU ECoS 1')
        editor.labelled('Address:').type_text(f'127.0.0.1:{self.station.port}')
        self.wait_for_service()
        return program, editor

    def wait_for_service(self):
        wait_for(lambda: 'get(1,status)' in self.station.commands(), 'the connection')
        self.station.forget()
        self.hand.switch_on()

    def drive(self, program, editor):
        editor.choose('View', 'Throttle')
        throttle = program.window('Throttle')
        throttle.find('push button', '(None)').press()
        program.application().find('menu item', 'Shunter').press()
        scale = throttle.find('slider', 'Speed')
        wait_for(lambda: scale.sensitive, 'the locomotive')
        scale.set_value(60)
        wait_for(lambda: 'set(1000,speed[60])' in self.station.commands(), 'the train')

    def guards(self, program):
        found = subprocess.run(['pgrep', '-P', str(program.process.pid), 'zemblar-guard'],
                               stdout=subprocess.PIPE, text=True, check=False)
        return [int(line) for line in found.stdout.split()]

    def seconds_until_off(self, limit):
        begin = time.monotonic()
        while self.hand.power_is_on():
            self.assertLess(time.monotonic() - begin, limit, 'the trains drive on')
            time.sleep(0.005)
        return time.monotonic() - begin

    def test_switches_the_power_off_whenever_the_program_is_killed(self):
        program, editor = self.start_with_station()
        editor.choose('File', 'Save')  # beside the file, since that cannot hold the station
        program.wait_for_status('Saved')
        dice = random.Random(KILLS)
        longest = 0
        for _ in range(KILLS):
            time.sleep(dice.uniform(0.03, 2.0))
            number = dice.choice(DEADLY)
            self.assertTrue(self.hand.power_is_on())
            program.process.send_signal(number)
            longest = max(longest, self.seconds_until_off(1.0))
            program.process.wait()
            program.process.stdin.close()
            program = self.start()
            self.wait_for_service()
        print(f'{KILLS} of {KILLS}, {1000 * longest:.0f} ms at the most', file=sys.stderr)

    def test_lets_trains_be_when_the_program_is_quit_and_watches_over_it_again(self):
        program, editor = self.start_with_station()
        former = wait_for(lambda: self.guards(program), 'a guard')
        os.kill(former[0], signal.SIGKILL)
        wait_for(lambda: self.guards(program) not in ([], former), 'another guard')
        guard = self.guards(program)[0]
        self.drive(program, editor)
        editor.choose('File', 'Trains Go On When I Quit')
        editor.choose('File', 'Quit')
        self.assertEqual(0, program.wait_for_end())
        wait_for(lambda: not os.path.exists(f'/proc/{guard}'), 'the end of the guard')
        self.assertTrue(self.hand.power_is_on())
        self.assertNotIn('set(1000,speed[0])', self.station.commands())

    def test_stops_the_trains_before_quit_and_new(self):
        for choice in ('Quit', 'New'):
            program, editor = self.start_with_station()
            self.drive(program, editor)
            editor.choose('File', choice)
            wait_for(lambda: 'set(1000,speed[0])' in self.station.commands(), 'the stop')
            self.assertTrue(self.hand.power_is_on())
            if choice == 'Quit':
                self.assertEqual(0, program.wait_for_end())

    def test_switches_the_power_off_when_the_program_hangs_while_a_train_drives(self):
        program, editor = self.start_with_station()
        program.process.send_signal(signal.SIGSTOP)
        time.sleep(6)
        program.process.send_signal(signal.SIGCONT)
        self.assertTrue(self.hand.power_is_on(), 'no train drives')
        self.drive(program, editor)
        time.sleep(0.3)  # the guard hears four times a second how the trains are
        program.process.send_signal(signal.SIGSTOP)
        seconds = self.seconds_until_off(7)
        program.process.send_signal(signal.SIGCONT)
        self.assertGreater(seconds, 3.5)
        program.wait_for_status('The guard has switched the track power off')
        log = os.path.join(os.environ['HOME'], '.local', 'state', 'zemblar', 'guard.log')
        with open(log, encoding='utf-8') as lines:
            self.assertIn('no sign of life for 5 seconds. ESU ECoS 1: the track power is off.',
                          lines.read())


if __name__ == '__main__':
    ZEMBLAR, STATION = sys.argv[1:3]
    KILLS = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    unittest.main(argv=sys.argv[:1])
