"""The pane as a module of the desktop's own hosts, operated with a real pointer under a virtual X server: its life, its
port and the driver that it reaches, seen from outside. Takes the build folder, the plug-in's folder in it, the variable
LD_PRELOAD=... for the hosts, and the major version of their frameworks."""

import json
import pathlib
import plistlib
import shutil
import subprocess
import sys
import unittest

import dbus

from hosts import PANE, PaneLife
from peers import LatePeer, Lines, Peer, wait_until
from screen import Atspi, middle_of, wait_for
from stage import OnStage

BUILD, PLUGIN_FOLDER, PRELOAD, MAJOR = sys.argv[1:5]
del sys.argv[1:5]

KCMSHELL, SYSTEM_SETTINGS = f"kcmshell{MAJOR}", "systemsettings"
MODULE = "kcm_kelvo_touch_display"
# One that comes with the hosts themselves.
OTHER_MODULE = "kcm_filetypes"

DRIVER = "TouchDisplayDriverMessagePort"
DISPLAY = "Kelvo 24"
TAB_POP_UP = "Page:"
NORMAL_SPEED = "Normal speed"
APOLOGY = "The touchscreen settings cannot be shown."
TOUCH_TAB, ROTATION_TAB, VERSION_TAB = 1, 2, 3
SHEET = "Rotate touch input?"
NO_PLACE = "This desktop shows no status icons"


class Host(OnStage):
    """What every host does with the module."""

    @classmethod
    def setUpClass(cls):
        module = pathlib.Path(BUILD, PLUGIN_FOLDER, f"{MODULE}.so")
        assert module.is_file(), f"{module} was not built; the configure output says why"
        super().setUpClass()
        for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CURRENT_DESKTOP"):
            cls.world.environment.pop(name, None)

    def start_driver(self):
        self.driver = self.world.start(f"{BUILD}/bin/kelvo-touch-driver-sim", "run", "--connect", DISPLAY)
        self.addCleanup(self.end, self.driver)
        self.driver_lines = Lines(self.driver.stdout)
        wait_until(self.driver_lines.read, "the driver simulator")

    def start_host(self, *command, folder=BUILD):
        plugins = pathlib.Path(folder, PLUGIN_FOLDER).parents[2]
        self.process = self.world.start("env", PRELOAD, f"QT_PLUGIN_PATH={plugins}", *command)
        self.addCleanup(self.end, self.process)
        self.log = Lines(self.process.stderr)
        self.life = PaneLife(self.world, MODULE, self.log)
        self.screen.operate(self.process)

    def handle_what_was_done_during_a_wait(self, command):
        """Two clicks, the second before the first one's message is answered, and then nothing more."""
        self.world.set_utilities(DISPLAY, SelectedMenuItem=TOUCH_TAB)
        with LatePeer(self.world, DRIVER) as driver:
            self.start_host(command, MODULE)
            self.life.expect("mainViewDidLoad", "willSelect")
            # To ask for a place is an event of its own, which would wake the host. Another button may not be in view.
            speed = self.screen.middle_in_view(NORMAL_SPEED)
            self.screen.point_at(speed, "click", "1")
            wait_until(lambda: driver.received, "the driver to hear of the speed")
            self.screen.point_at(speed, "click", "1", "getmouselocation")
            self.world.let_run(PANE)
            driver.answer_and_go_on()
            wait_until(lambda: len(driver.received) == 2, "the driver to hear of the speed again")
            self.assertEqual([(number, plistlib.loads(data)) for number, data in driver.received],
                             [(0, {"DoubleClickRate": 0.5, "DeviceName": DISPLAY})] * 2)
        self.close()
        self.life.expect("mainViewDidLoad", "willSelect", "willUnselect")

    def tearDown(self):
        self.assertEqual([line for line in self.log.read() if "Sanitizer" in line or "runtime error" in line], [])

    @staticmethod
    def end(process):
        process.terminate()
        process.wait()

    def received(self):
        return [(line["id"], line["payload"]) for line in map(json.loads, self.driver_lines.read()[1:])]

    def wait_for_tab(self, tab):
        wait_until(lambda: self.world.plist("Utilities.plist")["SelectedMenuItem"] == tab, f"tab {tab} to be stored")

    def set_normal_speed(self, count=1):
        """Changes a setting; it is the so many-th time."""
        self.screen.click(NORMAL_SPEED)
        message = (0, {"DoubleClickRate": 0.5, "DeviceName": DISPLAY})
        wait_until(lambda: len(self.received()) >= count, "the driver to hear of the setting")
        self.assertEqual(self.received(), [message] * count)

    def minimise_and_restore(self):
        window = self.screen.window
        for command, state in ((["windowminimize"], "Iconic"), (["windowmap"], "Normal")):
            subprocess.run(["xdotool", *command, window], check=True)
            wait_for(lambda: state in self.screen.output_of("xprop", "-id", window, "WM_STATE"), f"state {state}")

    def close(self):
        self.screen.keys("alt+F4")
        wait_until(lambda: self.log.read() is not None and self.process.poll() is not None, "the host's end")
        self.log.read()
        self.assertEqual(self.process.returncode, 0)

    def lead_through_its_life(self, leave, come_back, steps_of_coming_back):
        life = ["mainViewDidLoad", "willSelect"]
        self.life.expect(*life)
        self.screen.pick(TAB_POP_UP, TOUCH_TAB)
        self.wait_for_tab(TOUCH_TAB)
        self.set_normal_speed()
        # A change is in force at once, so there is nothing for the host to apply or to take back.
        self.assertEqual([name for name in ("Apply", "Reset", "Defaults") if self.screen.shown(name)], [])

        leave()
        life += ["willUnselect"]
        self.life.expect(*life)
        come_back()
        life += steps_of_coming_back
        self.life.expect(*life)
        self.set_normal_speed(count=2)

        self.minimise_and_restore()
        self.world.send(PANE, 8, {"SelectedMenuItem": VERSION_TAB})
        self.wait_for_tab(VERSION_TAB)
        self.life.expect(*life)
        self.close()
        self.life.expect(*life, "willUnselect")


