"""Writes layout files as the program does, from a description of the railway by its geometry.

Ends of track that lie at the same place are joined, in the diagram and in the railway alike.
Directions are in degrees, clockwise from the right, and multiples of 45; a track that needs no bend
from one node to the next is straight.
"""

import math

HALF = math.sqrt(0.5)
DIRECTIONS = {0: (1, 0), 45: (HALF, HALF), 90: (0, 1), 135: (-HALF, HALF), 180: (-1, 0),
              225: (-HALF, -HALF), 270: (0, -1), 315: (HALF, -HALF)}
INWARD, OUTWARD = 1, 2


# --- The document ---

class Item:
    """Something with a number; numbers are given in the order in which the file mentions them."""

    def __init__(self, name=None):
        self.name = name
        self.input = None
        self.outputs = []
        self.joins = {}  # by the name of the end


class Tagged:
    def __init__(self, tag, value):
        self.tag, self.value = tag, value


class Flow(list):
    """A sequence in one line."""


def number(value):
    return repr(int(value) if value == int(value) else float(value))


class Writer:
    def __init__(self):
        self.ids = {}

    def scalar(self, value):
        if value is None:
            return '~'
        if isinstance(value, Item):
            return str(self.ids.setdefault(value, len(self.ids)))
        if isinstance(value, bool):
            return 'true' if value else 'false'
        if isinstance(value, str):
            return f'"{value}"' if not value or value[0] in '#%' else value
        if isinstance(value, Flow):
            return '[' + ', '.join(self.scalar(part) for part in value) + ']'
        return number(value)

    def lines(self, value):
        """Without indentation of their own."""
        if isinstance(value, Tagged):
            yield value.tag
            yield from self.lines(value.value)
        elif isinstance(value, dict):
            for key, part in value.items():
                yield from self.entry(self.scalar(key) + ':', part)
        elif isinstance(value, list) and not isinstance(value, Flow):
            for part in value:
                first = True
                for line in self.lines(part):
                    yield ('- ' if first else '  ') + line
                    first = False
        else:
            yield self.scalar(value)

    def entry(self, key, value):
        if isinstance(value, list) and not isinstance(value, Flow) and not value:
            yield key
            yield '  []'
        elif isinstance(value, dict) or (isinstance(value, list) and not isinstance(value, Flow)):
            yield key
            for line in self.lines(value):
                yield '  ' + line
        else:
            yield f'{key} {self.scalar(value)}'

    def text(self, value):
        return '%YAML 1.2\n' + '\n'.join(self.lines(value)) + '\n'


# --- Geometry ---

class Node:
    def __init__(self, x, y, degrees):
        self.pos = (x, y)
        self.degrees = degrees % 360
        self.dir = DIRECTIONS[self.degrees]
        self.left = self.right = None  # lengths of the handles
        self.before = self.after = None  # over a straight segment

    def chord(self):
        if not self.before and not self.after:
            return None
        start, end = (self.before or self).pos, (self.after or self).pos
        x, y = end[0] - start[0], end[1] - start[1]
        length = math.hypot(x, y)
        return (x / length, y / length)

    def form(self):
        form = {'pos': Flow(self.pos)}
        if not self.chord():
            form['dir'] = Flow(part + 0.0 for part in self.dir)
        if self.left:
            form['left'] = self.left
        if self.right:
            form['right'] = self.right
        return form


class End(Node):
    """Where a track ends: an end of a block."""

    def __init__(self, shown, name, place, kind):
        super().__init__(*place)
        self.shown, self.name, self.kind, self.partner = shown, name, kind, None

    def join(self, other):
        turned = (self.degrees + 180 * (self.kind == other.kind)) % 360
        assert turned == other.degrees, f'a kink at {self.pos}: {self.shown.item.name}'
        self.partner, other.partner = other, self
        self.shown.item.joins[self.name] = other
        other.shown.item.joins[other.name] = self

    def form(self):
        if self.partner and not self.chord() and self.partner.chord():
            sign = -1 if self.partner.kind == self.kind else 1
            self.dir = tuple(sign * part for part in self.partner.chord())
        form = super().form()
        if self.partner:
            form['link'] = Flow([self.partner.shown.index, self.partner.name])
        return form

    def block_link(self):
        """A block that is drawn in two views may be joined in either."""
        partner = self.shown.item.joins.get(self.name)
        return Flow([partner.shown.item, partner.name]) if partner else None


def handle_length(start, end):
    """Of an arc, or of a bend and a counter-bend."""
    distance = math.dist(start.pos, end.pos)
    turn = abs((end.degrees - start.degrees + 180) % 360 - 180)
    if turn == 0:
        return round(distance * 0.45, 1)
    radius = distance / 2 / math.sin(math.radians(turn / 2))
    return max(4, round(4 / 3 * math.tan(math.radians(turn / 4)) * radius, 1))


