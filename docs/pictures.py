#!/usr/bin/python3
"""Takes the pictures in docs/images. scripts/pictures calls it.

    pictures.py FOLDER windows|club|drawing|scripts PROGRAM [ARGUMENT...]
    pictures.py FOLDER glance-well|glance-power|glance-held|glance-lost|glance-unsaved PROGRAM ...

The first set is of the small layout, the second of the large one, for which it takes a large screen,
the third of an empty one that is drawn in, the fourth of the scripts of the small one. The others are
all windows in one state of the railway.
"""

import os
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), '..', 'tests', 'e2e'))
from zemblar_ui import Program, screenshot, wait_for  # noqa: E402

TRACK_VIEW = 'Zemblar 0.1 — Track View'
EDITOR = 'Zemblar 0.1 — Track Editor'
SPLASH = 5.5  # seconds until it has gone
STOPPED = 14  # seconds until block control has stopped the train
RUNNING = 5  # seconds until trains that have left are between two stations


def take(folder, name, box=None):
    """The screen, or the part of it that an x, y, width and height name."""
    time.sleep(0.6)
    path = os.path.join(folder, name + '.png')
    screenshot(path)
    crop = ['-crop', '{2}x{3}+{0}+{1}'.format(*box), '+repage'] if box else []
    subprocess.run(['convert', path, *crop, '-colors', '200', path], check=True)


def activate(title):
    subprocess.run(['xdotool', 'search', '--name', title, 'windowactivate', '--sync'], check=True)


def minimize(*titles):
    for title in titles:
        subprocess.run(['xdotool', 'search', '--name', title, 'windowminimize'], check=True)


def drive(program, throttle, name, speed, former='(None)'):
    throttle.find('push button', former).press()
    program.application().find('menu item', name).press()
    wait_for(lambda: throttle.find('slider', 'Speed').sensitive)
    throttle.find('slider', 'Speed').set_value(speed)


def show(editor, name):
    editor.show_page('All')
    editor.find('tree table', 'Objects').select_row(name)


def windows(folder, program):
    editor = program.window('Zemblar 0.1 — Track Editor')
    throttle = program.window('Throttle')
    time.sleep(SPLASH)
    show(editor, 'Express 103')
    subprocess.run(['xdotool', 'search', '--name', 'Throttle', 'windowmove', '200', '300'],
                   check=True)
    drive(program, throttle, 'Express 103', 84)
    throttle.find('toggle button', 'Light').press()
    activate('Throttle')
    take(folder, 'throttle', throttle.extents())
    time.sleep(STOPPED)
    take(folder, 'overview')
    minimize('Throttle')
    show(editor, 'East Point')
    activate('Track Editor')
    take(folder, 'track-editor', editor.extents())
    # The tray stands in the upper right corner.
    width = int(os.environ['ZEMBLAR_SCREEN'].split('x')[0])
    subprocess.run(['xdotool', 'mousemove', str(width - 12), '14', 'click', '3'], check=True)
    take(folder, 'tray-menu', (width - 260, 0, 260, 320))
    subprocess.run(['xdotool', 'key', 'Escape'], check=True)
    drive(program, throttle, 'Local 24', 70, 'Express 103')
    time.sleep(RUNNING)
    show_track_view(program)
    # One signal shows that the way is free.
    click(program, 'Station', 211, 248)
    take(folder, 'track-view', program.window(TRACK_VIEW).extents())


def club(folder, program):
    throttle = program.window('Throttle')
    time.sleep(SPLASH)
    drive(program, throttle, 'Express 103', 100)
    drive(program, throttle, 'Local 24', 90, 'Express 103')
    show_track_view(program)
    # The clicks of somebody who lets trains leave.
    for place in ((411, 217), (411, 217), (-417, -217), (411, 281)):
        click(program, 'Main Line', *place)
        time.sleep(0.6)
    time.sleep(RUNNING)
    take(folder, 'track-view-club', program.window(TRACK_VIEW).extents())


def show_track_view(program):
    """The tray would lie over its upper right corner."""
    minimize('Throttle', 'Track Editor')
    subprocess.run(['xdotool', 'search', '--class', 'trayer', 'windowunmap', '%@'],
                   check=True)
    activate('Track View')
    program.window(TRACK_VIEW)


