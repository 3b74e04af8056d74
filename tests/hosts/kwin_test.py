"""The window under Plasma's compositor for Wayland, nested in a virtual X display: what the compositor itself says of it.
Takes the program and the folder of the sources."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import dbus
import dbus.service

from peers import Lines, World, wait_until

PROGRAM, SOURCES = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
SOCKET = "kelvo-test"
LISTENER = "com.kelvo.TouchDisplay.Test"
SCREEN = (1024, 700)
# In the toolkit's account of what it says to the compositor: the size in pixels of what it has drawn, and at which size
# that is shown.
DRAWN_SIZE = r"create_buffer\(new id wl_buffer[@#]\d+, \d+, (\d+), (\d+)"
SHOWN_SIZE = r"set_destination\((\d+), (\d+)\)"
# What the compositor's scripts say of each window, under the names of either generation of it.
SURVEY = f"""
const windows = workspace.windowList ? workspace.windowList() : workspace.clientList();
const active = workspace.activeWindow !== undefined ? workspace.activeWindow : workspace.activeClient;
callDBus("{LISTENER}", "/", "{LISTENER}", "Tell", JSON.stringify(windows.map(each => ({{
    caption: String(each.caption), entry: String(each.desktopFileName), isActive: each === active,
    isPopUp: each.popupWindow, owner: each.transientFor ? String(each.transientFor.caption) : "",
    place: [each.frameGeometry.x, each.frameGeometry.y, each.frameGeometry.width, each.frameGeometry.height]}}))));
"""


class Listener(dbus.service.Object):
    """Where the compositor's scripts send what they see."""

    def __init__(self, bus):
        self.name = dbus.service.BusName(LISTENER, bus)
        self.told = []
        super().__init__(bus, "/")

    @dbus.service.method(LISTENER, in_signature="s")
    def Tell(self, windows):
        self.told.append(json.loads(windows))


