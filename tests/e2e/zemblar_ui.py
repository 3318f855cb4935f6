"""Operates the real program by what a person sees: roles and visible names.

    with Program(path, '-e') as program:
        editor = program.window('Zemblar 0.1 — Track Editor')
        editor.choose('File', 'New')
        editor.find('push button', 'New View').press()
        wait_for(lambda: 'saved' in program.status())

Runs inside tests/e2e/session.sh, with the system's Python, which has pyatspi. Everything that the
program does is awaited with a time limit; a failure says what was looked for and what was there.
"""

import os
import subprocess
import time

import pyatspi

TIME_LIMIT = 15.0  # seconds
SPLASH = 5.5  # seconds until it has gone


class NotSeen(AssertionError):
    """What a person would look for in vain."""


def wait_for(condition, what=None, limit=TIME_LIMIT):
    """Returns the first true value of condition(); its exceptions count as "not yet"."""
    end = time.monotonic() + limit
    problem = None
    while True:
        try:
            value = condition()
            if value:
                return value
            problem = None
        except Exception as error:  # widgets come and go while one looks
            problem = error
        if time.monotonic() > end:
            text = f'waited {limit} s for {what or "a condition"}'
            raise NotSeen(f'{text}: {problem}' if problem else text)
        time.sleep(0.05)


def screenshot(path):
    """The whole screen, as a PNG."""
    subprocess.run(['import', '-window', 'root', path], check=True)


def pixels(x, y, width, height):
    """What a part of the screen shows: red, green and blue, a byte each, row by row."""
    part = f'{width}x{height}+{x}+{y}'
    return subprocess.run(['import', '-window', 'root', '-crop', part, '-depth', '8', 'rgb:-'],
                          check=True, capture_output=True).stdout