class KcmShell(Host):
    """Keeps its modules and hides and shows them."""

    def test_leads_the_pane_through_its_life(self):
        self.start_driver()
        self.start_host(KCMSHELL, MODULE, OTHER_MODULE)

        self.lead_through_its_life(leave=lambda: self.screen.click("File Associations"),
                                   come_back=lambda: self.screen.click("Kelvo Touch Display"),
                                   steps_of_coming_back=["willSelect"])

    def test_handles_a_click_as_soon_as_the_wait_is_over(self):
        self.handle_what_was_done_during_a_wait(KCMSHELL)

    def test_says_that_the_desktop_has_no_place_for_the_menu(self):
        self.world.set_utilities(DISPLAY)
        self.start_host(KCMSHELL, MODULE)

        self.screen.wait_shown(NO_PLACE)
        self.close()

    def test_says_why_there_is_no_pane(self):
        folder = self.world.folder / "incomplete"
        for place, files in ((PLUGIN_FOLDER, f"{MODULE}.so"), ("lib", "libkelvo-touch-platform.so")):
            (folder / place).mkdir(parents=True, exist_ok=True)
            shutil.copy(pathlib.Path(BUILD, place, files), folder / place)
        self.start_host(KCMSHELL, MODULE, folder=folder)

        self.screen.wait_shown(APOLOGY)
        self.close()
        self.life.expect()


