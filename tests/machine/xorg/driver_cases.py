"""The driver as an ordinary user's program, with the system service that hands it the display."""

import pathlib
import plistlib
import time
import unittest

import desk
from panels import ELAN
from touch_cases import Felt, OneFinger, PLACES

DRIVER = pathlib.Path("/usr/bin/kelvo-touch-driver")
UNIT = "kelvo-touch-driver.service"
LEFT = 1


class WithDriver(Felt):
    settings = {}

    @classmethod
    def setUpClass(cls):
        if not DRIVER.exists():
            raise unittest.SkipTest("there is no driver in this build")
        super().setUpClass()
        desk.write_preferences(f"Settings_{ELAN.name}.plist", {
            "DoubleClickRange": 32, "DoubleClickRate": 0.5, "RotateMode": False, "DriverVersion": "0.8.0.3",
            **cls.settings})
        desk.run("systemctl", "--user", "import-environment", "DISPLAY")
        cls.addClassCleanup(desk.run, "systemctl", "--user", "stop", UNIT)
        desk.run("systemctl", "--user", "start", UNIT)
        desk.wait_for(cls.has_display, "the driver to have the display")
        desk.wait_for(cls.has_devices, "the display's virtual devices in the X server")

    @staticmethod
    def has_display():
        try:
            utilities = plistlib.loads((desk.PREFERENCES / "Utilities.plist").read_bytes())
        except (OSError, plistlib.InvalidFileException):
            return False
        return ELAN.name in utilities.get("CurrentDeviceType", [])

    @staticmethod
    def has_devices():
        """The X server takes the display and its virtual devices in no certain order."""
        names = desk.pointers()
        return names.count(ELAN.name) == 2 and all(
            f"{ELAN.name} {device}" in names for device in ("Pointer", "Touchpad", "Keys"))

    def clicks(self, start):
        return [event for event in self.events(start)
                if event["event"] in ("press", "release") and not event["emulated"]]


class InTouchMode(OneFinger, WithDriver):
    """One finger is passed on as a touch."""


class InPointerMode(WithDriver):
    settings = {"FingerMode": "pointer"}

    def test_taps_at_corners_edges_and_middle_are_clicks_where_the_finger_is(self):
        for place in PLACES:
            with self.subTest(place):
                start = len(self.felt.lines)
                self.panel.tap(place)
                desk.wait_for(lambda: len(self.clicks(start)) >= 2, "the click")
                clicks = self.clicks(start)
                self.assertEqual([(each["event"], each["button"]) for each in clicks],
                                 [("press", LEFT), ("release", LEFT)])
                self.assert_place(clicks[0], place)
                self.assertEqual(self.touches(start), [])
                # Two taps that are two clicks, wherever they are.
                time.sleep(0.6)


if __name__ == "__main__":
    unittest.main()