def is_straight(start, end):
    x, y = end.pos[0] - start.pos[0], end.pos[1] - start.pos[1]
    along = start.degrees == end.degrees
    return along and abs(math.degrees(math.atan2(y, x)) % 360 - start.degrees) % 360 < 0.01


def join_up(start, end, neighbours=True):
    """One segment. A node has room for one straight neighbour on either side."""
    if not is_straight(start, end):
        length = handle_length(start, end)
        start.right, end.left = max(start.right or 0, length), max(end.left or 0, length)
        return False
    if neighbours and not start.after and not end.before:
        start.after, end.before = end, start
    return True


# --- Diagram objects, and what they show ---

class Zone:
    def __init__(self, item, places):
        self.item = item
        self.nodes = [End(self, 'left', places[0], INWARD)]
        self.nodes += [Node(*place) for place in places[1:-1]]
        self.nodes.append(End(self, 'right', places[-1], OUTWARD))
        self.ends = [self.nodes[0], self.nodes[-1]]
        for start, end in zip(self.nodes, self.nodes[1:]):
            join_up(start, end)

    def form(self):
        return Tagged('!view-zone', {'zone': self.item, 'left': self.ends[0].form(),
                                     'right': self.ends[1].form(),
                                     'nodes': [node.form() for node in self.nodes[1:-1]]})

    def block(self):
        return Tagged('!zone', {'name': self.item.name, 'id': self.item, 'input': self.item.input,
                                'invert': False, 'left': self.ends[0].block_link(),
                                'right': self.ends[1].block_link()})


class Point:
    def __init__(self, item, common, states):
        self.item = item
        self.common = End(self, 'common', common, INWARD)
        self.states = {Item(name): End(self, 'state:' + name, place, OUTWARD)
                       for name, place in states.items()}
        self.ends = [self.common, *self.states.values()]
        for end in self.states.values():
            join_up(self.common, end)

    def form(self):
        return Tagged('!view-point', {'point': self.item, 'common': self.common.form(),
                                      'states': {s: e.form() for s, e in self.states.items()}})

    def block(self):
        states = [state_form(state, [side])
                  for state, side in zip(self.states, ('Left', 'Right'))]
        links = {end.name: end.block_link() for end in self.ends}
        return Tagged('!point', {'name': self.item.name, 'id': self.item,
                                 'outputs': [output_form(a) for a in self.item.outputs],
                                 'states': states, 'input': self.item.input, 'links': links})


class Corners:
    names = ('top-left', 'top-right', 'bottom-left', 'bottom-right')

    def __init__(self, item, places):
        self.item = item
        self.ends = [End(self, name, place, INWARD if name.endswith('left') else OUTWARD)
                     for name, place in zip(self.names, places)]

    def end_forms(self):
        return {end.name: end.form() for end in self.ends}

    def links(self):
        return {end.name: end.block_link() for end in self.ends}


class Crossing(Corners):
    def __init__(self, item, places):
        super().__init__(item, places)
        join_up(self.ends[0], self.ends[3])
        join_up(self.ends[2], self.ends[1])

    def form(self):
        return Tagged('!view-crossing', {'crossing': self.item, **self.end_forms()})

    def block(self):
        return Tagged('!crossing', {'name': self.item.name, 'id': self.item,
                                    'input': self.item.input, **self.links()})


class Scissor(Corners):
    ways = {'tl-tr': ('Top Left to Top Right', 0, 1, 'Left', 'Left'),
            'tl-br': ('Top Left to Bottom Right', 0, 3, 'Left', 'Right'),
            'bl-tr': ('Bottom Left to Top Right', 2, 1, 'Right', 'Left'),
            'bl-br': ('Bottom Left to Bottom Right', 2, 3, 'Right', 'Right')}

    def __init__(self, item, places):
        super().__init__(item, places)
        self.states = {role: Item(way[0]) for role, way in self.ways.items()}
        self.straight = Flow(role for role, way in self.ways.items()
                             if join_up(self.ends[way[1]], self.ends[way[2]], neighbours=False))

    def form(self):
        return Tagged('!view-scissor', {'scissor': self.item, **self.end_forms(),
                                        'straight': self.straight})

    def block(self):
        states = [state_form(self.states[role], way[3:]) for role, way in self.ways.items()]
        return Tagged('!scissor', {'name': self.item.name, 'id': self.item,
                                   'outputs': [output_form(a) for a in self.item.outputs],
                                   'states': states, 'input': self.item.input,
                                   'links': self.links(), 'state-map': self.states})


class Signal:
    ends = ()

    def __init__(self, item, pos, angle, anchor, states):
        self.item, self.pos, self.angle, self.anchor = item, pos, angle, anchor
        self.states = states
        self.aspects = {name: Item(name) for name in states}

    def form(self):
        return Tagged('!view-signal', {'signal': self.item, 'pos': Flow(self.pos),
                                       'angle': self.angle, 'anchor': self.anchor})

    def block(self):
        states = []
        for (name, picture), sides in zip(self.states.items(), aspect_outputs(self.states)):
            state = state_form(self.aspects[name], sides)
            state['image'] = picture
            states.append(state)
        return Tagged('!signal', {'name': self.item.name, 'id': self.item,
                                  'outputs': [output_form(a) for a in self.item.outputs],
                                  'states': states})