class OnKWin(unittest.TestCase):
    SCALE = 1

    def setUp(self):
        self.world = self.enterContext(World(services=[]))
        # Sockets have short names, and a folder of their own that nobody else may enter.
        self.runtime = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-")))
        os.chmod(self.runtime, 0o700)
        self.world.environment.update(
            XDG_RUNTIME_DIR=str(self.runtime), XDG_DATA_HOME=str(self.world.home / "share"),
            XDG_CURRENT_DESKTOP="KDE", LC_ALL="C.UTF-8", ASAN_OPTIONS="detect_leaks=0")
        for name in ("QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"):
            self.world.environment.pop(name, None)
        self.install_entry()
        self.listener = Listener(self.world.bus)
        self.scripts = 0
        self.configure_scale()
        self.start_compositor()

    def install_entry(self):
        for source, place in (("hosts/window/kelvo-touch-display.desktop", "applications"),
                              ("Resources/icons/kelvo-touch-display.svg", "icons/hicolor/scalable/apps")):
            folder = self.world.home / "share" / place
            folder.mkdir(parents=True)
            shutil.copy(SOURCES / source, folder)

    def configure_scale(self):
        """As the user chooses it; on its own the compositor takes the option for the size alone."""
        configuration = self.world.home / ".config"
        configuration.mkdir()
        output = {"enabled": True, "outputIndex": 0, "position": {"x": 0, "y": 0}, "priority": 0}
        (configuration / "kwinoutputconfig.json").write_text(json.dumps([
            {"name": "outputs", "data": [{"connectorName": "X11-0", "scale": self.SCALE}]},
            {"name": "setups", "data": [{"lidClosed": False, "outputs": [output]}]}]))

    def start_compositor(self):
        # A copy has none of the rights that the installed file asks for, which a container may not give. The compositor
        # starts under its own name alone.
        compositor = self.runtime / "kwin_wayland"
        shutil.copy(shutil.which("kwin_wayland"), compositor)
        self.compositor = self.world.start(
            compositor, "--x11-display", os.environ["DISPLAY"], "--width", SCREEN[0], "--height", SCREEN[1],
            "--scale", self.SCALE, "--no-lockscreen", "--no-global-shortcuts", "--no-kactivities", "--socket", SOCKET)
        self.compositor_log = Lines(self.compositor.stderr)
        wait_until(lambda: self.compositor_log.read() is not None and (self.runtime / SOCKET).exists()
                   and self.world.bus.name_has_owner("org.kde.KWin") or self.compositor.poll() is not None,
                   "the compositor")
        self.assertIsNone(self.compositor.poll(), f"the compositor ended: {self.compositor_log.lines}")
        self.world.environment.update(WAYLAND_DISPLAY=SOCKET, QT_QPA_PLATFORM="wayland")

    def run_script(self, text):
        self.scripts += 1
        script = self.runtime / f"script{self.scripts}.js"
        script.write_text(text)
        scripting = dbus.Interface(self.world.bus.get_object("org.kde.KWin", "/Scripting", introspect=False),
                                   "org.kde.kwin.Scripting")
        scripting.loadScript(str(script), script.name, signature="ss")
        scripting.start()

    def windows(self):
        told = len(self.listener.told)
        self.run_script(SURVEY)
        wait_until(lambda: self.compositor_log.read() is not None and len(self.listener.told) > told,
                   "the compositor's account of its windows")
        return self.listener.told[-1]

    def window_that(self, holds, what):
        """The one window, once that holds of it."""
        seen = []

        def is_there():
            seen[:] = [each for each in self.windows() if holds(each)]
            return seen

        wait_until(is_there, what)
        [window] = seen
        return window

    def start_window(self):
        process = self.world.start(PROGRAM)
        log = Lines(process.stderr)
        wait_until(lambda: "kelvo-touch-display: willSelect" in log.read(), "the window")
        return process, log

    @staticmethod
    def keys(*names):
        subprocess.run(["xdotool", "mousemove", str(SCREEN[0] // 2), "5", "key", *names], check=True)


class KWin(OnKWin):
    def test_window_is_the_programs_own_and_inside_of_the_screen(self):
        process, log = self.start_window()

        window = self.window_that(lambda each: each["caption"], "the window on the screen")

        self.assertEqual(window["caption"], "Kelvo Touch Display")
        # By its entry the desktop finds the icon.
        self.assertEqual(window["entry"], "kelvo-touch-display")
        self.assertTrue(window["isActive"])
        x, y, width, height = window["place"]
        self.assertTrue(x >= 0 and y >= 0 and x + width <= SCREEN[0] and y + height <= SCREEN[1], window["place"])
        process.terminate()
        wait_until(lambda: log.read() is not None and process.poll() is not None, "the window's end")
        self.assertEqual(process.returncode, 0)
        self.assertEqual(self.windows(), [])

    def test_alert_is_a_sheet_of_the_window(self):
        self.world.set_utilities("Kelvo 24")
        self.start_window()
        self.window_that(lambda each: each["isActive"], "the window on the screen")
        owned = []

        def sheet_comes():
            # To the page of the rotation, and there to the next one; the sheet does nothing upon these.
            self.keys("alt+g", "Home", "Down", "Down", "Tab", "Down")
            windows = self.windows()
            # The sheet may have its window's caption.
            owned[:] = [(each, owner) for each in windows if not each["isPopUp"]
                        for owner in windows if not owner["owner"] and each["owner"] == owner["caption"]]
            return owned

        wait_until(sheet_comes, "the sheet")

        [(sheet, window)] = owned
        self.assertEqual(window["entry"], "kelvo-touch-display")
        x, y, width, height = sheet["place"]
        left, top, whole_width, whole_height = window["place"]
        self.assertTrue(left <= x + width // 2 < left + whole_width and top <= y + height // 2 < top + whole_height,
                        (sheet["place"], window["place"]))
        self.assertTrue(x >= 0 and y >= 0 and x + width <= SCREEN[0] and y + height <= SCREEN[1], sheet["place"])

    def test_menu_of_a_pop_up_stays_inside_of_the_screen(self):
        self.world.set_utilities("Kelvo 24")
        self.start_window()
        self.window_that(lambda each: each["isActive"], "the window on the screen")

        def keys_arrive():
            self.keys("alt+g", "Down")
            return self.world.plist("Utilities.plist")["SelectedMenuItem"] > 0

        # That the window has the keyboard the compositor says sooner than it is so.
        wait_until(keys_arrive, "the pop-up to be operated")
        self.keys("space")

        x, y, width, height = self.window_that(lambda each: each["isPopUp"], "the menu")["place"]
        self.assertTrue(x >= 0 and y >= 0 and x + width <= SCREEN[0] and y + height <= SCREEN[1], (x, y, width, height))


class KWinAtOneAndAHalf(OnKWin):
    SCALE = 1.5

    def test_window_is_drawn_in_the_pixels_of_the_screen(self):
        self.world.environment["WAYLAND_DEBUG"] = "1"
        _, log = self.start_window()
        self.window_that(lambda each: each["isActive"], "the window on the screen")
        if "get_fractional_scale" not in "\n".join(log.read()):
            self.skipTest("the toolkit of this release knows whole scales only")

        def is_drawn_so():
            said = "\n".join(log.read())
            drawn = [(int(width), int(height)) for width, height in re.findall(DRAWN_SIZE, said)]
            shown = [(int(width), int(height)) for width, height in re.findall(SHOWN_SIZE, said)]
            return drawn and drawn[-1] == (round(shown[-1][0] * self.SCALE), round(shown[-1][1] * self.SCALE))

        wait_until(is_drawn_so, "the window to be drawn in the pixels of the screen")


if __name__ == "__main__":
    unittest.main()
