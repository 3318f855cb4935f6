#!/usr/bin/python3
"""Writes club.zblt to its standard output: a double line of two stations, and a branch with a yard
and a terminus. The branch line is drawn in both views."""

import sys

from railway import (Crossing, Item, Label, Point, Signal, View, Zone, bus, document,
                     find_detectors, join_ends, lok, reader, script)

COLOUR = '#d3dae0'
LIGHT = {'Light': (0, 'Toggle')}
HORN = {'Horn': (2, 'Pulse')}
CAB = {'Cab Light': (4, 'Toggle')}
LOKS = [
    lok('Express 103', 103, 200, LIGHT | HORN | CAB),
    lok('Express 218', 218, 140, LIGHT | HORN),
    lok('Local 24', 24, 100, LIGHT | CAB),
    lok('Local 64', 64, 90, LIGHT | CAB),
    lok('Goods 1200', 1200, 80, LIGHT | HORN, speed=0.75),
    lok('Goods 44', 44, 80, LIGHT | HORN),
    lok('Railcar 5', '5', 90, LIGHT | HORN | {'Passenger Lights': (1, 'Toggle')}),
    lok('Shunter 3', 3, 60, LIGHT | HORN),
]


def pictures(kind, *aspects):
    return {aspect: f'../signals/{kind}-{aspect.lower()}.svg' for aspect in aspects}


MAIN = pictures('main-3', 'Stop', 'Slow', 'Go')
EXIT = pictures('main-2', 'Stop', 'Go')
SHUNT = pictures('shunt', 'Stop', 'Go')


class Club:
    def __init__(self):
        self.addresses = 0
        self.zones = []

    def accessory(self, name, outputs=1):
        item = Item(name)
        for _ in range(outputs):
            self.addresses += 1
            item.outputs.append((self.addresses, 1))
        return item

    def zone(self, name, places, label=None, align='BOTTOM'):
        item = Item(name)
        self.zones.append(item)
        return self.draw_zone(item, places, label, align)

    def draw_zone(self, item, places, label, align):
        self.view.add(Zone(item, places))
        if label:
            self.view.add(Label(item, label, align))
        return item

    def point(self, name, common, straight, curved):
        self.view.add(Point(self.accessory(name), common, {'Straight': straight,
                                                           'Curved': curved}))

    def signal(self, name, place, angle, states):
        item = self.accessory(name, 1 if len(states) == 2 else 2)
        self.view.add(Signal(item, place, angle, 'Bottom', states))

    def halves(self, name, west, east, y, signals=None):
        """A track of a station, joined to its two throats, with a signal at either exit."""
        middle = round((west[-1][0] + east[0][0]) / 2)
        self.zone(name + ' West', west + [(middle, y, 0)], (middle - 150, y - 8))
        self.zone(name + ' East', [(middle, y, 0)] + east, (middle + 150, y - 8))
        if signals:
            right = min(east[-1][0] - 70, east[0][0] - 50)
            left = max(west[0][0] + 70, west[-1][0] + 50)
            self.signal(f'Exit {name} East', (right, y + 15), 90, signals)
            self.signal(f'Exit {name} West', (left, y - 15), 270, signals)


# --- The double line: tracks lie 64 apart ---

def loop_track(y, towards, start=460):
    """From a throat's diverging leg to a track that lies beside: west part and east part."""
    side = 1 if towards > 0 else -1
    west = [(-start, y - 39 * side, 45 * side), (-start + 14, y - 25 * side, 45 * side),
            (-start + 74, y, 0)]
    east = [(start - 74, y, 0), (start - 14, y - 25 * side, -45 * side),
            (start, y - 39 * side, -45 * side)]
    return west, east


def straight_track(y, start=460):
    return [(-start, y, 0)], [(start, y, 0)]


def throat(club, name, y, side):
    """Both points of a track beside another, whose outer ends lie at 520."""
    leg = y + 25 * side
    club.point(name + ' West', (-520, y, 0), (-460, y, 0), (-460, leg, 45 * side))
    club.point(name + ' East', (520, y, 180), (460, y, 180), (460, leg, 180 - 45 * side))


