"""Hands whose fingers tap and move together, in mm of the glass, and what a toolkit feels of them."""

import math
import time

import desk
from fixtures import FELT_GESTURES, WithDriver, pixel_of
from panels import ELO

WIDTH_MM, HEIGHT_MM = ELO.size_mm
MIDDLE = (400, 260)
# Longer than a flick may take, so that it is none.
SLOW, QUICK = 0.5, 0.1
LONGEST_FLICK = 0.3
# Between two frames of fingers that move: they must not seem to jump.
LONGEST_STANDSTILL = 0.08


def beside(*ways):
    """Places in mm, each so far from the middle."""
    return [(MIDDLE[0] + x, MIDDLE[1] + y) for x, y in ways]


def moved(places, x, y):
    return [(left + x, top + y) for left, top in places]


def circle(radius, degrees):
    turn = math.radians(degrees)
    return beside((-radius * math.cos(turn), -radius * math.sin(turn)), (radius * math.cos(turn), radius * math.sin(turn)))


TWO = beside((-20, 0), (20, 0))
THREE = beside((-25, 0), (0, 0), (25, 0))
FOUR = beside((-40, 0), (-13, 0), (13, 0), (40, 0))
# A thumb below, three fingers above.
WIDE = beside((-60, 70), (-30, -60), (10, -70), (50, -55))
NARROW = beside((-20, 25), (-10, -20), (3, -23), (17, -18))
# The right one within a finger's breadth of the edge.
AT_EDGE = [(WIDTH_MM - 6, 240), (WIDTH_MM - 30, 280)]


class WithHands(WithDriver):
    """Fingers of one hand, and a window of a toolkit that knows touchpads' gestures."""

    program = FELT_GESTURES
    libinput = None

    def begin_anew(self):
        super().begin_anew()
        if self.libinput:
            self.libinput.begin_anew()

    def glide(self, starts, ends, seconds=SLOW):
        """Fingers from place to place in mm; again where the machine stood still meanwhile, or was too slow for quick
        ones."""
        for _ in range(20):
            self.begin_anew()
            began = time.monotonic()
            still = self.panel.glide(*(dict(enumerate((x / WIDTH_MM, y / HEIGHT_MM) for x, y in each))
                                       for each in (starts, ends)), seconds)
            self.panel.lift()
            if still < LONGEST_STANDSTILL and (seconds >= SLOW or time.monotonic() - began < LONGEST_FLICK):
                return
            time.sleep(1)
        self.skipTest("this machine is too slow for fingers that move together")

    def tap(self, places, times=1):
        """Taps of several fingers; again where the machine was too slow for them."""
        for _ in range(20):
            self.begin_anew()
            began = time.monotonic()
            for _ in range(times):
                self.panel.move(dict(enumerate((x / WIDTH_MM, y / HEIGHT_MM) for x, y in places)))
                time.sleep(0.03)
                self.panel.lift()
                time.sleep(0.03)
            if time.monotonic() - began < LONGEST_FLICK:
                return
            time.sleep(1)
        self.skipTest("this machine is too slow to tap")

    def wait_felt(self, name, count=1):
        self.wait_event(name, count)
        return [event for event in self.events() if event["event"] == name]

    def assert_near_middle(self, event, millimetres=1):
        """To as far as a finger may have gone until it was known what it does."""
        x, y = pixel_of((MIDDLE[0] / WIDTH_MM, MIDDLE[1] / HEIGHT_MM))
        away = max(abs(event["x"] - x) * WIDTH_MM / desk.WIDTH, abs(event["y"] - y) * HEIGHT_MM / desk.HEIGHT)
        self.assertLessEqual(away, millimetres, f"{event} is not at {x}, {y}")

    def assert_keys(self, *keys):
        """Pressed in their order and released in the opposite one."""
        self.wait_event("key release", len(keys))
        felt = [(event["event"], event["sym"]) for event in self.events() if event["event"].startswith("key")]
        self.assertEqual(felt, [*(("key press", key) for key in keys), *(("key release", key) for key in reversed(keys))])
        self.assertEqual(self.touches(), [])

    def assert_swipe(self, fingers, x, y):
        self.wait_felt("end")
        begin, *pans = [event for event in self.events() if event["event"] in ("begin", "pan")]
        self.assertEqual({event["fingers"] for event in pans}, {fingers})
        way = [sum(event[side] for event in pans) for side in ("dx", "dy")]
        # Farther in its direction than across.
        self.assertGreater(way[0] * x + way[1] * y, 5 * abs(way[0] * y + way[1] * x))
        self.assert_near_middle(begin, 12)
        self.assertEqual(self.touches(), [])

    def assert_scrolled(self, sign):
        """With pixels, at the fingers."""
        wheels = self.wait_felt("wheel", 3)
        self.assertGreater(sign * sum(event["dy"] for event in wheels), 20)
        self.assertEqual({event["dx"] for event in wheels}, {0})
        self.assert_near_middle(wheels[0], 12)
        self.assertEqual(self.touches(), [])

    def assert_nothing_but_touches(self, and_also=()):
        """By the time that a tap is felt all that came before has been, and what waited for a second tap."""
        time.sleep(self.settings["DoubleClickRate"] + 0.1)
        before = len(self.touches())
        self.panel.tap((0.05, 0.05))
        desk.wait_for(lambda: "touch end" in [each["event"] for each in self.touches()[before:]], "the last tap")
        self.assertEqual([event for event in self.events()
                          if not event["event"].startswith("touch") and event["event"] not in and_also], [])

    def choose(self, gesture, *words):
        desk.run("kelvo-touchctl", "gesture", ELO.name, gesture, *words)
