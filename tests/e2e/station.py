"""The simulated station as a process of its own, for tests that operate the real program."""

import os
import signal
import subprocess
import tempfile

from zemblar_ui import TIME_LIMIT, wait_for


class Station:
    """Runs until the end of its scope. `kill` and `start` again take the same port."""

    def __init__(self, path):
        self.path = path
        self.port = 0
        self.log = tempfile.NamedTemporaryFile('w+', suffix='.log')
        self.process = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.kill()
        self.log.close()

    def start(self):
        self.process = subprocess.Popen(
            [self.path, '--port', str(self.port), '--quiet', '--log', self.log.name],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.port = int(line.rsplit(':', 1)[1])

    def kill(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait(TIME_LIMIT)
        self.process.stdin.close()
        self.process.stdout.close()

    def type(self, command):
        """A command on the station's console, as for its faults."""
        self.process.stdin.write(command + '\n')
        self.process.stdin.flush()

    def commands(self):
        """All command lines received so far."""
        with open(self.log.name, encoding='utf-8') as log:
            return [line.split(' <- ', 1)[1].rstrip('\n') for line in log if ' <- ' in line]

    def forget(self):
        os.truncate(self.log.name, 0)

    def wait_for(self, *commands):
        """Waits until exactly these have been received, in this order, and forgets them."""
        wanted = list(commands)
        wait_for(lambda: self.commands()[-len(wanted):] == wanted,
                 f'{wanted}, got {self.commands()}')
        received = self.commands()
        assert received == wanted, f'wanted {wanted}, got {received}'
        self.forget()
