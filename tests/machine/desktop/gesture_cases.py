"""What fingers of one hand are to a toolkit that knows touchpads' gestures, with the plain default table."""

import unittest

import desk
from fixtures import QT_RIGHT
from hands import AT_EDGE, FOUR, NARROW, QUICK, THREE, TWO, WIDE, WithHands, circle, moved
from libinput import Libinput
from nodes import virtual_nodes
from panels import ELO

# Keys as the X server calls them.
ALT, CONTROL, LEFT, RIGHT, KEYPAD_0, SEARCH, DASHBOARD = (
    0xFFE9, 0xFFE3, 0xFF51, 0xFF53, 0xFF9E, 0x1008FF1B, 0x1008FF4B)


class Gestures(WithHands):
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

    def test_libinput_reads_at_the_nodes_what_the_fingers_do(self):
        there, button, scroll = "POINTER_MOTION_ABSOLUTE", "POINTER_BUTTON", "POINTER_SCROLL_FINGER"
        pinch, swipe = ([f"GESTURE_{name}_{part}" for part in ("BEGIN", "UPDATE", "END")] for name in ("PINCH", "SWIPE"))
        with Libinput(virtual_nodes()) as libinput:
            self.libinput = libinput
            for act, kinds, told in (
                    (lambda: self.panel.tap((0.25, 0.5)), ["TOUCH_DOWN", "TOUCH_FRAME", "TOUCH_UP", "TOUCH_FRAME"],
                     ("TOUCH_DOWN", "0 (0) 25.00/50.00 ")),
                    (lambda: self.tap(TWO), [there, button], (button, "BTN_RIGHT (273) pressed")),
                    (lambda: self.tap(THREE), ["KEYBOARD_KEY"], ("KEYBOARD_KEY", "KEY_SEARCH (217) pressed")),
                    (lambda: self.glide(TWO, moved(TWO, 0, -80)), [there, scroll], (scroll, "vert ")),
                    (lambda: self.glide(circle(40, 0), circle(80, 0)), [there, *pinch], (pinch[0], "2")),
                    (lambda: self.glide(circle(60, 0), circle(60, 45), 0.8), [there, *pinch], (pinch[0], "2")),
                    (lambda: self.glide(THREE, moved(THREE, -120, 0)), [there, *swipe], (swipe[0], "3"))):
                with self.subTest(kinds):
                    self.begin_anew()
                    act()
                    desk.wait_for(lambda: libinput.kinds() == kinds, lambda: f"{kinds}, not {libinput.events()}")
                    self.assertTrue(any(kind == told[0] and words.startswith(told[1])
                                        for kind, words in libinput.events()), libinput.events())
            # The window feels it later, but before the next case.
            self.wait_felt("end")

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
