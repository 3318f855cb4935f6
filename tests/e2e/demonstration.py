"""Trains on the simulated railway."""

import os
import shutil
import tempfile
import unittest

import two_trains
from zemblar_ui import Program


class DemonstrationTest(unittest.TestCase):
    """The demonstration on a copy of a layout, whose trains stand already, and what it prints."""

    def start(self, program, *options, layout):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        os.environ['XDG_CONFIG_HOME'] = self.folder
        self.output = open(os.path.join(self.folder, 'log'), 'w', encoding='utf-8')
        self.addCleanup(self.output.close)
        # With the pictures of its signals beside it.
        source = os.path.dirname(layout)
        for name in ('layouts', 'signals'):
            shutil.copytree(os.path.join(source, '..', name), os.path.join(self.folder, name))
        copy = os.path.join(self.folder, 'layouts', os.path.basename(layout))
        self.program = Program(program, *options, copy, output=self.output)
        self.addCleanup(self.program.__exit__)
        self.log = two_trains.Log(self.output.name)

    def type(self, command):
        """Into the terminal of the demonstration."""
        self.program.type(command)

