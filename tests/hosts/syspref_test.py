"""The pane inside the real System Preferences, under a virtual X server, operated by a real pointer and real keys: its
life, its tabs, and what reaches the driver. Takes the build folder, the bundle and the variable LD_PRELOAD=... for the
application. With KELVO_PICTURES set to a folder it leaves pictures of what it saw there."""

import json
import os
import pathlib
import plistlib
import shutil
import subprocess
import sys
import time
import unittest

from hosts import PANE, PaneLife
from peers import LatePeer, Lines, World, wait_until

BUILD, BUNDLE, PRELOAD = sys.argv[1:4]
del sys.argv[1:4]
BUNDLE = pathlib.Path(BUNDLE)
SIMULATOR = f"{BUILD}/bin/kelvo-touch-driver-sim"

HOST = "SystemPreferences"
WINDOW = "System Preferences"
CONFIGURATION = pathlib.Path("/etc/GNUstep/GNUstep.conf")
# From the window's corner: the icon of the only pane, and a place with nothing to click.
ICON = (50, 55)
ICONS_HEIGHT = 450
NOTHING = (580, 20)
# After which an act that has had no effect is repeated, as a user does whom the window manager kept the focus from.
RETRY_SECONDS = 4


class Display:
    """A virtual X server with a window manager, a pointer and a keyboard."""

    def __init__(self, world):
        reading, writing = os.pipe()
        world.processes.append(subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[writing], stderr=subprocess.DEVNULL))
        os.close(writing)
        with os.fdopen(reading) as numbers:
            world.environment["DISPLAY"] = f":{numbers.readline().strip()}"
        self.environment = world.environment
        world.start("openbox")
        # A window that comes before its manager is moved when that has come.
        wait_until(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), "the window manager")

    def run(self, *command):
        return subprocess.run([str(word) for word in command], env=self.environment, text=True, capture_output=True,
                              check=False).stdout

    def click(self, x, y):
        self.run("xdotool", "mousemove", x, y, "click", 1)

    def keys(self, *names):
        self.run("xdotool", "key", *names)

    def places_of(self, *windows):
        """(x, y, width, height) of each."""
        lines = [line.split("=") for line in self.run("xdotool", *windows, "getwindowgeometry", "--shell", "%@").split()]
        columns = [[int(value) for key, value in lines if key == name] for name in ("X", "Y", "WIDTH", "HEIGHT")]
        return list(zip(*columns))

    def windows(self):
        return self.places_of("search", "--onlyvisible", "--name", ".*")

    def active_window(self, name):
        """Where the window of that name is, once the keyboard is its; else None."""
        if self.run("xdotool", "getactivewindow", "getwindowname").strip() != name:
            return None
        return self.places_of("getactivewindow")[0]