def crossover(club, name, x, west, east):
    """From one track at its western end to the other one at its eastern end, 100 long: a point in
    either, since a block that belongs to both tracks would let only one train pass at a time."""
    side = 1 if east[1] > west[1] else -1
    middle = (x + 50, (west[1] + east[1]) / 2)
    for (track, y), start, end, heading in ((west, x, x + 100, 0), (east, x + 100, x, 180)):
        club.point(f'{name} Crossover {track}', (start, y, heading), (end, y, heading),
                   (*middle, heading + 45 * side))


def central(club):
    throat(club, 'Central Outer', 266, 1)
    club.halves('Central 1', *loop_track(330, 1), 330, EXIT)
    club.halves('Central 2', *straight_track(266), 266, MAIN)
    club.halves('Central 3', *straight_track(202), 202, MAIN)
    for name, side in (('West', -1), ('East', 1)):
        outwards = 0 if side < 0 else 180
        up = 315 if side < 0 else 225
        club.point('Central Inner ' + name, (520 * side, 202, outwards),
                   (460 * side, 202, outwards), (446 * side, 163, up))
        club.point('Central Bay ' + name, (446 * side, 163, up), (396 * side, 113, up),
                   (386 * side, 138, outwards))
    club.halves('Central 4', [(-386, 138, 0)], [(386, 138, 0)], 138, EXIT)
    club.halves('Central 5', [(-396, 113, 315), (-382, 99, 315), (-322, 74, 0)],
                [(322, 74, 0), (382, 99, 45), (396, 113, 45)], 74, EXIT)
    for name, x in (('West', -660), ('East', 560)):
        upper, lower = ('Inner', 202), ('Outer', 266)
        crossover(club, 'Central ' + name, x, *((upper, lower) if x < 0 else (lower, upper)))
        near = -560 if x < 0 else 520
        for side, y in (('Inner', 202), ('Outer', 266)):
            club.zone(f'Central {name} {side}', [(near, y, 0), (near + 40, y, 0)])


def hillside(club):
    for name, y, side in (('Hillside Outer', -266, -1), ('Hillside Inner', -202, 1)):
        throat(club, name, y, side)
    club.halves('Hillside 1', *loop_track(-330, -1), -330, EXIT)
    club.halves('Hillside 2', *straight_track(-266), -266, MAIN)
    club.halves('Hillside 3', *straight_track(-202), -202, MAIN)
    club.halves('Hillside 4', *loop_track(-138, 1), -138, EXIT)
    crossover(club, 'Hillside', 560, ('Inner', -202), ('Outer', -266))
    for side, y in (('Inner', -202), ('Outer', -266)):
        club.zone('Hillside East ' + side, [(560, y, 180), (520, y, 180)])
        club.zone('Hillside West ' + side, [(-520, y, 180), (-560, y, 180)])


def curves(club):
    for name, y, x, radius in (('Outer', 266, 810, 150), ('Inner', 202, 746, 86)):
        inside = x - 14
        align = 'RIGHT' if name == 'Inner' else 'LEFT'
        place = inside if name == 'Inner' else x + 14
        club.zone(f'{name} East 1', [(660, y, 0), (x, y - radius, 270), (x, 0, 270)],
                  (place, 60), align)
        club.zone(f'{name} East 2', [(x, 0, 270), (x, radius - y, 270), (660, -y, 180)],
                  (place, -60), align)
    club.zone('Outer West 1', [(-695, -266, 180), (-810, -151, 90), (-810, 0, 90)], (-732, -106), 'LEFT')
    club.zone('Inner West 1', [(-620, -202, 180), (-660, -202, 180), (-746, -116, 90),
                               (-746, 0, 90)], (-732, -40), 'LEFT')
    club.zone('Outer West 2', [(-810, 0, 90), (-810, 116, 90), (-660, 266, 0)], (-732, 106),
              'LEFT')
    club.zone('Inner West 2', [(-746, 0, 90), (-746, 116, 90), (-660, 202, 0)], (-732, 40),
              'LEFT')


