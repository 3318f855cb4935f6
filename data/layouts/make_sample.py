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

# Which input of the readers reports a block, counted over both of them.
DETECTORS = {'Station 1': 0, 'Station 2': 1, 'East Point': 2, 'East Curve': 2, 'West Point': 3,
             'West Curve': 3, 'North Line East': 8, 'Branch Crossing': 8, 'North Line West': 9,
             'Siding Crossover': 9, 'Siding East': 10, 'Siding West': 11, 'Branch North': 12,
             'Branch South': 13}


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

    zone('Station 1', [(-245, 170, 0), (245, 170, 0)], (0, 184), 'TOP')
    zone('Station 2', [(-245, 151, 315), (-220, 126, 315), (-157, 100, 0), (157, 100, 0),
                       (220, 126, 45), (245, 151, 45)], (0, 90), 'BOTTOM')
    zone('East Curve', [(290, 170, 0), (430, 30, 270)], (392, 76), 'RIGHT')
    zone('North Line East', [(430, -30, 270), (310, -150, 180), (60, -150, 180)], (190, -138),
         'TOP')
    zone('North Line West', [(-20, -150, 180), (-310, -150, 180)], (-165, -138), 'TOP')
    zone('West Curve', [(-310, -150, 180), (-430, -30, 90), (-430, 30, 90), (-290, 170, 0)], (-418, 0), 'LEFT')
    zone('Siding East', [(300, -200, 180), (60, -200, 180)], (180, -210), 'BOTTOM')
    zone('Siding West', [(-20, -200, 180), (-280, -200, 180)], (-150, -210), 'BOTTOM')
    zone('Branch North', [(130, -50, 0), (340, -50, 0), (408, -22, 45)], (225, -40), 'TOP')
    zone('Branch South', [(452, 22, 45), (480, 90, 90), (480, 190, 90)], (505, 200), 'TOP RIGHT')
    view.add(Crossing(block('Branch Crossing'),
                      [(430, 30, 270), (452, 22, 45), (408, -22, 45), (430, -30, 270)]))
    view.add(Point(block('West Point', (1, 1)), (-290, 170, 0),
                   {'Straight': (-245, 170, 0), 'Curved': (-245, 151, 315)}))
    view.add(Point(block('East Point', (2, 1)), (290, 170, 180),
                   {'Straight': (245, 170, 180), 'Curved': (245, 151, 225)}))
    view.add(Scissor(block('Siding Crossover', (3, 1), (3, 2)),
                     [(60, -150, 180), (-20, -150, 180), (60, -200, 180), (-20, -200, 180)]))
    for number, place in ((1, (195, 188)), (2, (116, 118))):
        item = Item(f'Exit Signal {number}')
        item.outputs = [(3 + number, 1)]
        view.add(Signal(item, place, 90, 'Bottom', PICTURES))
    join_ends(view, {(300, -200), (-280, -200), (130, -50), (480, 190)})
    return view


def make_scripts(view):
    blocks = {shown.item.name: shown.item for shown in view.objects}

    def occupied(word, name):
        return [word, 'occupied', blocks[name], True]

    def turn(name, block_name, direction):
        """At an end of the branch, when the whole train has come in."""
        return script(name, [occupied('When', block_name)],
                      [['wait', 3], ['set-speed', 'This', 0, '%'], ['wait', 5],
                       ['set-direction', 'This', direction], ['set-speed', 'This', 40, '%']])

    return [
        script('Slow Curves', [occupied('While', 'East Curve'), occupied('Or', 'West Curve')],
               [['set-speed', 'This', 40, '%']]),
        script('Station Stop', [occupied('When', 'Station 1')],
               [['wait', 2], ['save'], ['set-speed', 'This', 0, '%'], ['wait', 6],
                ['set-function', 'This', 'Horn', True], ['wait', 1], ['restore']]),
        turn('Shuttle Leaves North', 'Branch North', 'Forwards'),
        turn('Shuttle Leaves South', 'Branch South', 'Reverse'),
    ]


VIEW = make_view()
READERS = [reader(address, INPUTS[8 * address - 8:8 * address]) for address in (1, 2)]
sys.stdout.write(document('Sample Layout', [VIEW], LOKS, [bus(READERS)],
                          make_scripts(VIEW)))
