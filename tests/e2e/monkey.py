#!/usr/bin/python3
"""Operates the demonstration at random, by keys, pointer and assistive technology, and fails when it
ends by itself, stops answering, or takes no more input.

    monkey.py DEMONSTRATION LAYOUT [SECONDS [SEED]]

The same seed makes the same choices, among what is on the screen by then. Works in a folder of its own.
"""

import collections
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from zemblar_ui import NotSeen, Program, pixels, screenshot, wait_for

SCREEN = (1280, 800)
MOST_WINDOWS = 8
ANSWER_LIMIT = 60  # seconds; a slow build on a busy machine needs some
PROBE_INTERVAL = 20  # seconds

PLAIN_KEYS = ['Tab', 'Tab', 'shift+Tab', 'space', 'Return', 'Escape', 'Escape', 'Left', 'Right', 'Up',
              'Down', 'Home', 'End', 'Page_Down', 'Delete', 'BackSpace', 'F2', 'F10', 'shift+F10',
              'shift+F10', 'Menu', 'alt+Up', 'alt+Down', 'plus', 'minus', 'a', 'j', '1', '7', 'e']
COMMAND_KEYS = ['ctrl+n', 'ctrl+0', 'ctrl+0', 'ctrl+plus', 'ctrl+minus', 'ctrl+z', 'ctrl+z',
                'ctrl+shift+z', 'ctrl+y', 'ctrl+a', 'ctrl+c', 'ctrl+v', 'ctrl+Page_Down', 'ctrl+w', 'ctrl+shift+space',
                'alt+f', 'alt+v', 'alt+e', 'alt+b', 'alt+n', 'alt+a', 'alt+d']
DIALOG_KEYS = ['ctrl+o', 'ctrl+s', 'ctrl+shift+s']  # what follows might be typed into a file's name
CHOOSER_KEYS = ['Escape', 'Escape', 'Tab', 'shift+Tab', 'Up', 'Down', 'shift+F10', 'a', 'b']
TEXTS = ['', 'Yard', 'Große Echse', '7', '99999', '-1', '0.5', 'localhost', '_', 'x' * 300]

# Complaints of the toolkit about itself, of no use to anybody. To see where another one comes from, run with
# G_DEBUG=fatal-criticals, which ends the program at the first.
HARMLESS = [
    # A row is about to be dragged, by a motion that is older than a menu's grab of the pointer.
    "g_object_set_data_full: assertion 'G_IS_OBJECT (object)' failed",
    # The bridge to assistive technology asks a control that has just gone for its value.
    "g_value_type_compatible: assertion 'src_type' failed",
]
MOST_HARMLESS = 3  # of each; a fault of ours may well read the same


def is_chooser(window):
    return window.role == 'file chooser' or window.name in ('Open', 'Save As')