class Item:
    """One visible thing."""

    def __init__(self, accessible):
        self.accessible = accessible

    def __repr__(self):
        return f'<{self.role} "{self.name}">'

    @property
    def role(self):
        return self.accessible.getRoleName()

    @property
    def name(self):
        return self.accessible.name

    def has(self, state):
        return self.accessible.getState().contains(getattr(pyatspi, 'STATE_' + state.upper()))

    @property
    def sensitive(self):
        return self.has('sensitive')

    @property
    def checked(self):
        return self.has('checked')

    # Finding

    def children(self):
        return [Item(child) for child in self.accessible if child is not None]

    def visible_children(self):
        """Menu entries count though their menu is closed, and what only has to be scrolled to; the
        content of a notebook's other pages does not. The rows of a tree or list have methods of
        their own: asking for each of thousands takes minutes."""
        if self.role in ('tree table', 'table'):
            return
        for child in self.children():
            state = 'showing' if self.role == 'page tab' else 'visible'
            if child.role in ('menu item', 'menu', 'check menu item') or child.has(state):
                yield child

    def walk(self):
        """This and everything below it, as far as a person can get at it."""
        yield self
        for child in self.visible_children():
            yield from child.walk()

    def find_all(self, role, name=None):
        found = []
        for item in self.walk():
            try:
                if item.role == role and (name is None or item.name == name):
                    found.append(item)
            except Exception:  # gone meanwhile
                continue
        return found

    def find(self, role, name=None, limit=TIME_LIMIT):
        """The first one of that role and name; waits until there is one."""
        return wait_for(lambda: self.find_all(role, name), f'{role} "{name}" in {self}', limit)[0]

    def labelled(self, label, limit=TIME_LIMIT):
        """The control that a label with this text stands for."""
        def look():
            for item in self.walk():
                for relation in item.accessible.getRelationSet():
                    if relation.getRelationType() != pyatspi.RELATION_LABELLED_BY:
                        continue
                    if relation.getTarget(0).name == label:
                        return item
            return None
        return wait_for(look, f'a control labelled "{label}" in {self}', limit)

    def tree(self, depth=0):
        """What is here, as text; for finding out why a test fails."""
        lines = ['  ' * depth + repr(self)]
        lines += [child.tree(depth + 1) for child in self.visible_children()]
        return '\n'.join(lines)

    # Acting

    def press(self):
        """Clicks a button, switches a check box, chooses a menu entry."""
        if not self.sensitive:
            raise NotSeen(f'{self} is insensitive')
        self.accessible.queryAction().doAction(0)

    def choose(self, *path):
        """Chooses an entry of a menu bar or menu, as in choose('File', 'Save As')."""
        item = self
        for name in path:
            roles = ('menu', 'menu item', 'check menu item')
            above = item
            item = wait_for(lambda: [i for r in roles for i in above.find_all(r, name)],
                            f'the menu entry {" > ".join(path)}')[0]
        item.press()

    def set_value(self, value):
        """Moves a slider or spin button."""
        self.accessible.queryValue().currentValue = value

    def value(self):
        return self.accessible.queryValue().currentValue

    def text(self):
        """What an entry or label shows."""
        return self.accessible.queryText().getText(0, -1)

    def type_text(self, text):
        """Replaces the text of an entry."""
        self.accessible.queryEditableText().setTextContents(text)

    def select(self, index):
        """Selects a page of a notebook or an entry of a list by its place."""
        self.accessible.querySelection().selectChild(index)

    def show_page(self, name):
        """In whichever notebook below has a page of that name."""
        for tabs in self.find_all('page tab list'):
            names = [tab.name for tab in tabs.children()]
            if name in names:
                tabs.select(names.index(name))

    def _rows(self):
        """Pairs of a row number and the texts in the row.

        Not with rows three levels deep under G_DEBUG=fatal-criticals: the toolkit's accessibility
        bridge complains there (gtk_tree_store_get_path) and gives the first row's texts.
        """
        table = self.accessible.queryTable()
        for row in range(table.nRows):
            cells = [Item(table.getAccessibleAt(row, column)) for column in range(table.nColumns)]
            yield row, [i.name for cell in cells for i in cell.walk() if i.name]

    def rows(self):
        """In a tree or list: the texts of the rows that are not folded away."""
        return [' '.join(texts) for _, texts in self._rows()]

    def select_row(self, name, limit=TIME_LIMIT):
        """In a tree or list: selects the row that shows this text."""
        def look():
            for row, texts in self._rows():
                if name in texts:
                    return self.accessible.queryTable().addRowSelection(row)
            return False
        wait_for(look, f'a row "{name}" in {self}', limit)

    def unfold_row(self, name, limit=TIME_LIMIT):
        """In a tree: shows what is below a row that is folded."""
        def look():
            for row, texts in self._rows():
                if name in texts:
                    first = Item(self.accessible.queryTable().getAccessibleAt(row, 0))
                    [cell] = [cell for cell in first.walk() if cell.name == name]
                    action = cell.accessible.queryAction()
                    names = [action.getName(i) for i in range(action.nActions)]
                    return action.doAction(names.index('expand or contract'))
            return False
        wait_for(look, f'a row "{name}" to unfold in {self}', limit)

    def extents(self):
        """x, y, width and height on the screen."""
        box = self.accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        return box.x, box.y, box.width, box.height

    def click(self, button=1):
        """A real click of the pointer in the middle."""
        x, y, width, height = self.extents()
        subprocess.run(['xdotool', 'mousemove', str(x + width // 2), str(y + height // 2), 'click',
                        str(button)], check=True)


def press_keys(*keys):
    """Real keys, as in press_keys('ctrl+s'), to whatever has the focus."""
    subprocess.run(['xdotool', 'key', '--clearmodifiers', *keys], check=True)


def type_keys(text):
    """Types real letters to whatever has the focus."""
    subprocess.run(['xdotool', 'type', '--delay', '20', text], check=True)


class Program:
    """The program, from its start to its end."""

    def __init__(self, path, *arguments, env=None, output=None, errors=None):
        """What it prints goes to the file `output`, if given, and what it complains of to `errors`."""
        self.process = subprocess.Popen([path, *arguments], stdin=subprocess.PIPE, stdout=output,
                                        stderr=errors,
                                        env={**os.environ, **(env or {})}, text=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait(TIME_LIMIT)

    def type(self, command):
        """A line into the terminal that it was started from."""
        self.process.stdin.write(command + '\n')
        self.process.stdin.flush()

    def application(self):
        def look():
            if self.process.poll() is not None:
                raise NotSeen(f'the program has ended with {self.process.returncode}')
            desktop = pyatspi.Registry.getDesktop(0)
            for application in desktop:
                if application and application.get_process_id() == self.process.pid:
                    return Item(application)
            return None
        return wait_for(look, 'the program on the accessibility bus')

    def windows(self):
        return [w for w in self.application().children() if w.has('visible')]

    def window(self, title, limit=TIME_LIMIT):
        """The first window of that title, a dialog included."""
        return wait_for(lambda: [w for w in self.windows() if w.name == title],
                        f'a window "{title}"', limit)[0]

    def gone(self, title, limit=TIME_LIMIT):
        """Waits until no window has that title."""
        wait_for(lambda: not [w for w in self.windows() if w.name == title],
                 f'the end of the window "{title}"', limit)

    def open_layout(self, window, path):
        """By the menu of a window."""
        window.choose('File', 'Open')
        dialog = self.window('Open')
        if not dialog.find_all('text'):
            press_keys('ctrl+l')
        dialog.find('text').type_text(path)
        dialog.find('push button', 'Open').press()
        self.gone('Open')

    def status(self):
        """The status line, as the first window that has one shows it."""
        for window in self.windows():
            for bar in window.find_all('status bar'):
                return bar.name
        raise NotSeen('no window with a status line')

    def wait_for_status(self, part, limit=TIME_LIMIT):
        wait_for(lambda: part in self.status(), f'"{part}" in the status line', limit)

    def wait_for_end(self, limit=TIME_LIMIT):
        """The exit status."""
        return self.process.wait(limit)
