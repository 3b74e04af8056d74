"""What an installation leaves below its prefix, and that it leaves nothing elsewhere. Takes cmake and the build folder."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

CMAKE, BUILD = sys.argv[1:3]
PREFIX = "somewhere/else"
UTILITY = "Application Support/KelvoTouchDisplay/StatusBarApp/KelvoTouchDisplaySettingUtility.app/" \
          "KelvoTouchDisplaySettingUtility"


class InstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.stage = pathlib.Path(folder.name)
        done = subprocess.run([CMAKE, "--install", BUILD, "--prefix", f"/{PREFIX}"], text=True,
                              env=dict(os.environ, DESTDIR=folder.name), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == 0, done.stdout
        cls.installed = cls.stage / PREFIX
        cls.library, = cls.installed.glob("lib*/**/kelvo-touch-display/Library")

    def libraries_missing(self, program):
        listed = subprocess.run(["ldd", program], check=True, stdout=subprocess.PIPE, text=True).stdout
        return [line for line in listed.splitlines() if "not found" in line]

    def test_nothing_is_written_outside_the_prefix(self):
        strangers = [path for path in self.stage.rglob("*")
                     if not path.is_dir() and self.installed not in path.parents]
        self.assertEqual(strangers, [])

    def test_programs_find_their_library_wherever_the_prefix_is(self):
        for program in (self.installed / "bin/kelvo-touchctl", self.installed / "bin/kelvo-touch-display",
                        self.library / UTILITY):
            with self.subTest(program=program.name):
                self.assertEqual(self.libraries_missing(program), [])

    def test_what_changes_at_run_time_lies_apart(self):
        preferences = self.library / "Preferences"
        self.assertTrue(preferences.is_symlink())
        self.assertEqual(preferences.resolve(), (self.installed / "var/lib/kelvo-touch-display").resolve())
        self.assertTrue(preferences.is_dir())

    def test_entry_that_starts_with_the_session_lies_with_the_configuration(self):
        self.assertTrue((self.installed / "etc/xdg/autostart/kelvo-touch-display-status-bar.desktop").is_file())

    def test_driver_and_its_service_lie_where_the_system_looks(self):
        for place in ("bin/kelvo-touch-driver", "libexec/kelvo-touch-driver-start", "libexec/kelvo-touch-devices",
                      "lib/systemd/user/kelvo-touch-driver.service", "lib/systemd/system/kelvo-touch-devices.service",
                      "share/dbus-1/system.d/com.kelvo.TouchDisplay.Devices.conf",
                      "share/dbus-1/system-services/com.kelvo.TouchDisplay.Devices.service",
                      "share/polkit-1/actions/com.kelvo.TouchDisplay.policy", "lib/udev/rules.d/70-kelvo-touch.rules",
                      "etc/xdg/autostart/kelvo-touch-driver.desktop", "share/man/man1/kelvo-touch-driver.1.gz",
                      "share/man/man8/kelvo-touch-devices.8.gz"):
            with self.subTest(place=place):
                self.assertTrue((self.installed / place).is_file())
        self.assertTrue(os.access(self.installed / "libexec/kelvo-touch-driver-start", os.X_OK))
        # Open to every program of a user, uinput is for the administrator to give.
        self.assertEqual([path.name for path in (self.installed / "lib/udev/rules.d").iterdir()],
                         ["70-kelvo-touch.rules"])

    def test_shells_find_their_completions(self):
        for place in ("bash-completion/completions/kelvo-touchctl", "zsh/site-functions/_kelvo-touchctl",
                      "fish/vendor_completions.d/kelvo-touchctl.fish"):
            with self.subTest(place=place):
                self.assertTrue((self.installed / "share" / place).is_file())

    def test_guides_come_along(self):
        guides = self.installed / "share/doc/kelvo-touch-display"
        for guide in ("USER-GUIDE.md", "FLEET.md", "WRITING-A-DRIVER.md", "examples/driver.py"):
            with self.subTest(guide=guide):
                self.assertGreater((guides / guide).stat().st_size, 0)


unittest.main(argv=sys.argv[:1])
