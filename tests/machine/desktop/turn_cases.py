"""Where fingers land is where settings and desktop say, in both modes."""

import itertools
import unittest
import unittest.mock

import desk
from fixtures import AsPointer, MODES, PLACE, TURNS


class Turned(AsPointer):
    def test_a_finger_lands_where_the_turned_picture_has_it_as_a_click_and_as_a_touch(self):
        for mode, event in MODES:
            self.set("finger", mode)
            for degrees, turned in TURNS.items():
                with self.subTest(mode=mode, degrees=degrees):
                    self.set("rotation", degrees)
                    self.begin_anew()
                    self.panel.tap(PLACE)
                    self.wait_event(event)
                    self.assert_place((self.clicks() or self.touches())[0], turned(*PLACE))
        self.set("finger", "pointer")

    def test_on_an_output_that_the_desktop_turned_a_finger_lands_where_the_picture_is_and_is_turned_only_once(self):
        self.addCleanup(self.set, "finger", "pointer")
        self.addCleanup(self.set, "rotation", 0)
        self.addCleanup(desk.turn_output, 0)
        for degrees in (90, 180, 270):
            desk.turn_output(degrees)
            width, height = sorted((desk.WIDTH, desk.HEIGHT), reverse=degrees == 180)
            place = TURNS[degrees](*PLACE)
            with unittest.mock.patch.multiple(desk, WIDTH=width, HEIGHT=height):
                # The same turn, set for the display as well, is no second one.
                for (mode, event), rotation in itertools.product(MODES, (0, degrees)):
                    with self.subTest(degrees=degrees, mode=mode, rotation=rotation):
                        self.set("finger", mode)
                        self.set("rotation", rotation)
                        # The driver hears in its own time of what the desktop does.
                        desk.wait_for(lambda: self.is_tap_felt(event, PLACE, place), f"a tap at {place}")
                self.set("rotation", 0)


if __name__ == "__main__":
    unittest.main()