def click(program, view, x, y):
    """At a place of the view, whose origin is in the middle."""
    canvas = wait_for(lambda: [item for item in program.window(TRACK_VIEW).walk()
                               if item.name == view and item.role != 'page tab'])[0]
    left, top, width, height = canvas.extents()
    subprocess.run(['xdotool', 'mousemove', str(left + width // 2 + x), str(top + height // 2 + y),
                    'click', '1'], check=True)


def drawing(folder, program):
    editor = program.window('Zemblar 0.1 — Track Editor')
    time.sleep(SPLASH)
    activate('Track Editor')
    canvas = wait_for(lambda: [item for item in editor.walk()
                               if item.name == 'View 1' and item.role != 'page tab'])[0]
    left, top, width, height = canvas.extents()
    x, y = left + width // 2, top + height // 2

    def pointer(*commands):
        subprocess.run(['xdotool', *map(str, commands)], check=True)
        time.sleep(0.2)

    for tool, place in (('Point', (50, -60)), ('Zone', (-150, 0))):
        editor.find('push button', tool).press()
        pointer('mousemove', x + place[0] + 4, y + place[1])
        pointer('mousemove', x + place[0], y + place[1])
        pointer('click', 1)
    box = (left - 10, top - 120, width + 420, height // 2 + 260)
    take(folder, 'drawing-placed', box)
    pointer('keydown', 'ctrl')
    pointer('mousemove', x - 110, y)
    pointer('mousedown', 1)
    for place in ((-90, -10), (0, -50), (20, -70)):
        pointer('mousemove', x + place[0], y + place[1])
    pointer('mouseup', 1)
    pointer('keyup', 'ctrl')
    take(folder, 'drawing-joined', box)


def scripts(folder, program):
    editor = program.window('Zemblar 0.1 — Track Editor')
    time.sleep(SPLASH)
    activate('Track Editor')

    def keys(*names):
        subprocess.run(['xdotool', 'key', '--delay', '120', *names], check=True)

    editor.show_page('All')
    editor.labelled('Find:').click()
    subprocess.run(['xdotool', 'type', 'Station Stop'], check=True)
    keys('Return')
    editor.find('push button', 'Edit Script').press()
    window = program.window('Script Editor')
    time.sleep(1)
    subprocess.run(['xdotool', 'search', '--onlyvisible', '--name', 'Script Editor', 'windowmove',
                    '200', '120'], check=True)
    keys('Down', 'Down', 'Down', 'Down', 'Down', 'Right', 'Return')
    x, y, width, height = window.extents()
    frame = (3, 22)  # of the window manager: sides, and title
    take(folder, 'script-editor',
         (x - frame[0], y - frame[1], width + 2 * frame[0], height + frame[0] + frame[1]))


def glance_well(program):
    drive(program, program.window('Throttle'), 'Express 103', 84)
    time.sleep(3)


def glance_power(program):
    glance_well(program)
    program.window(TRACK_VIEW).find('push button', 'Track Power Off').press()
    time.sleep(2)


def glance_held(program):
    drive(program, program.window('Throttle'), 'Express 103', 84)
    time.sleep(STOPPED)


def glance_lost(program):
    glance_well(program)
    program.type('close')
    time.sleep(2)


def glance_unsaved(program):
    """The demonstration does not keep what is unsaved, the program itself does."""
    editor = program.window(EDITOR)
    show(editor, 'Express 103')
    editor.labelled('Name:').type_text('Night Express')
    time.sleep(8)


def remember(layout):
    """Makes the program itself start with it."""
    folder = os.path.join(os.environ['XDG_CONFIG_HOME'], 'zemblar')
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, 'options.ini'), 'w', encoding='utf-8') as options:
        options.write(f'[zemblar]\nlayout=file://{layout}\n')


def glance(state):
    """The track view, and below it the editor and a throttle."""
    def take_all(folder, program):
        for title in (EDITOR, TRACK_VIEW):
            program.window(title)
        time.sleep(SPLASH)
        show(program.window(EDITOR), 'Tessara Bus 1')
        globals()['glance_' + state](program)
        if state != 'unsaved':
            show(program.window(EDITOR), 'ESU ECoS 1')
        names = []
        for title, short in ((TRACK_VIEW, 'part-1'), (EDITOR, 'part-2'), ('Throttle', 'part-3')):
            if title not in [window.name for window in program.windows()]:
                continue
            subprocess.run(['xdotool', 'search', '--class', 'trayer', 'windowunmap', '%@'],
                           check=False)
            activate(title)
            time.sleep(1)
            take(folder, short, program.window(title).extents())
            names.append(os.path.join(folder, short + '.png'))
        subprocess.run(['convert', names[0], '(', *names[1:], '+append', ')', '-background', 'gray80',
                        '-append', '-colors', '96', os.path.join(folder, f'glance-{state}.png')],
                       check=True)
        for name in names:
            os.remove(name)
    return take_all


def main(folder, which, *command):
    if which == 'glance-unsaved':
        remember(command[1])
        command = command[0], '-v', '-e'
    with Program(*command) as program:
        if which.startswith('glance-'):
            glance(which.removeprefix('glance-'))(folder, program)
        else:
            {'windows': windows, 'club': club, 'drawing': drawing,
             'scripts': scripts}[which](folder, program)


main(*sys.argv[1:])
