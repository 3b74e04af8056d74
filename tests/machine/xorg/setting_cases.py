"""Where fingers land is where the settings say, in both modes."""

import unittest

from fixtures import AsPointer

# The first off the diagonals, so that each turn lands elsewhere.
TURNS = {90: lambda x, y: (y, 1 - x), 180: lambda x, y: (1 - x, 1 - y), 270: lambda x, y: (1 - y, x),
         0: lambda x, y: (x, y)}
PLACE = (0.2, 0.1)


class Rotated(AsPointer):
    def test_a_finger_lands_where_the_turned_picture_has_it_as_a_click_and_as_a_touch(self):
        for mode, event in (("pointer", "release"), ("touch", "touch end")):
            self.set("finger", mode)
            for degrees, turned in TURNS.items():
                with self.subTest(mode=mode, degrees=degrees):
                    self.set("rotation", degrees)
                    self.begin_anew()
                    self.panel.tap(PLACE)
                    self.wait_event(event)
                    self.assert_place((self.clicks() or self.touches())[0], turned(*PLACE))
        self.set("finger", "pointer")


if __name__ == "__main__":
    unittest.main()
