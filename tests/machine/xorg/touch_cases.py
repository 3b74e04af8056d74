"""Fingers of a touch display, felt by a window of another toolkit."""

import json
import unittest

import desk
from panel import Panel
from panels import ELAN

FELT = ("/usr/bin/python3", "-B", "/run/tests/machine/felt.py")
# Corners, edges and the middle, a finger's breadth from where there is no glass.
PLACES = [(x, y) for y in (0.002, 0.5, 0.998) for x in (0.002, 0.5, 0.998)]


def pixel_of(place):
    return place[0] * desk.WIDTH, place[1] * desk.HEIGHT


class Felt(unittest.TestCase):
    """A display, and a window that says what it feels of it."""

    @classmethod
    def setUpClass(cls):
        desk.start_x()
        cls.felt = cls.enterClassContext(desk.Program(*FELT))
        cls.felt.wait_line(lambda line: "shown" in line, "the window that feels")
        cls.panel = cls.enterClassContext(Panel(ELAN))
        desk.wait_for(lambda: ELAN.name in desk.pointers(), "the display in the X server's list")

    def events(self, start):
        return [json.loads(line) for line in self.felt.lines[start:]]

    def touches(self, start):
        return [event for event in self.events(start) if event["event"].startswith("touch") and not event["emulated"]]

    def assert_place(self, event, place):
        x, y = pixel_of(place)
        self.assertLessEqual(max(abs(event["x"] - x), abs(event["y"] - y)), 1, f"{event} is not at {x}, {y}")


class OneFinger:
    """What one finger is where it is passed on as a touch."""

    def test_taps_at_corners_edges_and_middle_are_felt_where_the_finger_is(self):
        for place in PLACES:
            with self.subTest(place):
                start = len(self.felt.lines)
                self.panel.tap(place)
                desk.wait_for(lambda: "touch end" in [each["event"] for each in self.touches(start)], "the tap")
                touches = self.touches(start)
                self.assertEqual([each["event"] for each in touches], ["touch begin", "touch end"])
                self.assert_place(touches[0], place)



class WithoutDriver(OneFinger, Felt):
    """A machine whose driver does not run has a plain touch screen."""

    def test_a_drag_is_felt_from_where_it_begins_to_where_it_ends(self):
        start = len(self.felt.lines)
        self.panel.drag((0.1, 0.2), (0.8, 0.7))
        desk.wait_for(lambda: "touch end" in [each["event"] for each in self.touches(start)], "the drag")
        touches = self.touches(start)
        self.assert_place(touches[0], (0.1, 0.2))
        self.assert_place(touches[-1], (0.8, 0.7))
        self.assertIn("touch update", [each["event"] for each in touches])


if __name__ == "__main__":
    unittest.main()
