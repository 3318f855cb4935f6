#!/usr/bin/python3
"""Writes sample.zblt to its standard output: an oval with a station of two tracks, a siding behind
a crossover, and a branch that crosses the line."""

import sys

from railway import (Crossing, Item, Label, Point, Scissor, Signal, View, Zone, bus, document,
                     join_ends, lok, reader, script)

LIGHT = {'Light': (0, 'Toggle')}
HORN = {'Horn': (2, 'Pulse')}
CAB = {'Cab Light': (4, 'Toggle')}
LOKS = [
    lok('Shunter 3', 3, 60, LIGHT | HORN),
    lok('Local 24', 24, 100, LIGHT | CAB),
    lok('Express 103', 103, 200, LIGHT | HORN | CAB),
    lok('Railcar 5', '5', 90, LIGHT | HORN | {'Passenger Lights': (1, 'Toggle')}),
    lok('Goods 1200', 1200, 80, LIGHT | HORN, speed=0.75),
]
PICTURES = {'Stop': '../signals/main-2-stop.svg', 'Go': '../signals/main-2-go.svg'}

INPUTS = [Item() for _ in range(16)]

# Which input of the readers reports a block, counted over both of them. The crossing has that of
# the zone beyond it on the line, so that the two together are long enough to stop in.
DETECTORS = {'Station 1': 0, 'Station 2': 1, 'East Point': 2, 'East Curve': 2, 'West Point': 3,
             'West Curve': 3, 'East Approach': 4, 'South Approach': 5, 'Branch South': 6,
             'Branch Crossing': 8, 'North Curve': 8, 'North Line East': 9, 'North Line West': 10,
             'Siding Crossover': 10, 'Siding East': 11, 'Siding West': 12, 'Branch North': 13,
             'North Approach': 14}


def block(name, *addresses):
    item = Item(name)
    item.input = INPUTS[DETECTORS[name]]
    item.outputs = addresses
    return item


def make_view():
    view = View('Station', '#d3dae0')

    def zone(name, places, label, align):
        item = view.add(Zone(block(name), places)).item
        view.add(Label(item, label, align))

    zone('Station 1', [(-245, 230, 0), (245, 230, 0)], (0, 244), 'TOP')
    zone('Station 2', [(-245, 211, 315), (-220, 186, 315), (-157, 160, 0), (157, 160, 0),
                       (220, 186, 45), (245, 211, 45)], (0, 150), 'BOTTOM')
    zone('East Curve', [(290, 230, 0), (430, 90, 270)], (392, 146), 'RIGHT')
    zone('East Approach', [(430, 90, 270), (430, 10, 270)], (416, 50), 'RIGHT')
    zone('North Curve', [(430, -50, 270), (430, -90, 270), (310, -210, 180)], (382, -142), 'RIGHT')
    zone('North Line East', [(310, -210, 180), (60, -210, 180)], (190, -198), 'TOP')
    zone('North Line West', [(-20, -210, 180), (-310, -210, 180)], (-165, -198), 'TOP')
    zone('West Curve', [(-310, -210, 180), (-430, -90, 90), (-430, 90, 90), (-290, 230, 0)],
         (-418, 0), 'LEFT')
    zone('Siding East', [(300, -260, 180), (60, -260, 180)], (180, -270), 'BOTTOM')
    zone('Siding West', [(-20, -260, 180), (-280, -260, 180)], (-150, -270), 'BOTTOM')
    zone('Branch North', [(80, -70, 0), (300, -70, 0)], (190, -60), 'TOP')
    zone('North Approach', [(300, -70, 0), (340, -70, 0), (408, -42, 45)], (330, -80), 'BOTTOM')
    zone('South Approach', [(452, 2, 45), (480, 70, 90), (480, 110, 90)], (492, 66), 'LEFT')
    zone('Branch South', [(480, 110, 90), (480, 260, 90)], (505, 270), 'TOP RIGHT')
    view.add(Crossing(block('Branch Crossing'),
                      [(430, 10, 270), (452, 2, 45), (408, -42, 45), (430, -50, 270)]))
    view.add(Point(block('West Point', (1, 1)), (-290, 230, 0),
                   {'Straight': (-245, 230, 0), 'Curved': (-245, 211, 315)}))
    view.add(Point(block('East Point', (2, 1)), (290, 230, 180),
                   {'Straight': (245, 230, 180), 'Curved': (245, 211, 225)}))
    view.add(Scissor(block('Siding Crossover', (3, 1), (3, 2)),
                     [(60, -210, 180), (-20, -210, 180), (60, -260, 180), (-20, -260, 180)]))
    for number, place in ((1, (195, 248)), (2, (116, 178))):
        item = Item(f'Exit Signal {number}')
        item.outputs = [(3 + number, 1)]
        view.add(Signal(item, place, 90, 'Bottom', PICTURES))
    join_ends(view, {(300, -260), (-280, -260), (80, -70), (480, 260)})
    return view


def make_scripts(view):
    blocks = {shown.item.name: shown.item for shown in view.objects}

    def occupied(word, name, is_so=True):
        return [word, 'occupied', blocks[name], is_so]

    def turn(name, block_name, direction):
        """At an end of the branch, when the whole train has come in."""
        return script(name, [occupied('When', block_name)],
                      [['wait', 3], ['set-speed', 'This', 0, '%'], ['wait', 5],
                       ['set-direction', 'This', direction], ['set-speed', 'This', 60, '%']])

    def wait_for_line(name, block_name, approach):
        """At an end of the branch, while a train comes to the crossing or has not cleared it. One
        that has set out is let go: it would stop on the crossing."""
        conditions = []
        for way in ('East Curve', 'East Approach', 'North Curve'):
            conditions += [occupied('Or' if conditions else 'While', way),
                           occupied('And', approach, False), occupied('And', block_name)]
        return script(name, conditions, [['set-speed', 'This', 0, '%']])

    return [
        script('Slow Curves', [occupied('While', 'East Curve'), occupied('Or', 'West Curve')],
               [['set-speed', 'This', 40, '%']]),
        # A speed of 0 that ends under a brake would stay: only while none can come from ahead.
        script('Station Stop', [occupied('When', 'East Curve', False), occupied('And', 'Station 1')],
               [['wait', 2], ['save'], ['set-speed', 'This', 0, '%'], ['wait', 6],
                ['set-function', 'This', 'Horn', True], ['wait', 1], ['restore']]),
        turn('Shuttle Leaves North', 'Branch North', 'Forwards'),
        turn('Shuttle Leaves South', 'Branch South', 'Reverse'),
        wait_for_line('Shuttle Waits North', 'Branch North', 'North Approach'),
        wait_for_line('Shuttle Waits South', 'Branch South', 'South Approach'),
    ]


VIEW = make_view()
READERS = [reader(address, INPUTS[8 * address - 8:8 * address]) for address in (1, 2)]
sys.stdout.write(document('Sample Layout', [VIEW], LOKS, [bus(READERS)],
                          make_scripts(VIEW)))
