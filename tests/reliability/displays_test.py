"""As many displays as a list may name: the window opens with all of them to choose from, and goes on."""

import sys
import time
import unittest

from pane import PaneCase
from scale import figure, times

PaneCase.program = sys.argv[1]
del sys.argv[1:]


class Displays(PaneCase):
    def test_a_list_of_any_length_is_there_to_choose_from(self):
        for count in times((1_000,), (1_000, 10_000, 30_000)):
            with self.subTest(count=count):
                self.world.set_utilities(*(f"Display {number}" for number in range(count)))
                started = time.monotonic()
                self.start_pane()
                figure(f"{count} displays: seconds until the window's port is there", f"{time.monotonic() - started:.2f}")
                started = time.monotonic()
                self.wait_handled()
                figure(f"{count} displays: seconds for one more connection", f"{time.monotonic() - started:.2f}")
                self.end_pane()


if __name__ == "__main__":
    unittest.main()
