"""What cases of the desk begin with: a display, a window that says what it feels of it, and the driver."""

import json
import plistlib
import time
import unittest

import desk
from nodes import is_anything_down, virtual_inputs
from panel import Panel
from panels import ELO

# Nobody finds its widgets by what it tells assistive technology.
FELT = ("/usr/bin/env", "NO_AT_BRIDGE=1", "/usr/bin/python3", "-B", "/run/tests/machine/felt.py")
FELT_GESTURES = ("/opt/kelvo-machine-felt",)
DRIVER = "kelvo-touch-driver.service"
SERVICE = "kelvo-touch-devices.service"
# Corners, edges and the middle, a finger's breadth from where there is no glass.
PLACES = [(x, y) for y in (0.002, 0.5, 0.998) for x in (0.002, 0.5, 0.998)]
LEFT, RIGHT = 1, 3
# Where a place of the glass is on a picture that is turned so many degrees.
TURNS = {90: lambda x, y: (y, 1 - x), 180: lambda x, y: (1 - x, 1 - y), 270: lambda x, y: (1 - y, x),
         0: lambda x, y: (x, y)}
# Off the diagonals, so that each turn lands elsewhere.
PLACE = (0.2, 0.1)
# What one finger is passed on as, and what tells that it has been.
MODES = (("pointer", "release"), ("touch", "touch end"))
# The right button as the toolkit of the other window calls it.
QT_RIGHT = 2


def pixel_of(place):
    return place[0] * desk.WIDTH, place[1] * desk.HEIGHT


class Felt(unittest.TestCase):
    """A display, and a window that says what it feels of it."""

    # Of a kind whose fingers stay down however long the next report takes.
    model = ELO
    program = FELT
    felt, shown = None, ()

    @classmethod
    def setUpClass(cls):
        desk.start_screen()
        cls.show_window()
        cls.panel = cls.enterClassContext(Panel(cls.model))
        desk.wait_for(lambda: cls.model.name in desk.listened(), "the display among those that the screen listens to")

    @classmethod
    def show_window(cls):
        """It stays until another one is wanted: to start one takes long."""
        if Felt.shown == cls.program and Felt.felt.process.poll() is None:
            return
        if Felt.felt:
            Felt.felt.__exit__()
        Felt.felt, Felt.shown = desk.Program(*cls.program), ()
        cls.felt.wait_line(lambda line: "shown" in line, "the window that feels")
        Felt.shown = cls.program

    def setUp(self):
        self.start = len(self.felt.lines)

    def begin_anew(self):
        """From here on events count."""
        self.start = len(self.felt.lines)

    def events(self):
        events = [json.loads(line) for line in self.felt.lines[self.start:]]
        return [event for event in events if not event.get("emulated")]

    def touches(self):
        return [event for event in self.events() if event["event"].startswith("touch")]

    def clicks(self):
        return [event for event in self.events() if event["event"] in ("press", "release")]

    def names(self):
        return [event["event"] for event in self.events()]

    def wait_event(self, name, count=1):
        desk.wait_for(lambda: self.names().count(name) >= count, lambda: f"{count} times \"{name}\", not {self.events()}")

    def assert_place(self, event, place):
        x, y = pixel_of(place)
        self.assertLessEqual(max(abs(event["x"] - x), abs(event["y"] - y)), 1, f"{event} is not at {x}, {y}")


class OneFinger:
    """What one finger is where it is passed on as a touch."""

    def test_taps_at_corners_edges_and_middle_are_felt_where_the_finger_is(self):
        for place in PLACES:
            with self.subTest(place):
                self.begin_anew()
                self.panel.tap(place)
                self.wait_event("touch end")
                self.assertEqual([each["event"] for each in self.touches()], ["touch begin", "touch end"])
                self.assert_place(self.touches()[0], place)

    def test_a_drag_is_felt_from_where_it_begins_to_where_it_ends(self):
        self.panel.drag((0.1, 0.2), (0.8, 0.7))
        self.assert_felt_as_one_touch((0.1, 0.2), (0.8, 0.7))

    def test_a_flick_is_felt_from_where_it_begins_to_where_it_ends(self):
        self.panel.drag((0.6, 0.9), (0.6, 0.4), seconds=0.12)
        self.assert_felt_as_one_touch((0.6, 0.9), (0.6, 0.4))

    def assert_felt_as_one_touch(self, beginning, end):
        self.wait_event("touch end")
        touches = self.touches()
        self.assertEqual([touches[0]["event"], touches[-1]["event"]], ["touch begin", "touch end"])
        self.assertEqual({each["event"] for each in touches[1:-1]}, {"touch update"})
        self.assert_place(touches[0], beginning)
        self.assert_place(touches[-1], end)


