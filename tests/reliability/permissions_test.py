"""Folders and files that may not be read or written: the old file stays as it is, the pane works on, and saves again
when it may. And whatever the umask, nobody else may write what is created."""

import os
import subprocess
import sys
import unittest

from pane import PaneCase
from peers import wait_until
from scale import skip

NOBODY = "65534"
PROGRAM, SIMULATOR = sys.argv[1:3]

if os.geteuid() == 0:
    # Modes say nothing to root.
    command = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"]
    if subprocess.run([*command, PROGRAM, "--version"], check=False, stdout=subprocess.DEVNULL).returncode:
        skip("another user cannot run what was built; it must lie where everybody may read")
    os.execvp(command[0], [*command, sys.executable, "-B", *sys.argv])

del sys.argv[1:3]
PaneCase.program = PROGRAM


class Permissions(PaneCase):
    def setUp(self):
        super().setUp()
        self.assertNotEqual(os.geteuid(), 0)
        # However a test ends, its folder can be removed.
        self.addCleanup(subprocess.run, ["chmod", "-R", "u+rwX", self.world.folder], check=False)

    def start_with_desk(self):
        self.world.set_utilities("Desk")
        self.start_pane()
        self.check_saves(1)

    def test_folder_that_may_not_be_written(self):
        self.start_with_desk()
        self.file.parent.chmod(0o555)
        self.check_cannot_save(2)
        self.file.parent.chmod(0o755)
        self.check_saves(3)

    def test_folder_that_may_not_be_entered(self):
        self.start_with_desk()
        before = self.file.read_bytes()
        self.file.parent.chmod(0)
        self.show_tab(2)
        self.file.parent.chmod(0o755)
        self.assertEqual(self.file.read_bytes(), before)
        self.assertEqual(self.names(), ["Settings_Desk.plist", "Utilities.plist"])
        self.check_saves(3)

    def test_file_that_may_not_be_read_is_not_overwritten(self):
        self.start_with_desk()
        before = self.file.read_bytes()
        self.file.chmod(0)
        self.show_tab(2)
        self.assertEqual(self.file.stat().st_mode & 0o777, 0)
        self.file.chmod(0o600)
        self.assertEqual(self.file.read_bytes(), before)
        self.check_saves(3)

    def test_file_that_may_not_be_written_is_replaced_and_keeps_its_mode(self):
        self.start_with_desk()
        self.file.chmod(0o400)
        self.check_saves(2)
        self.assertEqual(self.file.stat().st_mode & 0o777, 0o400)

    def test_what_a_killed_save_of_such_a_file_left_is_removed_by_the_next(self):
        self.start_with_desk()
        self.file.chmod(0o400)
        for number in (0, 5):
            left = self.file.with_name(f".saving-Utilities.plist.{number}")
            left.write_text("half")
            left.chmod(0o400)
        self.check_saves(2)
        self.assertEqual(self.names(), ["Settings_Desk.plist", "Utilities.plist"])

    def test_home_that_may_not_be_written(self):
        self.world.home.chmod(0o555)
        self.start_pane()
        self.wait_handled()
        self.show_tab(2)
        self.assertEqual(os.listdir(self.world.home), [])
        self.world.home.chmod(0o755)
        self.world.set_utilities("Desk")
        self.check_saves(3)

    def test_home_that_is_missing_is_made(self):
        self.world.environment["HOME"] = str(self.world.folder / "no/home")
        self.start_pane()
        wait_until((self.world.folder / "no/home/Library/Preferences/KelvoTouchDisplay/Utilities.plist").exists,
                   "the file in the home that was made")

    def test_nobody_else_may_write_what_is_created_whatever_the_umask(self):
        for umask in (0, 0o022, 0o077):
            with self.subTest(umask=oct(umask)):
                before = os.umask(umask)
                try:
                    simulator = self.world.start(SIMULATOR, "run", "--connect", "Desk")
                    self.assertIn("Desk", simulator.stdout.readline())
                    self.start_pane()
                finally:
                    os.umask(before)
                self.show_tab(1)
                self.check_saves(3)
                library = self.world.home / "Library"
                modes = {str(entry.relative_to(library)): entry.stat().st_mode & 0o777
                         for entry in (library, *library.rglob("*"))}
                self.assertIn("Preferences/KelvoTouchDisplay/Settings_Desk.plist", modes)
                self.assertIn("Preferences/com.apple.dock.plist", modes)
                for name, mode in modes.items():
                    self.assertEqual(mode, 0o600 if name.endswith("plist") else 0o755 & ~umask, name)
                simulator.terminate()
                simulator.wait()
                self.end_pane()
                subprocess.run(["rm", "-r", library], check=True)


if __name__ == "__main__":
    unittest.main()
