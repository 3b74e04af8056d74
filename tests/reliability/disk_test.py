"""The disk is full or read-only, something else stands in a file's place, or a link leads elsewhere: the old file stays
whole, the pane works on, and saves again when it can."""

import os
import plistlib
import subprocess
import sys
import unittest

from pane import PaneCase
from peers import wait_until
from scale import skip

if "KELVO_IN_NAMESPACE" not in os.environ:
    # In a mount namespace of its own, which takes the small disks with it however this ends.
    command = ["unshare", "--mount", "--propagation", "private", *(["--map-root-user"] if os.geteuid() else [])]
    if subprocess.run([*command, "mount", "-t", "tmpfs", "none", "/mnt"], check=False).returncode:
        skip("no disk can be mounted here: that takes root, or user namespaces")
    os.environ["KELVO_IN_NAMESPACE"] = "yes"
    os.execvp(command[0], [*command, sys.executable, "-B", *sys.argv])

PaneCase.program = sys.argv.pop(1)


class Disk(PaneCase):
    def mount(self, folder, options="size=256k"):
        folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "none", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    def fill(self, folder):
        """Leaves not a byte, and gives the file that takes them all."""
        filler = folder / "filler"
        with open(filler, "wb", buffering=0) as file:
            for size in (65536, 1024, 1):
                try:
                    while file.write(b"x" * size) == size:
                        pass
                except OSError:
                    pass
        return filler

    def test_full_disk(self):
        self.mount(self.world.preferences)
        self.world.set_utilities("Desk")
        self.start_pane()
        self.check_saves(1)
        filler = self.fill(self.world.preferences)

        self.check_cannot_save(2)

        filler.unlink()
        self.check_saves(3)
        self.end_pane()

    def test_disk_without_room_for_one_more_file(self):
        self.mount(self.world.preferences, "nr_inodes=4")
        self.world.set_utilities("Desk")
        self.start_pane()
        self.show_tab(3)
        filler = self.world.preferences / "filler"
        count = 0
        while True:
            try:
                (self.world.preferences / f"filler{count}").touch(exist_ok=False)
                count += 1
            except OSError:
                break
        self.assertGreater(count, 0)

        self.check_cannot_save(2)

        for number in range(count):
            filler.with_name(f"filler{number}").unlink()
        self.check_saves(3)

    def test_full_disk_at_the_first_start(self):
        self.mount(self.world.preferences)
        filler = self.fill(self.world.preferences)
        self.start_pane()
        self.wait_handled()
        self.assertEqual(self.names(), ["filler"])

        filler.unlink()
        self.wait_handled()
        self.assertEqual(self.world.plist("Utilities.plist")["CurrentDeviceType"], [])

    def test_read_only_disk(self):
        self.mount(self.world.preferences)
        self.world.set_utilities("Desk")
        self.start_pane()
        self.check_saves(1)
        subprocess.run(["mount", "-o", "remount,ro", self.world.preferences], check=True)

        self.check_cannot_save(2)

        subprocess.run(["mount", "-o", "remount,rw", self.world.preferences], check=True)
        self.check_saves(3)

    def test_home_on_another_disk(self):
        self.mount(self.world.home, "size=1m")
        self.start_pane()
        self.wait_handled()
        self.world.set_utilities("Desk")
        self.check_saves(3)
        self.assertNotEqual(os.stat(self.world.home).st_dev, os.stat(self.world.folder).st_dev)

    def test_folder_in_the_files_place(self):
        self.file.mkdir(parents=True)
        (self.file / "inside").write_text("kept")
        self.start_pane()
        self.wait_handled()
        self.show_tab(2)
        self.assertEqual((self.file / "inside").read_text(), "kept")
        self.assertEqual(self.names(), ["Utilities.plist"])

        (self.file / "inside").unlink()
        self.file.rmdir()
        self.world.set_utilities("Desk")
        self.check_saves(3)

    def test_file_in_the_folders_place(self):
        self.world.preferences.parent.mkdir(parents=True)
        self.world.preferences.write_text("no folder")
        self.start_pane()
        self.wait_handled()
        self.show_tab(2)
        self.assertEqual(self.world.preferences.read_text(), "no folder")

        self.world.preferences.unlink()
        self.world.set_utilities("Desk")
        self.check_saves(3)

    def test_folder_that_is_taken_away(self):
        self.world.set_utilities("Desk")
        self.start_pane()
        self.check_saves(1)
        self.world.preferences.rename(self.world.folder / "taken")

        self.wait_handled()

        self.assertEqual(self.world.plist("Utilities.plist")["CurrentDeviceType"], [])

    def test_link_to_nothing(self):
        target = self.world.home / "elsewhere/Own.plist"
        target.parent.mkdir()
        self.file.parent.mkdir(parents=True)
        self.file.symlink_to(target)
        self.start_pane()
        self.wait_handled()

        self.assertTrue(self.file.is_symlink())
        self.assertEqual(plistlib.loads(target.read_bytes())["CurrentDeviceType"], [])
        self.assertEqual(os.listdir(target.parent), ["Own.plist"])

    def test_link_into_a_folder_that_is_missing(self):
        self.file.parent.mkdir(parents=True)
        self.file.symlink_to(self.world.home / "missing/Own.plist")
        self.start_pane()
        self.wait_handled()
        self.show_tab(2)
        self.assertTrue(self.file.is_symlink())
        self.assertFalse(self.file.exists())

        (self.world.home / "missing").mkdir()
        self.world.set_utilities("Desk")
        self.check_saves(3)

    def test_links_in_a_circle(self):
        self.file.parent.mkdir(parents=True)
        self.file.symlink_to("Other.plist")
        (self.file.parent / "Other.plist").symlink_to("Utilities.plist")
        self.start_pane()
        self.wait_handled()
        self.show_tab(2)
        self.assertEqual(self.names(), ["Other.plist", "Utilities.plist"])

    def test_link_to_another_disk(self):
        other = self.world.folder / "other"
        self.mount(other)
        self.world.set_utilities("Desk")
        target = other / "Own.plist"
        target.write_bytes(self.file.read_bytes())
        self.file.unlink()
        self.file.symlink_to(target)
        self.start_pane()
        self.check_saves(1)
        filler = self.fill(other)

        self.check_cannot_save(2)

        filler.unlink()
        self.check_saves(3)
        self.assertTrue(self.file.is_symlink())
        self.assertEqual(os.listdir(other), ["Own.plist"])
        self.assertEqual(plistlib.loads(target.read_bytes())["SelectedMenuItem"], 3)

    def test_folder_that_is_a_link_to_another_disk(self):
        other = self.world.folder / "other"
        self.mount(other)
        self.world.preferences.parent.mkdir(parents=True)
        self.world.preferences.symlink_to(other)
        self.start_pane()
        wait_until(self.file.exists, "the file behind the link")
        self.world.set_utilities("Desk")
        self.check_saves(3)
        self.assertTrue(self.world.preferences.is_symlink())


if __name__ == "__main__":
    unittest.main()