class WithDriver(Felt):
    """The driver has the display, whose settings every case begins anew."""

    settings = {"DoubleClickRange": 32, "DoubleClickRate": 0.5, "RotateMode": 0, "DriverVersion": "0.8.0.3"}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        desk.write_preferences(f"Settings_{cls.model.name}.plist", cls.settings)
        start_driver()
        cls.addClassCleanup(desk.run, "systemctl", "--user", "stop", DRIVER)
        # First: the devices of a display that outlives its driver are made anew, which takes the screen long.
        cls.addClassCleanup(lambda: cls.panel.unplug())
        cls.wait_driver()

    @classmethod
    def wait_driver(cls, gone=frozenset()):
        """The driver has the display, whose virtual devices are other ones than those that are gone."""
        desk.wait_for(lambda: cls.model.name in connected_displays(), "the driver to have the display")
        desk.wait_for(lambda: len(virtual_inputs() - gone) >= 4, "its virtual devices")
        desk.settle_devices()
        desk.wait_for(cls.has_devices, "its virtual devices to be listened to")

    @classmethod
    def has_devices(cls):
        """The display and its virtual devices are taken in no certain order."""
        names = desk.listened()
        return names.count(cls.model.name) == 2 and all(
            f"{cls.model.name} {device}" in names for device in ("Pointer", "Touchpad", "Keys"))

    @classmethod
    def plug(cls):
        cls.panel = cls.enterClassContext(Panel(cls.model))

    def set(self, *words):
        desk.run("kelvo-touchctl", "set", self.model.name, *words)

    def tap_twice(self, first, second, least=0.0, most=None):
        """Two taps that land so long one after the other; again where the machine was too slow for that."""
        for _ in range(20):
            self.begin_anew()
            began = time.monotonic()
            self.panel.tap(first)
            time.sleep(max(0.0, began + least - time.monotonic()))
            landed = time.monotonic()
            self.panel.tap(second)
            if most is None or time.monotonic() - began <= most and landed - began >= least:
                return
            # What was felt of it must not count for the next.
            time.sleep(1)
        self.skipTest("this machine is too slow to tap twice in so short a time")


class AsPointer(WithDriver):
    """One finger is the pointer, which tells the driver's display from a plain one."""

    # No tap is the second one to that of the case before.
    settings = {**WithDriver.settings, "FingerMode": "pointer", "DoubleClickRate": 0.1}

    def setUp(self):
        super().setUp()
        if self.panel.device is None:
            self.plug()
        if not desk.process_of(DRIVER):
            start_driver()
        self.wait_driver()

    def wait_driven(self):
        """By now the screen has taken the driver's new devices, which it does in its own time."""
        desk.wait_for(lambda: self.is_tap_felt("release"), "a tap to be a click where it is")

    def wait_plain(self):
        """By now the driver has given the display up, which it does when it reads that the last finger has left."""
        desk.wait_for(lambda: self.is_tap_felt("touch end"), "a tap to be a touch where it is")

    def is_tap_felt(self, name, place=(0.6, 0.4), felt_at=None, patience_seconds=3):
        self.begin_anew()
        self.panel.tap(place)
        end = time.monotonic() + patience_seconds
        while time.monotonic() < end:
            if name in self.names():
                first = (self.clicks() or self.touches())[0]
                x, y = pixel_of(felt_at or place)
                return max(abs(first["x"] - x), abs(first["y"] - y)) <= 1
            time.sleep(0.05)
        return False

    def assert_driven(self, place=(0.7, 0.2)):
        """A tap is a click there, and no touch."""
        self.begin_anew()
        self.panel.tap(place)
        self.wait_event("release")
        self.assertEqual([(each["event"], each["button"]) for each in self.clicks()],
                         [("press", LEFT), ("release", LEFT)])
        self.assert_place(self.clicks()[0], place)
        self.assertEqual(self.touches(), [])
        self.assert_nothing_down()

    def assert_plain(self, place=(0.3, 0.8)):
        """A tap is a touch there, and no click."""
        self.begin_anew()
        self.panel.tap(place)
        self.wait_event("touch end")
        self.assertEqual([each["event"] for each in self.touches()], ["touch begin", "touch end"])
        self.assert_place(self.touches()[0], place)
        self.assertEqual(self.clicks(), [])
        self.assert_nothing_down()

    def assert_nothing_down(self):
        desk.wait_for(lambda: not is_anything_down(), "everything to be up")

    def press(self):
        """Two fingers, of which the first one holds the button."""
        self.begin_anew()
        self.panel.glide({0: (0.3, 0.3)}, {0: (0.5, 0.5)}, 0.2)
        self.panel.move({1: (0.8, 0.8)})
        self.wait_event("press")
        self.assertTrue(is_anything_down())


def start_driver():
    desk.run("systemctl", "--user", "start", DRIVER)


def connected_displays():
    try:
        utilities = plistlib.loads((desk.PREFERENCES / "Utilities.plist").read_bytes())
    except (OSError, plistlib.InvalidFileException):
        return []
    return utilities.get("CurrentDeviceType", [])