def junction(club):
    """Both lines into the branch, the inner one across the outer."""
    club.point('Junction Outer', (-560, -266, 180), (-625, -266, 180), (-626, -293, 225))
    club.point('Junction Inner', (-560, -202, 180), (-620, -202, 180), (-620, -227, 225))
    club.view.add(Crossing(Item('Junction Crossing'),
                           [(-625, -266, 180), (-680, -287, 225), (-620, -227, 225),
                            (-695, -266, 180)]))
    club.zone('Branch from Outer', [(-626, -293, 225), (-678, -345, 225), (-738, -370, 180)])
    club.zone('Branch from Inner', [(-680, -287, 225), (-738, -345, 225)])
    club.point('Branch Junction', (-798, -370, 0), (-738, -370, 0), (-738, -345, 45))
    club.zone('Branch Climb', [(-798, -370, 180), (-810, -370, 180), (-890, -290, 90),
                               (-890, 60, 90)], (-800, -380))
    club.branch_line = club.zone('Branch Line', [(-890, 60, 90), (-890, 330, 90)], (-890, 342),
                                 'TOP')


def main_line():
    club.view = view = View('Main Line', COLOUR)
    central(club)
    hillside(club)
    curves(club)
    junction(club)
    for name, place, angle in (('Central Entry East Outer', (690, 286), 270),
                               ('Central Entry West Outer', (-690, 286), 90)):
        club.signal(name, place, angle, MAIN)
    join_ends(view, {(-890, 330)})
    return view


# --- The branch ---

YARD = 56  # between two of its tracks


def ladder(club, name, x, y, side):
    """Seven points in a row on the slope, with a track at each; the outermost lies at the top."""
    down = 45 if side > 0 else 135
    along = 0 if side > 0 else 180
    for i in range(7):
        here = (x + YARD * i * side, y + YARD * i)
        club.point(f'{name} {i + 1}', (*here, down),
                   (here[0] + YARD * side, here[1] + YARD, down),
                   (here[0] + 60 * side, here[1] + 25, along))


def yard(club):
    west, east, top = -560, 760, -135
    ladder(club, 'Yard West', west, top, 1)
    ladder(club, 'Yard East', east, top, -1)
    for i in range(8):
        y = top + 25 + YARD * i
        start, end = west + YARD * i + 60, east - YARD * i - 60
        first, last = [(start, y, 0)], [(end, y, 0)]
        if i == 7:  # the end of both slopes
            first = [(start - 60, y - 25, 45), (start, y, 0)]
            last = [(end, y, 0), (end + 60, y - 25, 315)]
        if i < 4:
            club.halves(f'Yard {i + 1}', first, last, y)
        else:
            club.zone(f'Yard {i + 1}', first + last, (100, y - 4))
        club.signal(f'Yard {i + 1} Exit East', (end - 34, y + 13), 90, SHUNT)
        club.signal(f'Yard {i + 1} Exit West', (start + 34, y - 13), 270, SHUNT)
    club.zone('Yard Lead West', [(-660, -235, 45), (west, top, 45)], (-640, -170), 'RIGHT')
    club.zone('Yard Lead East', [(east, top, 315), (860, -235, 315)], (840, -150), 'LEFT')


def valley(club):
    club.point('Valley Point 1', (920, -396, 180), (860, -396, 180), (860, -371, 135))
    club.point('Valley Point 2', (860, -396, 180), (800, -396, 180), (800, -421, 225))
    club.zone('Valley Curve', [(920, -260, 0), (988, -328, 270), (920, -396, 180)],
              (1000, -328), 'LEFT')
    club.zone('Valley 1', [(860, -371, 135), (854, -365, 135), (794, -340, 180),
                           (-300, -340, 180), (-360, -315, 135), (-394, -281, 135)],
              (400, -346))
    club.zone('Valley 2', [(800, -396, 180), (0, -396, 180)], (400, -402))
    club.zone('Valley 3', [(800, -421, 225), (794, -427, 225), (734, -452, 180),
                           (0, -452, 180)], (400, -458))
    for number, x, y in ((1, 750, -354), (2, 750, -410), (3, 700, -466)):
        club.signal(f'Exit Valley {number}', (x - 32, y + 28), 90, EXIT)


def branch():
    club.view = view = View('Branch and Yard', COLOUR)
    club.draw_zone(club.branch_line, [(-860, -260, 0), (-720, -260, 0)], (-790, -270), 'BOTTOM')
    club.point('Yard Point West', (-720, -260, 0), (-660, -260, 0), (-660, -235, 45))
    club.point('Yard Point East', (920, -260, 180), (860, -260, 180), (860, -235, 135))
    club.zone('Yard Bypass West', [(-660, -260, 0), (-450, -260, 0)], (-560, -270))
    club.view.add(Crossing(Item('Sawmill Crossing'),
                           [(-450, -260, 0), (-394, -281, 315), (-436, -239, 315),
                            (-380, -260, 0)]))
    club.zone('Yard Bypass East', [(-380, -260, 0), (240, -260, 0)], (-70, -266))
    club.zone('Yard Bypass End', [(240, -260, 0), (860, -260, 0)], (550, -266))
    club.zone('Sawmill', [(-436, -239, 135), (-496, -214, 180), (-590, -214, 180)], (-440, -225),
              'TOP LEFT')
    yard(club)
    valley(club)
    join_ends(view, {(-860, -260), (-590, -214), (0, -396), (0, -452)})
    view.move(-70, 90)
    return view


