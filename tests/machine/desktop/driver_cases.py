"""The driver as an ordinary user's program, with the system service that hands it the display."""

import time
import unittest

from fixtures import LEFT, OneFinger, PLACES, RIGHT, WithDriver

PRESS, RELEASE = "press", "release"
# Far enough that no toolkit's library takes the second click for a switch that bounces, should they be given out late.
APART = 0.15


class InTouchMode(OneFinger, WithDriver):
    """One finger is passed on as a touch."""

    def test_a_finger_at_rest_is_the_right_button_at_its_place_and_nothing_before_or_after(self):
        for seconds in (0.5, 1.2):
            with self.subTest(seconds):
                self.set("right-click", "on", seconds)
                self.begin_anew()
                place = (0.4, 0.6)
                landed = time.monotonic()
                self.panel.move({0: place})
                self.wait_event(PRESS)
                self.assertGreaterEqual(self.clicks()[0]["time"] / 1000, landed + seconds)
                self.panel.lift()
                self.wait_event(RELEASE)
                self.assert_right_click(place)

    def assert_right_click(self, place):
        self.assertEqual([(each["event"], each["button"]) for each in self.clicks()],
                         [(PRESS, RIGHT), (RELEASE, RIGHT)])
        self.assert_place(self.clicks()[0], place)
        self.assertEqual(self.touches(), [])

    def test_a_finger_at_rest_is_a_touch_where_the_long_press_is_off(self):
        self.set("right-click", "on", 0.3)
        self.set("right-click", "off")
        self.panel.move({0: (0.4, 0.6)})
        time.sleep(0.9)
        self.panel.lift()
        self.wait_event("touch end")
        self.assertEqual([each["event"] for each in self.events() if each["event"] != "motion"],
                         ["touch begin", "touch end"])


class InPointerMode(WithDriver):
    """One finger is the pointer, with its left button down."""

    settings = {**WithDriver.settings, "FingerMode": "pointer"}

    def test_taps_at_corners_edges_and_middle_are_clicks_where_the_finger_is(self):
        for place in PLACES:
            with self.subTest(place):
                self.begin_anew()
                self.panel.tap(place)
                self.wait_event(RELEASE)
                self.assertEqual([(each["event"], each["button"]) for each in self.clicks()],
                                 [(PRESS, LEFT), (RELEASE, LEFT)])
                self.assert_place(self.clicks()[0], place)
                self.assertEqual(self.touches(), [])
                # Two taps that are two clicks, wherever they are.
                time.sleep(0.6)

    def test_a_drag_holds_the_left_button_from_where_it_begins_to_where_it_ends(self):
        self.panel.drag((0.1, 0.2), (0.8, 0.7))
        self.assert_dragged((0.1, 0.2), (0.8, 0.7))

    def test_a_flick_holds_the_left_button_from_where_it_begins_to_where_it_ends(self):
        self.panel.drag((0.6, 0.9), (0.6, 0.4), seconds=0.12)
        self.assert_dragged((0.6, 0.9), (0.6, 0.4))

    def assert_dragged(self, beginning, end):
        self.wait_event(RELEASE)
        self.assertEqual([(each["event"], each["button"]) for each in self.clicks()], [(PRESS, LEFT), (RELEASE, LEFT)])
        self.assert_place(self.clicks()[0], beginning)
        self.assert_place(self.clicks()[1], end)
        self.assertEqual(self.touches(), [])

    def test_a_finger_at_rest_is_the_right_button_alone(self):
        self.set("right-click", "on", 0.5)
        self.panel.move({0: (0.7, 0.3)})
        self.wait_event(PRESS)
        self.panel.lift()
        self.wait_event(RELEASE)
        self.set("right-click", "off")
        self.assertEqual([(each["event"], each["button"]) for each in self.clicks()],
                         [(PRESS, RIGHT), (RELEASE, RIGHT)])
        self.assert_place(self.clicks()[0], (0.7, 0.3))

    def test_two_taps_within_rate_and_range_are_a_double_click_at_the_first_ones_place(self):
        self.set("double-click-rate", 0.5)
        self.set("double-click-range", 128)
        first = (0.5, 0.5)
        # 14 mm, which the desktop alone would not count, of the 16.9 mm that half of 128 points are.
        self.tap_twice(first, self.beside(first, 14), least=APART, most=0.39)
        self.wait_event(RELEASE, 2)
        self.assertIn("double press", self.names())
        for click in self.clicks():
            self.assert_place(click, first)

    def test_two_taps_outside_the_range_are_two_clicks_though_the_desktop_would_count_them(self):
        self.set("double-click-rate", 0.5)
        self.set("double-click-range", 8)
        # 1.2 mm, of the 1.06 mm that half of 8 points are, and nearer than the desktop's 5 points.
        self.tap_twice((0.5, 0.5), self.beside((0.5, 0.5), 1.2))
        self.wait_event(RELEASE, 2)
        self.assertNotIn("double press", self.names())

    def test_two_taps_slower_than_the_rate_are_two_clicks_though_the_desktop_would_count_them(self):
        self.set("double-click-rate", 0.1)
        self.set("double-click-range", 32)
        self.tap_twice((0.5, 0.5), (0.5, 0.5), least=0.2)
        self.wait_event(RELEASE, 2)
        self.assertNotIn("double press", self.names())

    def test_two_taps_quicker_than_the_rate_are_a_double_click(self):
        self.set("double-click-rate", 0.3)
        self.set("double-click-range", 32)
        self.tap_twice((0.5, 0.5), (0.5, 0.5), least=APART, most=0.29)
        self.wait_event(RELEASE, 2)
        self.assertIn("double press", self.names())

    def beside(self, place, millimetres):
        return place[0] + millimetres / self.model.size_mm[0], place[1]

    def tearDown(self):
        # The next case's first tap is no second one to this one's last.
        time.sleep(1)


if __name__ == "__main__":
    unittest.main()