class Preferences:
    """The running application, with the pane installed for a user of its own."""

    def __init__(self, world, *arguments, bundle=BUNDLE):
        self.world = world
        library = world.folder / "GNUstep/Library"
        (library / "Bundles").mkdir(parents=True)
        (library / "Bundles" / BUNDLE.name).symlink_to(bundle)
        machines = self.library_without_panes()
        configuration = world.folder / "GNUstep.conf"
        configuration.write_text(CONFIGURATION.read_text(encoding="utf-8")
                                 + "\nGNUSTEP_USER_CONFIG_FILE=.none\nGNUSTEP_USER_DIR_LIBRARY=./GNUstep/Library\n"
                                 + "GNUSTEP_USER_DEFAULTS_DIR=./GNUstep/Defaults\n"
                                 + "".join(f"GNUSTEP_{domain}_LIBRARY={machines}\n"
                                           for domain in ("SYSTEM", "NETWORK", "LOCAL")), encoding="utf-8")
        # Its applications meet in the folder for temporary files: one that runs there is not started twice.
        meeting_place = world.folder / "tmp"
        meeting_place.mkdir(mode=0o700)
        self.places_file = world.folder / "places"
        world.environment.update(GNUSTEP_CONFIG_FILE=str(configuration), LC_ALL="C.UTF-8", TMPDIR=str(meeting_place),
                                 TEMP=str(meeting_place), TMP=str(meeting_place),
                                 KELVO_CONTROL_PLACES=str(self.places_file), ASAN_OPTIONS="detect_leaks=0")
        self.display = Display(world)
        # The application would start its own notification centre, and leave it behind.
        world.start("gdnc", "--no-fork")
        wait_until(lambda: list(meeting_place.glob("NSMessagePort/names/*")), "the notification centre")
        self.process = world.start("env", PRELOAD, HOST, "-GSSuppressAppIcon", "YES", *arguments)
        self.log = Lines(self.process.stderr)
        self.life = PaneLife(world, HOST, self.log)

    def library_without_panes(self):
        """The machine's library as it is, but for its panes, among which ours has another place in each release."""
        real = pathlib.Path(subprocess.run(["gnustep-config", "--variable=GNUSTEP_SYSTEM_LIBRARY"], text=True,
                                           capture_output=True, check=True).stdout.strip())
        library = self.world.folder / "System"
        (library / "Bundles").mkdir(parents=True)
        for each in [*real.iterdir(), *(real / "Bundles").iterdir()]:
            if each.name != "Bundles" and each.suffix != ".prefPane":
                (library / each.relative_to(real)).symlink_to(each)
        return library

    def places(self):
        """What can be seen of the application: (kind, text, x, y, width, height) each."""
        try:
            lines = self.places_file.read_text(encoding="utf-8").splitlines()
        except FileNotFoundError:
            return []
        found = []
        for line in lines:
            x, y, width, height, kind, *text = line.split(" ", 5)
            found.append((kind, "".join(text), int(x), int(y), int(width), int(height)))
        return found

    def shows(self, text):
        return any(text in each[1] for each in self.places())

    def find(self, kind, text=None):
        """Where a control is, once its window has come to where the application has put it."""
        found = []

        def is_at_rest():
            window = None
            for each in self.places():
                if each[0] == "NSWindow":
                    window = each[2:]
                if each[0] == kind and text in (None, each[1]):
                    found.append(each[2:])
                    return window in self.display.windows()
            return False

        try:
            wait_until(is_at_rest, f"{kind} {text!r}")
        except AssertionError as error:
            raise AssertionError(f"{error} among {self.places()} in {self.display.windows()}") from error
        return found[-1]

    def activate(self):
        """The first click on an application that is not active only makes it so."""
        if self.shows("inactive"):
            x, y, _, _ = self.display.active_window(WINDOW)
            self.display.click(x + NOTHING[0], y + NOTHING[1])
            wait_until(lambda: not self.shows("inactive"), "the application to be active")

    def click(self, kind, text=None, row=0, rows=1):
        x, y, width, height = self.find(kind, text)
        self.activate()
        self.display.click(x + min(width // 2, 12), y + height * (2 * row + 1) // (2 * rows))

    def click_icon(self):
        found = []
        wait_until(lambda: found.append(self.display.active_window(WINDOW)) or found[-1], "the application's window")
        x, y, _, height = found[-1]
        if height > ICONS_HEIGHT:
            return
        for place in (NOTHING, ICON):
            self.display.click(x + place[0], y + place[1])

    @staticmethod
    def until(act, condition, what):
        """Acts until it has helped. An act that may come twice must do no harm then."""
        acted = [float("-inf")]

        def attempt():
            if condition():
                return True
            if time.monotonic() - acted[0] > RETRY_SECONDS:
                act()
                acted[0] = time.monotonic()
            return False

        wait_until(attempt, what)

    def select_pane(self, times=1):
        self.until(self.click_icon, lambda: self.life.steps().count("willSelect") == times, "the pane's selection")
        wait_until(lambda: self.world.has_owner(PANE), "the pane's port")

    def wait_for(self, text):
        wait_until(lambda: self.shows(text), f"{text!r} among {self.places()}")

    def end_by(self, keys):
        self.until(lambda: self.display.keys(keys),
                   lambda: self.log.read() is not None and self.process.poll() is not None, "the application's end")

    def picture(self, name):
        folder = os.environ.get("KELVO_PICTURES")
        if folder:
            self.display.run("import", "-window", "root", f"{folder}/{name}.png")


class SystemPreferences(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        for name in ("Desk", "Wall"):
            self.world.set_plist(f"Settings_{name}.plist", {
                "DoubleClickRate": 0.7, "DoubleClickRange": 48, "RotateMode": 0, "AutoCalibration": True,
                "DriverVersion": f"1.2.3 ({name})",
                "RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 0.7}})
        self.driver = self.world.start(SIMULATOR, "run", "--connect", "Desk")
        self.driver_lines = Lines(self.driver.stdout)
        wait_until(self.driver_lines.read, "the driver simulator")

    def start(self, *arguments, **how):
        self.preferences = Preferences(self.world, *arguments, **how)
        return self.preferences

    def tearDown(self):
        self.preferences.picture("last")
        self.assertEqual([line for line in self.preferences.log.read() if "Sanitizer" in line or "runtime error" in line],
                         [])

    def tell(self, *command):
        status, _, errors = self.world.run(SIMULATOR, *command)
        self.assertEqual((status, errors), (0, ""))

    def received(self, message_id):
        messages = map(json.loads, self.driver_lines.read()[1:])
        return [message["payload"] for message in messages if message["id"] == message_id]

    def message(self, message_id, *control):
        """What the driver hears first when a control is clicked."""
        self.preferences.until(lambda: self.preferences.click(*control), lambda: self.received(message_id),
                               f"message {message_id}")
        return self.received(message_id)[0]

    def test_works_like_any_other_host(self):
        preferences = self.start()
        preferences.select_pane()
        preferences.life.expect("mainViewDidLoad", "willSelect")

        preferences.find("NSButton", "Apply")
        preferences.picture("calibration")
        self.assertEqual(self.message(6, "NSButton", "Apply")["DeviceName"], "Desk")

        self.tell("show-tab", "1")
        self.assertEqual(self.message(0, "NSButton", "Normal speed"), {"DoubleClickRate": 0.5, "DeviceName": "Desk"})
        preferences.picture("touch")
        x, y, width, height = preferences.find("KelvoTenthsSlider")
        preferences.until(lambda: preferences.display.click(x + width // 2, y + height // 2), lambda: self.received(5),
                          "the long press")
        long_press = self.received(5)[0]["RightClick"]["RightClickTimeIntelval"]
        self.assertAlmostEqual(long_press, (0.3 + 3.0) / 2, delta=0.3)
        self.assertEqual(long_press, round(long_press, 1))

        preferences.until(lambda: preferences.click("NSTabViewItem", "Gestures"),
                          lambda: preferences.shows("Look up a word"), "the gestures")
        gestures = {each["Name"]: each["IsEnable"]
                    for each in self.message(2, "KelvoCaption", "Look up a word")["GestureArray"]}
        self.assertFalse(gestures["LookUp"])
        preferences.picture("gestures")

        self.tell("show-tab", "2")
        preferences.find("KelvoMatrix")
        preferences.picture("display")
        question = "Rotate touch input?"
        preferences.until(lambda: preferences.click("KelvoMatrix", row=1, rows=4), lambda: preferences.shows(question),
                          "the sheet")
        preferences.picture("sheet")
        preferences.until(lambda: preferences.display.keys("Escape"), lambda: not preferences.shows(question),
                          "the sheet's end")
        self.assertEqual(self.received(3), [])
        preferences.until(lambda: preferences.click("KelvoMatrix", row=2, rows=4), lambda: preferences.shows(question),
                          "the sheet")
        preferences.until(lambda: preferences.display.keys("Return"), lambda: self.received(3), "the rotation")
        self.assertEqual(self.received(3)[0], {"RotateMode": 2, "DeviceName": "Desk"})

        self.tell("show-tab", "3")
        preferences.find("NSTextField", "1.2.3 (Desk)")
        preferences.picture("version")

        preferences.until(lambda: preferences.click("NSButton", "Show All"),
                          lambda: "willUnselect" in preferences.life.steps(), "the way back")
        preferences.life.expect("mainViewDidLoad", "willSelect", "willUnselect")
        preferences.select_pane(times=2)
        preferences.find("NSTextField", "1.2.3 (Desk)")
        # Quitting does not unselect.
        preferences.end_by("alt+q")
        preferences.life.expect("mainViewDidLoad", "willSelect", "willUnselect", "willSelect", "willUnselect")

    def wait_for_late_driver(self):
        """A driver in the simulator's place that answers when told to, with the touch page shown."""
        self.driver.terminate()
        self.driver.wait()
        self.world.set_utilities("Desk", SelectedMenuItem=1)
        driver = self.enterContext(LatePeer(self.world, "TouchDisplayDriverMessagePort"))
        preferences = self.start()
        preferences.select_pane()
        return preferences, driver

    @staticmethod
    def values(driver):
        """The value of each message about a double click."""
        return [plistlib.loads(data)["DoubleClickRange" if number == 1 else "DoubleClickRate"]
                for number, data in driver.received]

    def test_handles_a_click_as_soon_as_the_wait_is_over(self):
        preferences, driver = self.wait_for_late_driver()
        size = preferences.find("NSButton", "Normal size")
        for _ in range(3):
            driver.received.clear()
            driver.is_late = True
            preferences.until(lambda: preferences.click("NSButton", "Normal speed"), lambda: driver.received, "the speed")
            preferences.display.click(size[0] + 12, size[1] + size[3] // 2)
            self.world.let_run(PANE)
            driver.answer_and_go_on()
            wait_until(lambda: 32 in self.values(driver), "the size")
            # A click that the machine was too slow for is made again, and then both count.
            self.assertEqual(set(self.values(driver)[:-1]), {0.5})
            self.assertEqual(self.values(driver)[-1], 32)

    def test_drag_costs_a_driver_that_hangs_its_first_and_its_last_position(self):
        preferences, driver = self.wait_for_late_driver()
        x, y, width, height = preferences.find("KelvoSlider")
        start, middle = x + width // 2, y + height // 2
        for end, bound in ((x + width + 20, 128), (x - 20, 8)):
            with self.subTest(bound=bound):
                self.choose_normal_size(preferences, driver)
                driver.received.clear()
                driver.is_late = True
                preferences.until(
                    lambda: preferences.display.run("xdotool", "mousemove", start, middle, "mousedown", 1),
                    lambda: driver.received, "the first position")
                for n in range(1, 13):
                    preferences.display.run("xdotool", "mousemove", start + (end - start) * n // 12, middle)
                preferences.display.run("xdotool", "mouseup", 1)
                wait_until(lambda: len(driver.received) >= 2, "the last position")
                self.choose_normal_size(preferences, driver)
                first, last, *others = self.values(driver)
                self.assertTrue(60 <= first <= 76, first)
                self.assertEqual(last, bound)
                # A click that the machine was too slow for is made again.
                self.assertEqual(set(others), {32})

    def test_click_on_a_slider_tells_of_its_place_once(self):
        preferences, driver = self.wait_for_late_driver()
        x, y, width, height = preferences.find("KelvoSlider")
        driver.answer_and_go_on()
        preferences.until(lambda: preferences.display.click(x + width // 2, y + height // 2),
                          lambda: driver.received, "the place")
        self.choose_normal_size(preferences, driver)
        place, *others = self.values(driver)
        self.assertTrue(60 <= place <= 76, place)
        self.assertEqual(set(others), {32})

    def test_field_for_the_size_tells_of_it_when_it_is_left(self):
        preferences = self.start()
        preferences.select_pane()
        self.tell("show-tab", "1")
        x, y, width, height = preferences.find("NSTextField", "48")
        preferences.activate()

        def leave_with(*typed):
            middle = (x + width // 2, y + height // 2)
            preferences.display.run("xdotool", "mousemove", *middle, "click", 1, "key", *typed, "Tab")

        preferences.until(leave_with, lambda: 48 in self.sizes(), "the size")
        clear = ["End", "BackSpace", "BackSpace", "BackSpace"]
        for size in (64, 72):
            # It is out of bounds.
            leave_with(*clear, *"648")
            preferences.until(lambda: leave_with(*clear, *str(size)), lambda: size in self.sizes(), f"size {size}")
        self.assertEqual(sorted(set(self.sizes())), [48, 64, 72])

    def sizes(self):
        return [payload["DoubleClickRange"] for payload in self.received(1)]

    def choose_normal_size(self, preferences, driver):
        """By a click, which the driver answers."""
        driver.answer_and_go_on()
        preferences.until(lambda: preferences.click("NSButton", "Normal size"),
                          lambda: self.values(driver)[-1:] == [32], "the normal size")

    def test_follows_the_displays_and_the_driver(self):
        preferences = self.start()
        preferences.select_pane()
        self.tell("disable")
        preferences.wait_for("The touchscreen driver is switched off")
        preferences.picture("driver-off")
        self.tell("enable")
        preferences.find("NSButton", "Apply")
        self.tell("disconnect", "Desk")
        preferences.wait_for("No touchscreen is connected")
        preferences.picture("disconnected")
        self.tell("connect", "Desk")
        preferences.find("NSButton", "Apply")

        self.tell("connect", "Wall")
        preferences.wait_for("Choose the touchscreen to set up:")
        preferences.picture("chooser")
        preferences.find("NSPopUpButton")

        # Closing the window is leaving the pane, and the end of the application.
        preferences.end_by("alt+F4")
        preferences.life.expect("mainViewDidLoad", "willSelect", "willUnselect")

    def test_speaks_the_languages_that_it_knows(self):
        preferences = self.start("-NSLanguages", "(German, English)")
        preferences.select_pane()
        preferences.find("NSButton", "Anwenden")
        preferences.picture("de-calibration")

    def test_names_both_sides_of_a_form_that_does_not_fit(self):
        bundle = self.world.folder / "Misfit" / BUNDLE.name
        shutil.copytree(BUNDLE, bundle)
        self.world.environment["LD_LIBRARY_PATH"] = f"{BUILD}/lib"
        info = bundle / "Resources/Info-gnustep.plist"
        contents = plistlib.loads(info.read_bytes())
        contents["KelvoPane"] = os.path.relpath(BUNDLE / contents["KelvoPane"], bundle)
        info.write_bytes(plistlib.dumps(contents))
        form = bundle / "Resources/TDCalibrationViewCtl.xib"
        form.write_text(form.read_text(encoding="utf-8").replace('property="applyBtn"', 'property="strange_"'),
                        encoding="utf-8")
        preferences = self.start(bundle=bundle)
        expected = ("form TDCalibrationViewCtl does not fit its owner: view strange_ has no outlet; "
                    "outlet applyBtn has no view")
        preferences.until(preferences.click_icon, lambda: any(expected in line for line in preferences.log.read()),
                          expected)


if __name__ == "__main__":
    unittest.main()
