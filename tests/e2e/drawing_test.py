#!/usr/bin/python3
"""A railway is drawn with pointer and keyboard, taken back step by step, and made again.

    drawing_test.py ZEMBLAR
"""

import sys
import unittest

from drawing import DrawingTest, drag, pointer
from zemblar_ui import pixels, wait_for

ZEMBLAR = sys.argv[1]


class Drawing(DrawingTest):

    def test_all_that_was_drawn_is_undone_and_redone(self):
        self.start_drawing(ZEMBLAR)
        empty = self.saved()
        self.place('Zone', -150, 0)
        self.place('Point', 50, -60)
        self.join((-110, 0), (20, -70))
        self.assertIn('Undo Join “Zone 1”', self.next_steps())
        # Back by one step and on again: what was joined lets go and holds again.
        joined = self.saved()
        self.assertIn('link: [1, common]', joined)
        pointer('key', 'ctrl+z')
        self.assertNotIn('link:', self.saved())
        pointer('key', 'ctrl+shift+z')
        self.assertEqual(self.saved(), joined)

        # What is being placed goes by Escape and leaves no step.
        self.editor.find('push button', 'Signal').press()
        pointer('mousemove', *self.at(0, 100))
        pointer('key', 'Escape')
        self.assertIn('Undo Join “Zone 1”', self.next_steps())

        drag(self.at(-190, 0), self.at(-220, 90))
        self.assertIn('Undo Move “Zone 1”', self.next_steps())
        self.editor.labelled('Name:').click()
        pointer('key', 'ctrl+a')
        pointer('type', 'Yard')
        pointer('key', 'Return')
        wait_for(lambda: 'name: Yard' in self.saved(), 'the name')
        drawn = self.saved()
        steps = self.undo_all(10)
        self.assertEqual(self.saved(), empty)
        self.redo(steps)
        self.assertEqual(self.saved(), drawn)

    def test_a_ring_of_two_is_closed_and_a_drop_that_joins_nothing_says_why(self):
        self.start_drawing(ZEMBLAR)
        for place in ((-100, 0), (60, 100), (150, -100)):
            self.place('Zone', *place)
        self.join((-60, 0), (20, 100))
        self.join((100, 100), (-140, 0))
        ring = ['[1, left]', '[1, right]', '[0, left]', '[0, right]']
        for link in ring:
            self.assertIn('link: ' + link, self.saved())
        self.join((110, -100), (0, -150))
        self.program.wait_for_status('no end of another piece is there')
        self.join((0, -150), (20, 100))
        self.program.wait_for_status('is joined to “Zone 2” already')

    def test_a_tool_looks_as_before_when_it_has_been_used(self):
        self.start_drawing(ZEMBLAR)
        pointer('mousemove', *self.at(0, 0))
        tool = self.editor.find('push button', 'Zone')
        before = pixels(*tool.extents())
        tool.click()
        pointer('mousemove', *self.at(0, 0))
        self.assertEqual(pixels(*tool.extents()), before)
        pointer('click', 1)
        self.assertEqual(pixels(*tool.extents()), before)

    def test_a_tool_that_waits_leaves_a_click_elsewhere_to_what_is_there(self):
        self.start_drawing(ZEMBLAR)
        empty = self.saved()
        self.editor.find('push button', 'Zone').click()
        for y in (0, 20, 40):
            pointer('mousemove', *self.at(0, y))
        self.editor.find('push button', 'Stop All Trains').click()
        self.program.wait_for_status('nothing on the track could be stopped')
        # A name that is typed elsewhere is a step of its own.
        self.editor.labelled('Name:').click()
        for command in (('key', 'ctrl+a'), ('type', 'Yard'), ('key', 'Return')):
            pointer(*command)
        steps = wait_for(lambda: [step for step in self.next_steps() if step.startswith('Undo ')])
        self.assertNotIn('Undo Add', steps[0])
        # Another tool takes its place.
        self.editor.find('push button', 'Point').click()
        for y in (0, 20):
            pointer('mousemove', *self.at(0, y))
        pointer('click', 1)
        drawn = self.saved()
        self.assertNotEqual(drawn, empty)
        self.assertNotIn('zone', drawn)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
