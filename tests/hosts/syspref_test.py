"""The pane inside the real System Preferences, under a virtual X server, operated by a real pointer: its life, its tabs,
and what reaches the driver. Takes the bundle."""

import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import unittest

from hosts import PANE, PaneLife
from peers import Lines, Peer, World, wait_until

BUNDLE = pathlib.Path(sys.argv.pop(1))
HOST = "SystemPreferences"
CONFIGURATION = pathlib.Path("/etc/GNUstep/GNUstep.conf")


class Display:
    """A virtual X server with a window manager, and a pointer."""

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

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *map(str, words)], env=self.environment, text=True, capture_output=True,
                              check=False).stdout

    def click(self, x, y):
        self.xdotool("mousemove", x, y, "click", 1)


class Preferences:
    """The running application, with the pane installed for a user of its own."""

    def __init__(self, world, bundle=BUNDLE):
        self.world = world
        library = world.folder / "GNUstep/Library"
        (library / "Bundles").mkdir(parents=True)
        (library / "Bundles" / BUNDLE.name).symlink_to(bundle)
        configuration = world.folder / "GNUstep.conf"
        configuration.write_text(CONFIGURATION.read_text(encoding="utf-8")
                                 + "\nGNUSTEP_USER_CONFIG_FILE=.none\nGNUSTEP_USER_DIR_LIBRARY=./GNUstep/Library\n"
                                 + "GNUSTEP_USER_DEFAULTS_DIR=./GNUstep/Defaults\n", encoding="utf-8")
        self.places_file = world.folder / "places"
        world.environment.update(GNUSTEP_CONFIG_FILE=str(configuration), LC_ALL="C.UTF-8",
                                 KELVO_CONTROL_PLACES=str(self.places_file))
        self.display = Display(world)
        # A bundle with sanitizers needs theirs to be there before the application, which leaks on its own account.
        libraries = subprocess.run(["ldd", BUNDLE / "KelvoTouchDisplay"], text=True, capture_output=True,
                                   check=True).stdout
        world.environment.update(LD_PRELOAD=" ".join(re.findall(r"=> (\S*/lib(?:asan|ubsan)\.\S*)", libraries)),
                                 ASAN_OPTIONS="detect_leaks=0")
        self.process = world.start(HOST, "-GSSuppressAppIcon", "YES")
        world.environment["LD_PRELOAD"] = ""
        self.log = Lines(self.process.stderr)
        self.life = PaneLife(world, HOST, self.log)

    def places(self):
        """What can be seen of the pane: (kind, text, x, y, width, height) each."""
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
        found = []
        wait_until(lambda: found.extend(each for each in self.places() if each[0] == kind and text in (None, each[1]))
                   or found, f"{kind} {text!r} among {self.places()}")
        return found[0]

    def click(self, kind, text=None, row=0, rows=1):
        _, _, x, y, width, height = self.find(kind, text)
        self.display.click(x + min(width // 2, 12), y + height * (2 * row + 1) // (2 * rows))

    def origin(self):
        """A place at the left of the application's window, in the row of its button "Show All"."""
        geometry = self.display.xdotool("search", "--onlyvisible", "--name", "^System Preferences$",
                                        "getwindowgeometry", "--shell", "%@")
        values = dict(line.split("=") for line in geometry.splitlines() if "=" in line)
        return (int(values["X"]), int(values["Y"])) if int(values.get("WIDTH", 0)) > 400 else None

    def until(self, act, condition, what):
        """Acts until it has helped: the first click into a window that is not active only makes it so."""
        tries = [0]

        def attempt():
            if condition():
                return True
            tries[0] += 1
            if tries[0] % 200 == 1:
                act()
            return False

        wait_until(attempt, what)

    def select_pane(self, times):
        def click_icon():
            origin = self.origin()
            if origin:
                self.display.click(origin[0] + 50, origin[1] + 140)

        self.until(click_icon, lambda: self.life.steps().count("willSelect") == times, "the pane's selection")
        wait_until(lambda: self.world.has_owner(PANE), "the pane's port")

    def show_all(self, times):
        def click():
            x, y = self.origin()
            self.display.click(x + 40, y)

        self.until(click, lambda: self.life.steps().count("willUnselect") == times, "the way back")


class SystemPreferences(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        self.set_utilities(["Desk"])
        self.world.set_plist("Settings_Desk.plist", {
            "DoubleClickRate": 0.7, "DoubleClickRange": 48, "RotateMode": 0, "AutoCalibration": True,
            "DriverVersion": "1.2.3", "RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 0.7}})
        self.driver = self.enterContext(Peer(self.world, "TouchDisplayDriverMessagePort"))

    def set_utilities(self, devices, enabled=True):
        self.world.set_plist("Utilities.plist", {
            "SelectedMenuItem": 0, "IsShowStatuMenu": True, "DriverEnable": enabled, "CurrentDeviceType": devices,
            "VerboseLog": False})

    def message_of(self, message_id, preferences, *control, **where):
        """What the driver hears first when a control is clicked."""
        def heard():
            return [plistlib.loads(data) for heard_id, data in self.driver.received if heard_id == message_id]

        preferences.until(lambda: preferences.click(*control, **where), heard, f"message {message_id}")
        return heard()[0]

    def show_tab(self, index):
        self.world.send(PANE, 8, {"SelectedMenuItem": index})

    def test_works_like_any_other_host(self):
        preferences = Preferences(self.world)
        preferences.select_pane(1)
        preferences.life.expect("mainViewDidLoad", "willSelect")

        self.assertEqual(self.message_of(6, preferences, "NSButton", "Apply")["DeviceName"], "Desk")

        self.show_tab(1)
        self.assertEqual(self.message_of(0, preferences, "NSButton", "Normal Speed"),
                         {"DoubleClickRate": 0.5, "DeviceName": "Desk"})
        preferences.until(lambda: preferences.click("NSTabViewItem", "Gestures"),
                          lambda: preferences.shows("Look up a word"), "the gestures")
        gestures = {each["Name"]: each["IsEnable"] for each
                    in self.message_of(2, preferences, "KelvoCaption", "Look up a word")["GestureArray"]}
        self.assertFalse(gestures["LookUp"])

        self.show_tab(2)
        preferences.until(lambda: preferences.click("KelvoMatrix", row=1, rows=4), lambda: preferences.shows("Cancel"),
                          "the sheet")
        preferences.until(lambda: preferences.click("NSButton", "Cancel"), lambda: not preferences.shows("Cancel"),
                          "the sheet's end")
        self.assertNotIn(3, [message_id for message_id, _ in self.driver.received])
        preferences.until(lambda: preferences.click("KelvoMatrix", row=2, rows=4), lambda: preferences.shows("Rotate"),
                          "the sheet")
        self.assertEqual(self.message_of(3, preferences, "NSButton", "Rotate"),
                         {"RotateMode": 2, "DeviceName": "Desk"})

        self.show_tab(3)
        preferences.find("NSTextField", "1.2.3")

        self.set_utilities(["Desk"], enabled=False)
        self.world.send(PANE, 4, {"DriverEnable": False})
        wait_until(lambda: preferences.shows("switched off"), "the driver's alert")
        self.set_utilities([])
        self.world.send(PANE, 7, {"IsConnected": False})
        wait_until(lambda: preferences.shows("No touch display"), "the display's alert")
        self.set_utilities(["Desk"])
        self.world.send(PANE, 7, {"IsConnected": True})
        preferences.find("NSButton", "Apply")

        preferences.show_all(1)
        preferences.select_pane(2)
        preferences.life.expect("mainViewDidLoad", "willSelect", "willUnselect", "willSelect")
        preferences.until(lambda: preferences.display.click(40, 172), lambda: preferences.process.poll() is not None,
                          "the end of the application")
        preferences.life.expect("mainViewDidLoad", "willSelect", "willUnselect", "willSelect", "willUnselect")

    def test_names_both_sides_of_a_form_that_does_not_fit(self):
        bundle = self.world.folder / "Misfit" / BUNDLE.name
        shutil.copytree(BUNDLE, bundle)
        self.world.environment["LD_LIBRARY_PATH"] = str(BUNDLE.parents[2])
        info = bundle / "Resources/Info-gnustep.plist"
        contents = plistlib.loads(info.read_bytes())
        contents["KelvoPane"] = os.path.relpath(BUNDLE / contents["KelvoPane"], bundle)
        info.write_bytes(plistlib.dumps(contents))
        form = bundle / "Resources/TDCalibrationViewCtl.xib"
        form.write_text(form.read_text(encoding="utf-8").replace('property="applyBtn"', 'property="strange_"'),
                        encoding="utf-8")
        preferences = Preferences(self.world, bundle)

        def click_icon():
            origin = preferences.origin()
            if origin:
                preferences.display.click(origin[0] + 50, origin[1] + 140)

        expected = ("form TDCalibrationViewCtl does not fit its owner: view strange_ has no outlet; "
                    "outlet applyBtn has no view")
        preferences.until(click_icon, lambda: any(expected in line for line in preferences.log.read()), expected)


if __name__ == "__main__":
    unittest.main()