# --- Scripts ---

class Lines:
    """Lines of scripts about what the views show, by its name."""

    def __init__(self, views):
        shown = [entry for view in views for entry in view.objects if not isinstance(entry, Label)]
        self.items = {one.item.name: one.item for one in shown}
        self.states = {}
        for one in shown:
            if isinstance(one, Point):
                self.states[one.item.name] = {state.name: state for state in one.states}
            elif isinstance(one, Signal):
                self.states[one.item.name] = one.aspects

    def occupied(self, *names, free=(), word='When'):
        """All of them, those that are to be free first: the last one names the train."""
        said = [(name, False) for name in free] + [(name, True) for name in names]
        return [[word if i == 0 else 'And', 'occupied', self.items[name], so]
                for i, (name, so) in enumerate(said)]

    def shows(self, name, state):
        return [['When', 'point-state', *self.state(name, state)]]

    def state(self, name, state):
        return self.items[name], self.states[name][state]

    def set(self, name, state):
        return ['set-point', *self.state(name, state)]

    def wait_shows(self, name, state):
        return ['wait-point', *self.state(name, state), 0]

    def wait_free(self, name):
        return ['wait-block', self.items[name], 'free', 0]

    def reserve(self, name, train='This'):
        return ['reserve', train, self.items[name]]


def block_signal(lines, signal, behind):
    return [script(f'{signal} Shows Stop', lines.occupied(behind), [lines.set(signal, 'Stop')]),
            script(f'{signal} Shows Go', lines.occupied(free=[behind]), [lines.set(signal, 'Go')])]


def entry_of_central(lines):
    """The outer line fills track 2 of Central, and track 1 while that is taken. The track is chosen
    while the train is before the signal, and no train on the point."""
    signal, point, before = 'Central Entry West Outer', 'Central Outer West', 'Outer West 2'
    one, two = (['Central 1 West', 'Central 1 East'], ['Central 2 West', 'Central 2 East'])
    taken = [line for word, block in zip(('When', 'Or'), two)
             for line in lines.occupied(block, before, free=[*one, point], word=word)]
    return [
        script('Central Entry to Track 2', lines.occupied(before, free=[*two, point]),
               [lines.set(signal, 'Go')]),
        script('Central Entry to Track 1', taken, [lines.set(signal, 'Slow')]),
        script('Central Route to Track 2', lines.shows(signal, 'Go'), [lines.set(point, 'Straight')]),
        script('Central Route to Track 1', lines.shows(signal, 'Slow'), [lines.set(point, 'Curved')]),
        script('Central Entry Goes Back', lines.occupied(point), [lines.set(signal, 'Stop')]),
    ]


def exit_track(lines, track, way):
    """Trains of both tracks take turns at the point where these come together."""
    signal, point, block = f'Exit {track} East', 'Central Outer East', f'{track} East'
    return script(f'{track} Leaves', lines.occupied(block),
                  [lines.reserve(point), lines.set(point, way), lines.set(signal, 'Go'),
                   ['wait-init-event'], lines.set(signal, 'Stop')])


def shuttle(lines, train, block, direction, speed, crossing):
    """At an end of its line, when the whole train has come in. A speed that is set under the brake is
    lost when the brake comes off, so whenever time may have passed it waits for that first."""
    item = next(one.value['id'] for one in LOKS if one.value['name'] == train)
    return script(f'{train} Leaves {block}',
                  lines.occupied(block) + [['And', 'lok-state', item, 'here']],
                  [['wait', 2], lines.wait_free(block), ['set-speed', item, 0, '%'], ['wait', 8],
                   lines.reserve(crossing, item), lines.wait_free(block),
                   ['set-direction', item, direction], ['set-speed', item, speed, '%'],
                   ['wait-init-event']])


