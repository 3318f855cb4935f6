"""Two trains on one line of the demonstration: the second one stops short of the first and goes on
when the way is free.

The demonstration prints what goes over the wire and where the trains are; `Log` reads that.
"""

import re

from zemblar_ui import wait_for

PATIENCE = 40.0  # seconds for a train to come from block to block


class Log:
    """The lines that the program has printed, without their times."""

    def __init__(self, path):
        self.path = path
        self.seen = 0  # lines that have been waited for

    def lines(self):
        with open(self.path, encoding='utf-8') as file:
            return [line.rstrip('\n').split(' ', 1)[-1] for line in file]

    def wait_for(self, pattern, limit=PATIENCE):
        """The next line that holds the pattern, after those that were waited for before."""
        def look():
            for number, line in enumerate(self.lines()[self.seen:], self.seen):
                found = re.search(pattern, line)
                if found:
                    self.seen = number + 1
                    return found
            return None
        return wait_for(look, f'"{pattern}" in the log', limit)


def choose_locomotive(program, throttle, name, former='(None)'):
    throttle.find('push button', former).press()
    program.application().find('menu item', name).press()
    wait_for(lambda: throttle.find('slider', 'Speed').sensitive, 'the locomotive')


def run(program, throttle, log, tell=print, picture=lambda: None):
    """Leaves both trains running."""
    log.wait_for(r'Express 103 stands in Station 1')
    tell('Express 103 leaves the station. Local 24 stands on the line before it.')
    choose_locomotive(program, throttle, 'Express 103')
    scale = throttle.find('slider', 'Speed')
    scale.set_value(100)
    express = log.wait_for(r'<- set\((\d+),speed\[100\]\)').group(1)
    log.wait_for(r'Express 103 enters Branch Crossing')  # which has the detector of North Curve
    log.wait_for(rf'<- set\({express},speed\[0\]\)')
    tell('Block control has stopped it short of the other one, though the scale says 100.')
    assert scale.value() == 100, scale.value()
    picture()
    choose_locomotive(program, throttle, 'Local 24', 'Express 103')
    scale.set_value(110)
    tell('Local 24 goes on.')
    log.wait_for(r'Local 24 enters North Line West')
    log.wait_for(rf'<- set\({express},speed\[100\]\)')
    waited = log.seen
    tell('The line is free: Express 103 runs again by itself.')
    log.wait_for(r'Express 103 enters North Line East')
    told = log.lines()[:log.seen]
    beyond = [line for line in told if re.search('Express 103 enters North Line', line)]
    assert beyond[0] in told[waited:], 'it did not stop short'
    assert not [line for line in told if 'run into' in line], told
