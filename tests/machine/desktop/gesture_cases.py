"""What fingers of one hand are to a toolkit that knows touchpads' gestures, with the plain default table."""

import math
import time
import unittest

import desk
from fixtures import FELT_GESTURES, QT_RIGHT, WithDriver, pixel_of
from panels import ELO

WIDTH_MM, HEIGHT_MM = ELO.size_mm
MIDDLE = (400, 260)
# Keys as the X server calls them.
ALT, CONTROL, LEFT, RIGHT, KEYPAD_0, SEARCH, DASHBOARD = (
    0xFFE9, 0xFFE3, 0xFF51, 0xFF53, 0xFF9E, 0x1008FF1B, 0x1008FF4B)
# Longer than a flick may take, so that it is none.
SLOW, QUICK = 0.5, 0.1
LONGEST_FLICK = 0.3


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


class Gestures(WithDriver):
    program = FELT_GESTURES

    def glide(self, starts, ends, seconds=SLOW):
        """Fingers from place to place in mm; quick ones again where the machine was too slow for that."""
        for _ in range(20):
            self.begin_anew()
            began = time.monotonic()
            self.panel.glide(*(dict(enumerate((x / WIDTH_MM, y / HEIGHT_MM) for x, y in each))
                               for each in (starts, ends)), seconds)
            self.panel.lift()
            if seconds >= SLOW or time.monotonic() - began < LONGEST_FLICK:
                return
            time.sleep(1)
        self.skipTest("this machine is too slow for a flick")

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
        """By the time that a tap is felt all that came before has been."""
        time.sleep(1)
        before = len(self.touches())
        self.panel.tap((0.05, 0.05))
        desk.wait_for(lambda: "touch end" in [each["event"] for each in self.touches()[before:]], "the last tap")
        self.assertEqual([event for event in self.events()
                          if not event["event"].startswith("touch") and event["event"] not in and_also], [])

    def choose(self, gesture, *words):
        desk.run("kelvo-touchctl", "gesture", ELO.name, gesture, *words)

    def test_a_tap_of_two_is_the_right_button(self):
        self.tap(TWO)
        self.wait_event("release")
        self.assertEqual([(event["event"], event["button"]) for event in self.clicks()],
                         [("press", QT_RIGHT), ("release", QT_RIGHT)])
        self.assert_near_middle(self.clicks()[0])
        self.assertEqual(self.touches(), [])

    def test_a_double_tap_of_two_zooms(self):
        self.tap(TWO, times=2)
        self.assert_keys(CONTROL, KEYPAD_0)
        self.assertEqual(self.clicks(), [])

    def test_a_tap_of_three_looks_up(self):
        self.tap(THREE)
        self.assert_keys(SEARCH)

    def test_two_fingers_scroll_and_content_follows_them(self):
        self.glide(TWO, moved(TWO, 0, -80))
        self.assert_scrolled(-1)

    def test_two_fingers_apart_zoom_by_as_much(self):
        self.glide(circle(40, 0), circle(80, 0))
        self.wait_felt("end")
        begin, *zooms = [event for event in self.events() if event["event"] in ("begin", "zoom")]
        # Less what they went until that was clear.
        self.assertTrue(1.7 < 1 + sum(event["value"] for event in zooms) <= 2.05, zooms)
        self.assert_near_middle(begin)
        self.assertEqual(self.touches(), [])

    def test_two_fingers_about_each_other_turn_by_as_much(self):
        self.glide(circle(60, 0), circle(60, 45), 0.8)
        self.wait_felt("end")
        begin, *turns = [event for event in self.events() if event["event"] in ("begin", "rotate")]
        self.assertTrue(38 < sum(event["value"] for event in turns) <= 46, turns)
        self.assert_near_middle(begin)
        self.assertEqual(self.touches(), [])

    def test_a_flick_of_two_turns_pages(self):
        self.glide(TWO, moved(TWO, -60, 0), QUICK)
        self.assert_keys(ALT, RIGHT)
        self.glide(TWO, moved(TWO, 60, 0), QUICK)
        self.assert_keys(ALT, LEFT)

    def test_three_fingers_sideways_swipe_between_full_screens(self):
        self.glide(THREE, moved(THREE, -120, 0))
        self.assert_swipe(3, -1, 0)

    def test_three_fingers_up_and_down_swipe(self):
        self.glide(THREE, moved(THREE, 0, -120))
        self.assert_swipe(3, 0, -1)
        self.glide(THREE, moved(THREE, 0, 120))
        self.assert_swipe(3, 0, 1)

    def test_two_from_the_right_edge_show_notifications(self):
        self.glide(AT_EDGE, moved(AT_EDGE, -120, 0))
        self.assert_keys(DASHBOARD)

    def test_thumb_and_three_together_and_apart_are_pinches_of_four(self):
        for starts, ends, sign in ((WIDE, NARROW, -1), (NARROW, WIDE, 1)):
            with self.subTest(sign):
                self.glide(starts, ends)
                self.wait_felt("end")
                zooms = [event for event in self.events() if event["event"] == "zoom"]
                self.assertEqual({event["fingers"] for event in zooms}, {4})
                self.assertGreater(sign * sum(event["value"] for event in zooms), 0.2)
                self.assertEqual(self.touches(), [])

    def test_what_is_switched_off_is_not_done(self):
        for gesture, act in (
                ("SecondaryClick", lambda: self.tap(TWO)),
                ("SmartZoom", lambda: self.tap(TWO, times=2)),
                ("LookUp", lambda: self.tap(THREE)),
                ("ZoomInOrOut", lambda: self.glide(circle(40, 0), circle(80, 0))),
                ("Rotate", lambda: self.glide(circle(60, 0), circle(60, 45), 0.8)),
                ("FullScreenApps", lambda: self.glide(THREE, moved(THREE, -120, 0))),
                ("MissionControl", lambda: self.glide(THREE, moved(THREE, 0, -120))),
                ("AppExposé", lambda: self.glide(THREE, moved(THREE, 0, 120))),
                ("Launchpad", lambda: self.glide(WIDE, NARROW)),
                ("ShowDesktop", lambda: self.glide(NARROW, WIDE))):
            with self.subTest(gesture):
                self.choose(gesture, "off")
                act()
                self.assert_nothing_but_touches()
        for gesture, act in (("SwipeBetweenPages", lambda: self.glide(TWO, moved(TWO, -60, 0), QUICK)),
                             ("NotificationCenter", lambda: self.glide(AT_EDGE, moved(AT_EDGE, -120, 0)))):
            with self.subTest(gesture):
                self.choose(gesture, "off")
                act()
                # Two fingers that nothing else wants scroll.
                self.assert_nothing_but_touches(and_also=("wheel",))
        self.choose("ScrollDirection", "off")
        self.glide(TWO, moved(TWO, 0, -80))
        self.assert_scrolled(1)
        desk.run("kelvo-touchctl", "set", ELO.name, "gestures", "default")

    def test_with_its_other_action_a_gesture_is_made_by_the_other_fingers(self):
        self.choose("FullScreenApps", "on", "SwipeLeftOrRightWithFourFingers")
        self.choose("SwipeBetweenPages", "on", "SwipeWithThreeFingers")
        self.glide(THREE, moved(THREE, -120, 0))
        self.assert_keys(ALT, RIGHT)
        self.glide(FOUR, moved(FOUR, -120, 0))
        self.assert_swipe(4, -1, 0)
        for gesture, action, way in (("MissionControl", "SwipeUpWithFourFingers", -1),
                                     ("AppExposé", "SwipeDownWithFourFingers", 1)):
            with self.subTest(gesture):
                self.choose(gesture, "on", action)
                self.glide(FOUR, moved(FOUR, 0, way * 120))
                self.assert_swipe(4, 0, way)
                self.glide(THREE, moved(THREE, 0, way * 120))
                self.assert_nothing_but_touches()
        desk.run("kelvo-touchctl", "set", ELO.name, "gestures", "default")


if __name__ == "__main__":
    unittest.main()