class Monkey:
    """One run: what is chosen, what is done, and what has been done lately."""

    def __init__(self, demonstration, layout, folder, seed):
        self.chance = random.Random(seed)
        self.demonstration = demonstration
        self.folder = folder
        self.layouts = [shutil.copy(layout, folder),
                        shutil.copy(layout.replace('sample', 'club'), folder)]
        self.done = collections.deque(maxlen=60)
        self.counts = collections.Counter()
        self.output = open(os.path.join(folder, 'log'), 'a', encoding='utf-8')
        self.log = open(self.output.name, encoding='utf-8', errors='replace')
        self.start()

    def start(self):
        os.environ['XDG_CONFIG_HOME'] = os.path.join(self.folder, 'config')
        options = {'UBSAN_OPTIONS': 'halt_on_error=1:print_stacktrace=1'}
        self.program = Program(self.demonstration, self.chance.choice(self.layouts), env=options,
                               output=self.output, errors=self.output)
        self.counts['starts'] += 1
        wait_for(self.windows, 'the first window', ANSWER_LIMIT)

    # What there is

    def windows(self):
        if self.program.process.poll() is not None:
            raise NotSeen(f'the program has ended with {self.program.process.returncode}')
        return [w for w in self.program.windows() if w.name and w.role not in ('window', 'tool tip')]

    def main_windows(self):
        return [w for w in self.windows() if w.name.startswith('Zemblar')]

    def choosers(self):
        return [w for w in self.windows() if is_chooser(w)]

    def some_item(self, window):
        """By going down at random."""
        item = window
        while True:
            is_table = item.role in ('tree table', 'table')
            children = [] if is_table else [c for c in item.children() if c.name != 'Quit']
            if not children or (item is not window and self.chance.random() < 0.1):
                return item
            item = self.chance.choice(children)

    # Keys and pointer

    def pointer_place(self):
        """In the program: the menu of the desktop would end the desktop."""
        window = self.chance.choice(self.windows())
        item = window if self.chance.random() < 0.3 else self.some_item(window)
        x, y, width, height = item.extents()
        return (max(0, x + self.chance.randrange(max(1, width))),
                max(0, y + self.chance.randrange(max(1, height))))

    def gesture(self, keys):
        """Some words for xdotool."""
        kind = self.chance.choice(['key', 'key', 'key', 'click', 'click', 'menu', 'double', 'wheel',
                                   'drag', 'type'])
        if kind == 'key':
            return ['key', '--delay', '0', self.chance.choice(keys)]
        if kind == 'type':
            return ['type', '--delay', '0', self.chance.choice(['12', 'Loc', '5e', '  '])]
        move = ['mousemove', *map(str, self.pointer_place())]
        if kind == 'drag':
            button = self.chance.choice(['1', '1', '2'])
            there = ['mousemove', *map(str, self.pointer_place())]
            return [*move, 'mousedown', button, *there, 'mouseup', button]
        clicks = {'click': ['1'], 'menu': ['3'], 'wheel': [self.chance.choice('45')]}
        button = clicks.get(kind, ['--repeat', '2', '--delay', '10', '1'])
        return [*move, 'click', *button]

    def xdotool(self, words, wait=True):
        self.done.append(' '.join(words))
        tool = subprocess.Popen(['xdotool', *words], stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)
        if wait:
            tool.wait(ANSWER_LIMIT)
        return tool

    def slowly(self):
        for _ in range(self.chance.randrange(1, 5)):
            if self.choosers():
                return
            self.xdotool(self.gesture(PLAIN_KEYS + COMMAND_KEYS))
            time.sleep(self.chance.choice([0.02, 0.1, 0.3]))

    def fast(self):
        words = []
        for _ in range(self.chance.randrange(3, 15)):
            words += self.gesture(PLAIN_KEYS + COMMAND_KEYS)
        if self.chance.random() < 0.2:
            words += ['key', self.chance.choice(DIALOG_KEYS)]
        self.xdotool(words)

    def while_held(self):
        """Somebody holds the pointer, on a title bar for example, and presses keys."""
        x, y, width, _ = self.chance.choice(self.windows()).extents()
        places = [(x + width // 3, max(0, y - 8)), self.pointer_place()]
        keys = [self.chance.choice(['shift+F10', 'Menu', 'space', 'Escape', 'F10'])
                for _ in range(self.chance.randrange(1, 4))]
        self.xdotool(['mousemove', *map(str, self.chance.choice(places)), 'mousedown', '1',
                      'key', *keys, 'mousemove_relative', '--', '7', '5', 'mouseup', '1'])

    # Assistive technology

    def accessible(self):
        for _ in range(self.chance.randrange(1, 4)):
            window = self.chance.choice(self.windows())
            if is_chooser(window):
                return
            self.use(self.some_item(window))

    def use(self, item):
        # The toolkit's bridge presses what is not there as well, and complains of it.
        if not item.has('showing') and 'menu' not in item.role:
            return
        self.done.append(f'use {item}')
        accessible = item.accessible
        for act in self.chance.sample([self.press, self.set_value, self.set_text, self.select], 4):
            try:
                act(accessible)
                return
            except (NotImplementedError, IndexError, ValueError):
                continue

    def press(self, accessible):
        if accessible.name != 'Quit':
            accessible.queryAction().doAction(0)

    # The toolkit's bridge complains when a control that has just gone is asked for its range.
    def set_value(self, accessible):
        accessible.queryValue().currentValue = self.chance.choice(
            [-10**6, 10**6, self.chance.uniform(0, 1), self.chance.uniform(0, 1000)])

    def set_text(self, accessible):
        accessible.queryEditableText().setTextContents(self.chance.choice(TEXTS))

    def select(self, accessible):
        if accessible.getRoleName() in ('tree table', 'table'):
            table = accessible.queryTable()
            table.addRowSelection(self.chance.randrange(table.nRows))
        else:
            selection = accessible.querySelection()
            selection.selectChild(self.chance.randrange(accessible.childCount))

    def both_at_once(self):
        words = []
        for _ in range(6):
            words += self.gesture(PLAIN_KEYS)
        tool = self.xdotool(words, wait=False)
        self.accessible()
        tool.wait(ANSWER_LIMIT)

    # Dialogs for files: nothing but the folder of this run is written to.

    def in_chooser(self, chooser):
        if self.chance.random() < 0.6:
            words = []
            for _ in range(self.chance.randrange(1, 6)):
                words += ['key', '--delay', '0', self.chance.choice(CHOOSER_KEYS)]
            if self.chance.random() < 0.5:
                x, y, width, height = chooser.extents()
                words = ['mousemove', str(x + self.chance.randrange(max(1, width))),
                         str(y + height // 3), 'click', '3', *words]
            return self.xdotool(words)
        name = 'Save' if chooser.name == 'Save As' else 'Open'
        path = os.path.join(self.folder, 'saved.zblt') if name == 'Save' \
            else self.chance.choice(self.layouts)
        fields = chooser.find_all('text')
        if fields and name in ('Save', 'Open') and chooser.find_all('push button', name):
            self.done.append(f'{name} {path}')
            fields[0].type_text(path)
            chooser.find('push button', name).press()
        else:
            self.xdotool(['key', 'Escape'])

    # Whether it still works

    def let_go(self):
        self.xdotool(['mouseup', '1', 'mouseup', '2', 'mouseup', '3', 'key', 'Escape', 'key', 'Escape',
                      'mousemove', str(SCREEN[0] // 2), str(SCREEN[1] // 2), 'click', '1',
                      'key', 'Escape', 'key', 'Escape'])
        for dialog in self.windows():
            if dialog.name.startswith('Zemblar') or dialog.name == 'Throttle':
                continue
            self.xdotool(['search', '--name', dialog.name, 'windowactivate', 'key', 'Escape'])

    def menu_opens(self):
        self.let_go()
        window = self.chance.choice(self.main_windows())
        # It may have been dragged away so far that its menus are not on the screen.
        self.xdotool(['search', '--name', window.name, 'windowactivate', 'windowmove', '%@', '40', '40'])
        time.sleep(0.5)
        menu = window.find('menu', 'View')
        x, y, width, height = menu.extents()
        below = x, y + height + 2, width, height
        closed = pixels(*below)
        self.xdotool(['mousemove', str(x + width // 2), str(y + height // 2), 'click', '1'])
        time.sleep(0.5)
        opened = pixels(*below) != closed
        self.xdotool(['key', 'Escape', 'key', 'Escape'])
        return opened

    def probe(self):
        """A person can still open a menu."""
        self.counts['probes'] += 1
        if self.main_windows():
            wait_for(self.menu_opens, 'a menu that opens by a click', ANSWER_LIMIT)

    def tidy(self):
        """A program without windows lives on in the tray; one with too many hides them."""
        if not self.main_windows():
            self.end()
            self.start()
        elif len(self.windows()) > MOST_WINDOWS:
            self.xdotool(['key', 'alt+F4', 'key', 'alt+F4'])

    def end(self):
        self.program.process.send_signal(signal.SIGTERM)
        status = self.program.process.wait(ANSWER_LIMIT)
        if status not in (0, -signal.SIGTERM):
            raise SystemExit(f'the program has ended with {status} when it was told to end')

    def turn(self):
        if self.program.process.poll() == 0:  # Quit was found
            self.start()
        self.tidy()
        choosers = self.choosers()
        kind = self.in_chooser if choosers else self.chance.choice(
            [self.slowly, self.fast, self.fast, self.while_held, self.accessible, self.accessible,
             self.both_at_once])
        self.counts[kind.__name__] += 1
        try:
            kind(*choosers[:1])
        except Exception as problem:  # what was there has gone meanwhile
            self.done.append(f'({problem})')

    def check_log(self):
        for line in self.log:
            if 'CRITICAL' not in line:
                continue
            known = next((text for text in HARMLESS if text in line), None)
            self.counts[known] += 1
            if known is None or self.counts[known] > MOST_HARMLESS:
                raise SystemExit(f'the toolkit complains: {line}')

    def still_runs(self):
        self.check_log()
        return self.program.process.poll() in (None, 0)

    def run(self, seconds):
        end = time.monotonic() + seconds
        probe = time.monotonic() + PROBE_INTERVAL
        while time.monotonic() < end and self.still_runs():
            self.turn_or_wait()
            if time.monotonic() > probe and self.program.process.poll() is None:
                self.probe()
                probe = time.monotonic() + PROBE_INTERVAL
        if self.program.process.poll() is None:
            self.probe()
            self.end()
        elif not self.still_runs():
            raise NotSeen(f'the program has ended with {self.program.process.returncode}')

    def turn_or_wait(self):
        """A busy program answers late; one that does not for a minute is dead."""
        end = time.monotonic() + ANSWER_LIMIT
        while self.still_runs():
            try:
                return self.turn()
            except Exception as problem:
                if time.monotonic() > end:
                    raise NotSeen(f'no answer for {ANSWER_LIMIT} s: {problem}') from problem
                time.sleep(0.2)


def main():
    demonstration, layout = (os.path.abspath(path) for path in sys.argv[1:3])
    seconds = float(sys.argv[3]) if len(sys.argv) > 3 else 1200
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else random.randrange(10**6)
    print(f'seed {seed}, {seconds:.0f} s', flush=True)
    folder = tempfile.mkdtemp()
    os.chdir(folder)
    one_desktop = ['xdotool', 'set_num_desktops', '1']
    wait_for(lambda: subprocess.run(one_desktop, check=False).returncode == 0, 'a window manager')
    monkey = Monkey(demonstration, layout, folder, seed)
    try:
        monkey.run(seconds)
    except BaseException:
        print('the last that was done:', *monkey.done, sep='\n  ')
        log = open(monkey.output.name, encoding='utf-8', errors='replace').readlines()
        talk = re.compile(r'\d\d:\d\d:|$|.*vertical gradient')  # with the station, and of the theme
        print('its last words:', *[line for line in log if not talk.match(line)][-80:],
              f'log and picture are in {folder}')
        screenshot(os.path.join(folder, 'end.png'))
        monkey.program.process.kill()
        raise
    finally:
        print(dict(monkey.counts), flush=True)
    shutil.rmtree(folder)


if __name__ == '__main__':
    main()