YARD_TRACKS = (1, 2, 3)


def yard_move(lines, name, conditions, here, ways, arrivals, signal, direction, reserved):
    """A train stands for a while, and leaves when the way is its own as far as the last point. Its
    signal goes back where it arrives: until then nobody else gets a part of that way. A block that
    is only reserved counts as occupied, too, so the train has to be there."""
    points = [f'Yard East {i + 1}' for i in range(len(ways))]
    return script(name, conditions + [['And', 'lok-state', 'This', 'here']],
                  [*(lines.set(entered, 'Stop') for entered in arrivals),
                   ['wait', 4], lines.wait_free(here), ['set-speed', 'This', 0, '%'], ['wait', 20],
                   *(lines.reserve(block) for block in
                     [*reserved, 'Valley Curve', 'Yard Point East', 'Yard Lead East', *points]),
                   lines.set('Valley Point 1', 'Straight'), lines.set('Valley Point 2', 'Straight'),
                   lines.set('Yard Point East', 'Curved'),
                   *(lines.set(point, way) for point, way in zip(points, ways)),
                   lines.set(signal, 'Go'), lines.wait_free(here),
                   ['set-direction', 'This', direction], ['set-speed', 'This', 50, '%'],
                   lines.wait_shows(signal, 'Stop')])


def yard_scripts(lines):
    """Trains go to the valley in the order in which they have come, and each fills the first free
    track of the yard when it comes back."""
    valley, exits = 'Exit Valley 2', [f'Yard {i} Exit East' for i in YARD_TRACKS]
    made = []
    for track in YARD_TRACKS:
        ways = ['Straight'] * (track - 1) + ['Curved']
        taken = [f'Yard {i} East' for i in range(1, track)]
        made += [
            yard_move(lines, f'Valley 2 to Yard {track}',
                      lines.occupied(*taken, 'Valley 2', free=[f'Yard {track} East']),
                      'Valley 2', ways, exits, valley, 'Reverse', []),
            yard_move(lines, f'Yard {track} to Valley 2', lines.occupied(f'Yard {track} East'),
                      f'Yard {track} East', ways, [valley], exits[track - 1], 'Forwards',
                      ['Valley 2']),
        ]
    return made


def guard(lines, crossing, *approaches):
    conditions = [line for i, name in enumerate(approaches)
                  for line in lines.occupied(name, word='Or' if i else 'While')]
    return script(f'Guard of {crossing}', conditions, [lines.reserve(crossing)])


def make_scripts(views):
    lines = Lines(views)
    return [
        *entry_of_central(lines),
        exit_track(lines, 'Central 1', 'Curved'),
        exit_track(lines, 'Central 2', 'Straight'),
        *block_signal(lines, 'Exit Central 3 East', 'Inner East 1'),
        *block_signal(lines, 'Exit Hillside 2 West', 'Outer West 1'),
        *block_signal(lines, 'Exit Hillside 3 West', 'Inner West 1'),
        guard(lines, 'Junction Crossing', 'Hillside West Outer', 'Branch from Inner'),
        shuttle(lines, 'Railcar 5', 'Yard Bypass East', 'Reverse', 50, 'Sawmill Crossing'),
        shuttle(lines, 'Railcar 5', 'Yard Bypass West', 'Forwards', 50, 'Sawmill Crossing'),
        shuttle(lines, 'Shunter 3', 'Sawmill', 'Reverse', 60, 'Sawmill Crossing'),
        shuttle(lines, 'Shunter 3', 'Valley 1', 'Forwards', 60, 'Sawmill Crossing'),
        *yard_scripts(lines),
    ]


club = Club()
VIEWS = [main_line(), branch()]
INPUTS_EACH = 16
INPUTS = [Item() for _ in range(-(-len(club.zones) // INPUTS_EACH) * INPUTS_EACH)]
for detected, entry in zip(club.zones, INPUTS):
    detected.input = entry
find_detectors(VIEWS)
READERS = [reader(first // INPUTS_EACH + 1, INPUTS[first:first + INPUTS_EACH])
           for first in range(0, len(INPUTS), INPUTS_EACH)]
print(len(club.zones), 'zones,', club.addresses, 'accessory outputs', file=sys.stderr)
sys.stdout.write(document('Club Layout', VIEWS, LOKS, [bus(READERS)], make_scripts(VIEWS)))
