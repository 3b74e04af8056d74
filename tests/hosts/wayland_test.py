"""The window on Wayland, under a compositor without a display: it appears, is painted, follows the desktop's colours, and
leaves when asked."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import dbus
import dbus.service
from gi.repository import GLib

from peers import Lines, World, wait_until

PROGRAM = sys.argv.pop(1)
SOCKET = "kelvo-test"
# On the window, where nothing is written.
BARE_PLACE = (512, 150)

PORTAL, PORTAL_PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
COLOUR_SCHEME = ("org.freedesktop.appearance", "color-scheme")
DARK, LIGHT = dbus.UInt32(1), dbus.UInt32(2)


class Portal(dbus.service.Object):
    """Where a desktop tells programs whether its user wants them dark."""

    def __init__(self, bus):
        self.name = dbus.service.BusName(PORTAL, bus, do_not_queue=True)
        self.scheme = DARK
        super().__init__(bus, PORTAL_PATH)

    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, group, key):
        if (group, key) != COLOUR_SCHEME:
            raise dbus.DBusException("there is no such setting", name="org.freedesktop.portal.Error.NotFound")
        return self.scheme

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, group, key, value):
        """Tells everybody."""

    def choose(self, scheme):
        self.scheme = scheme
        self.SettingChanged(*COLOUR_SCHEME, scheme)


class Wayland(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        # Sockets have short names, and a folder of their own that nobody else may enter.
        runtime = self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-"))
        os.chmod(runtime, 0o700)
        self.pictures = pathlib.Path(runtime) / "pictures"
        self.pictures.mkdir()
        self.world.environment.update(
            XDG_RUNTIME_DIR=runtime, WAYLAND_DISPLAY=SOCKET, QT_QPA_PLATFORM="wayland", LANG="de_DE.UTF-8",
            XDG_PICTURES_DIR=str(self.pictures), ASAN_OPTIONS="detect_leaks=0")
        self.world.environment.pop("DISPLAY", None)
        self.world.environment.pop("LC_ALL", None)
        self.start_compositor(runtime)

    def start_compositor(self, runtime):
        # The small screen that the window is meant for, with nothing on it.
        configuration = pathlib.Path(runtime) / "weston.ini"
        configuration.write_text("[shell]\npanel-position=none\nbackground-color=0xff204060\nbackground-type=tile\n"
                                 "animation=none\nclose-animation=none\nstartup-animation=none\n")
        self.compositor = self.world.start(
            "weston", "--backend=headless-backend.so", "--use-pixman", f"--config={configuration}",
            f"--socket={SOCKET}", "--width=1024", "--height=600", "--debug", f"--log={runtime}/weston.log")
        wait_until(lambda: (pathlib.Path(runtime) / SOCKET).exists() or self.compositor.poll() is not None,
                   "the compositor")
        self.assertIsNone(self.compositor.poll(), "the compositor ended")

    def picture(self):
        """A picture of the screen; its path."""
        before = set(self.pictures.iterdir())
        process = subprocess.run(["weston-screenshooter"], env=self.world.environment, cwd=self.pictures,
                                 capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(process.returncode, 0, process.stderr)
        (taken,) = set(self.pictures.iterdir()) - before
        return taken

    def seen(self, what):
        """A number that describes the picture of the screen, once everybody who has asked is answered."""
        while GLib.MainContext.default().iteration(False):
            pass
        return float(subprocess.run(["identify", "-format", what, str(self.picture())], capture_output=True, text=True,
                                    check=True).stdout)

    def number_of_colours(self):
        return self.seen("%k")

    def brightness(self):
        x, y = BARE_PLACE
        return self.seen(f"%[fx:p{{{x},{y}}}.lightness]")

    def start_window(self):
        process = self.world.start(PROGRAM)
        log = Lines(process.stderr)
        wait_until(lambda: "kelvo-touch-display: willSelect" in log.read(), "the window")
        return process, log

    def test_window_appears_is_painted_and_leaves(self):
        wait_until(lambda: self.number_of_colours() == 1, "the empty screen")
        process, log = self.start_window()

        wait_until(lambda: self.number_of_colours() > 10, "the window on the screen")

        process.terminate()
        wait_until(lambda: log.read() is not None and process.poll() is not None, "the window's end")
        self.assertEqual(process.returncode, 0)
        wait_until(lambda: self.number_of_colours() == 1, "the screen without the window")

    def test_window_is_as_dark_as_the_desktop_asks_while_it_is_open(self):
        self.world.environment["XDG_CURRENT_DESKTOP"] = "GNOME"
        portal = Portal(self.world.bus)
        _, log = self.start_window()
        wait_until(lambda: log.read() is not None and self.number_of_colours() > 10, "the window on the screen")

        wait_until(lambda: log.read() is not None and self.brightness() < 0.25, "the dark window")
        portal.choose(LIGHT)
        wait_until(lambda: log.read() is not None and self.brightness() > 0.75, "the light window")
        portal.choose(DARK)
        wait_until(lambda: log.read() is not None and self.brightness() < 0.25, "the dark window again")


if __name__ == "__main__":
    unittest.main()
