"""The settings window under a real X server, touched by a real touch display."""

import json
import unittest

import desk
from panel import Panel
from panels import ELAN

DISPLAY = "Kelvo 24"
LONG_PRESS = "Press and hold to right-click"
TOUCH_TAB = 1
RIGHT_CLICK = 5


class Window(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        desk.start_x()

    def test_the_x_server_knows_the_display_as_a_touch_screen(self):
        with Panel(ELAN):
            desk.wait_for(lambda: ELAN.name in desk.listened(), "the display among those that the screen listens to")
            self.assertIn("Touch mode: direct", desk.run("xinput", "list", "--long", ELAN.name))

    def test_a_tap_on_a_check_box_of_the_settings_window_reaches_the_driver(self):
        desk.write_preferences("Utilities.plist", {
            "SelectedMenuItem": TOUCH_TAB, "DriverEnable": True, "CurrentDeviceType": [DISPLAY]})
        with Panel(ELAN) as panel, desk.Program("kelvo-touch-driver-sim", "run", "--connect", DISPLAY) as simulator:
            with desk.Program("kelvo-touch-display") as window, desk.Eyes(window) as eyes:
                self.assertFalse(eyes.is_checked(LONG_PRESS))
                place = eyes.place_of(LONG_PRESS)
                known = len(simulator.lines)

                panel.tap(place)

                line = simulator.wait_line(lambda line: "RightClickIsEnable" in line, "the message of the tap", known)
                self.assertIs(json.loads(line)["payload"]["RightClick"]["RightClickIsEnable"], True)
                self.assertTrue(eyes.is_checked(LONG_PRESS))


if __name__ == "__main__":
    unittest.main()