class SystemSettings(Host):
    """Destroys a module when the user goes to another, and makes it anew when he comes back."""

    def go_to(self, module):
        """What starting the program once more with this module asks of the one that runs."""
        host = self.world.bus.get_object("org.kde.systemsettings", "/org/kde/systemsettings", introspect=False)
        host.CommandLine(dbus.Array(["systemsettings", module], signature="s"), "/", dbus.Dictionary(signature="sv"),
                         dbus_interface="org.kde.KDBusService", signature="assa{sv}", ignore_reply=True)

    def test_leads_the_pane_through_its_life(self):
        self.start_driver()
        self.start_host(SYSTEM_SETTINGS, MODULE)

        self.lead_through_its_life(leave=lambda: self.go_to(OTHER_MODULE), come_back=lambda: self.go_to(MODULE),
                                   steps_of_coming_back=["mainViewDidLoad", "willSelect"])

    def go_to_by_the_sidebar(self, name):
        entry = wait_for(lambda: self.screen.shown(name, Atspi.Role.LIST_ITEM), f"\"{name}\" in the sidebar")
        # The sidebar counts places from its own corner, which is the window's.
        window = self.screen.shown("", Atspi.Role.FRAME).get_extents(Atspi.CoordType.SCREEN)
        x, y = middle_of(entry.get_extents(Atspi.CoordType.SCREEN))
        self.screen.point_at((window.x + x, window.y + y), "click", "1")

    @unittest.skipIf(MAJOR == "5", "the entries of its sidebar are not told to assistive technology")
    def test_is_left_and_come_back_to_by_the_sidebar(self):
        self.start_driver()
        self.start_host(SYSTEM_SETTINGS, MODULE)

        self.lead_through_its_life(leave=lambda: self.go_to_by_the_sidebar("Default Applications"),
                                   come_back=lambda: self.go_to_by_the_sidebar("Kelvo Touch Display"),
                                   steps_of_coming_back=["mainViewDidLoad", "willSelect"])

    def ask_for_a_rotation(self):
        self.screen.click("90°")
        self.screen.wait_shown(SHEET)

    def test_may_be_left_with_the_alert_open(self):
        self.world.set_utilities(DISPLAY, SelectedMenuItem=ROTATION_TAB)
        visit = ["mainViewDidLoad", "willSelect"]
        with Peer(self.world, DRIVER) as driver:
            self.start_host(SYSTEM_SETTINGS, MODULE)
            self.life.expect(*visit)
            self.ask_for_a_rotation()
            self.go_to(OTHER_MODULE)
            self.life.expect(*visit, "willUnselect")
            self.screen.wait_gone(SHEET)
            self.go_to(MODULE)
            self.life.expect(*visit, "willUnselect", *visit)
            self.assertTrue(self.screen.state_of("0°", Atspi.StateType.CHECKED))
            self.ask_for_a_rotation()
            self.assertEqual(driver.received, [])
            self.screen.keys("Return")
            wait_until(lambda: driver.received, "the driver to hear of the rotation")
            self.assertEqual([(number, plistlib.loads(data)) for number, data in driver.received],
                             [(3, {"RotateMode": 1, "DeviceName": DISPLAY})])
        wait_for(lambda: self.screen.output_of("xdotool", "getactivewindow").strip() == self.screen.window,
                 "the keyboard to be the window's again")
        self.close()
        self.life.expect(*visit, "willUnselect", *visit, "willUnselect")

    def test_handles_a_click_as_soon_as_the_wait_is_over(self):
        self.handle_what_was_done_during_a_wait(SYSTEM_SETTINGS)

    def test_may_destroy_the_module_while_the_pane_waits_for_the_driver(self):
        self.world.set_utilities(DISPLAY, SelectedMenuItem=TOUCH_TAB)
        left = ["mainViewDidLoad", "willSelect", "willUnselect"]

        def leave_meanwhile(*_):
            self.go_to(OTHER_MODULE)
            wait_until(lambda: self.life.steps() == left, "the pane to be left before the driver has answered")

        with Peer(self.world, DRIVER, heard=leave_meanwhile) as driver:
            self.start_host(SYSTEM_SETTINGS, MODULE)
            self.life.expect("mainViewDidLoad", "willSelect")
            self.screen.click(NORMAL_SPEED)
            wait_until(lambda: driver.received, "the driver to hear of the setting")
            self.assertEqual(plistlib.loads(driver.received[0][1]), {"DoubleClickRate": 0.5, "DeviceName": DISPLAY})
            self.life.expect(*left)
            driver.heard = None
            self.go_to(MODULE)
            self.life.expect(*left, "mainViewDidLoad", "willSelect")
            self.screen.click(NORMAL_SPEED)
            wait_until(lambda: len(driver.received) == 2, "the driver to hear of the setting again")
        self.close()


if __name__ == "__main__":
    unittest.main()
