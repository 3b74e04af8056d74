"""Content follows the fingers however the compositor has touchpads scroll."""

import unittest

import desk
from hands import TWO, WithHands, moved


class Scrolling(WithHands):
    def test_content_follows_two_fingers_whichever_way_the_compositor_has_touchpads_scroll_and_as_it_is_changed(self):
        self.addCleanup(self.have_touchpads_scroll, "disabled")
        for naturally in ("enabled", "disabled"):
            with self.subTest(naturally):
                self.have_touchpads_scroll(naturally)
                # The driver hears of it in its own time.
                desk.wait_for(self.is_followed, "content to follow the fingers")
                self.glide(TWO, moved(TWO, 0, -80))
                self.assert_scrolled(-1)

    @staticmethod
    def have_touchpads_scroll(naturally):
        desk.screen().do(f"input type:touchpad natural_scroll {naturally}")

    def is_followed(self):
        self.glide(TWO, moved(TWO, 0, -80))
        return sum(event["dy"] for event in self.wait_felt("wheel", 3)) < 0


if __name__ == "__main__":
    unittest.main()