class Label:
    ends = ()

    def __init__(self, item, pos, align):
        self.item, self.pos, self.align = item, pos, align

    def form(self):
        return Tagged('!view-label', {'zone': self.item, 'pos': Flow(self.pos),
                                      'align': self.align})


def aspect_outputs(states):
    """Two outputs tell three aspects."""
    if len(states) == 2:
        return [['Left'], ['Right']]
    return [['Left', 'Left'], ['Right', 'Left'], ['Right', 'Right']]


def output_form(address):
    return {'type': 'Basic', 'device': None, 'address': address[0], 'output': address[1]}


def state_form(state, sides):
    return {'name': state.name, 'id': state,
            'outputs': [{'enabled': True, 'basic': side} for side in sides]}


class View:
    """The objects are drawn in the order in which they are made, but for labels, which are last."""

    def __init__(self, name, colour, hidden=False):
        self.item = Item(name)
        self.colour, self.hidden = colour, hidden
        self.objects = []

    def add(self, shown):
        self.objects.append(shown)
        return shown

    def move(self, x, y):
        """All of it."""
        for shown in self.objects:
            for placed in getattr(shown, 'nodes', shown.ends) or [shown]:
                placed.pos = (placed.pos[0] + x, placed.pos[1] + y)

    def form(self):
        self.objects.sort(key=lambda shown: (2 if isinstance(shown, Label) else
                                             1 if isinstance(shown, Signal) else 0))
        for index, shown in enumerate(self.objects):
            shown.index = index
        return Tagged('!view', {'name': self.item.name, 'id': self.item, 'colour': self.colour,
                                'image': '', 'hidden': self.hidden,
                                'objects': [shown.form() for shown in self.objects]})


def join_ends(view, dead_ends):
    """By place. Every end is joined, or is known to lead nowhere."""
    places = {}
    for shown in view.objects:
        for end in shown.ends:
            places.setdefault(end.pos, []).append(end)
    for pos, ends in places.items():
        if len(ends) == 1:
            assert pos in dead_ends, f'{ends[0].shown.item.name} ends at {pos}'
        else:
            first, second = ends
            first.join(second)


def find_detectors(views):
    """What has no input of its own shares that of the nearest zone, a point that of the zone at its
    common end: trains that take another way than to that zone are never seen there."""
    waiting = [shown.item for view in views for shown in view.objects
               if shown.ends and not shown.item.input]
    while waiting:
        found = {}
        for item in waiting:
            ends = sorted(item.joins, key='common'.__ne__)
            inputs = [item.joins[end].shown.item.input for end in ends]
            found[item] = next(filter(None, inputs), None)
        for item, entry in found.items():
            item.input = entry
        waiting = [item for item in waiting if not item.input]


# --- Locomotives, readers, and all together ---

def lok(name, address, top_speed, functions, speed=1):
    """Functions are name: (decoder function, type). An address as text is a long one."""
    if isinstance(address, str):
        address = Raw('!long ' + address)
    return Tagged('!lok', {
        'name': name, 'id': Item(name), 'top-speed': top_speed,
        'decoders': [{'type': 'DCC 128', 'device': None, 'address': address, 'speed': speed}],
        'functions': [{'name': title, 'id': Item(title), 'type': kind, 'decoder': 0,
                       'function': channel, 'on_image': None, 'off_image': None}
                      for title, (channel, kind) in functions.items()]})


class Raw(str):
    """Text that stands in the file as it is."""


def reader(address, inputs):
    return Tagged('!device/Tessara/QVRN', {
        'name': f'RailCom Reader {address}', 'id': Item(), 'address': address,
        'serial-nr': f'RR-{address}', 'inputs': [{'id': entry} for entry in inputs]})


def bus(readers):
    return Tagged('!device/Tessara/BUS', {'name': 'Tessara Bus 1', 'id': Item(),
                                          'serial-nr': 'TB-0001', 'devices': readers})


def script(name, conditions, commands):
    """Lines as lists of their elements; the first condition begins with When or While."""
    return Tagged('!script', {'name': name, 'id': Item(name),
                              'conditions': [Flow(line) for line in conditions],
                              'commands': [Flow(line) for line in commands]})


def document(title, views, loks, devices, scripts=()):
    """Points, scissor points, signals and blocks are those that the views show, by kind."""
    shown = {(entry.item, type(entry)): entry for view in views for entry in view.objects}.values()
    blocks = [entry.block() for kind in (Point, Scissor, Signal, Zone, Crossing)
              for entry in shown if isinstance(entry, kind)]
    forms = [view.form() for view in views]
    return Writer().text({'title': title, 'objects': forms + loks + blocks + devices
                                             + list(scripts)})
