"""The pane in its window as a process, on a private bus and a private home, for tests of what happens to it."""

import unittest

from peers import Lines, World, wait_until

PANE = "PreferenceMessagePort"
DRIVER = "TouchDisplayDriverMessagePort"
HANDLED = "kMessageIDForDeviceIsConnected  "


class PaneCase(unittest.TestCase):
    """A test of the window `program`."""

    program = None

    def setUp(self):
        self.world = self.enterContext(World())
        # Without the sanitizer's store of freed memory, what the process holds is what it needs.
        self.world.environment.update(
            QT_QPA_PLATFORM="offscreen", ASAN_OPTIONS="detect_leaks=0:quarantine_size_mb=0:"
            "thread_local_quarantine_size_kb=0:allocator_release_to_os_interval_ms=0")
        self.file = self.world.preferences / "Utilities.plist"

    def start_pane(self):
        self.process = self.world.start(self.program)
        self.log = Lines(self.process.stderr)
        wait_until(lambda: self.world.has_owner(PANE), "the pane's port")

    def wait_handled(self):
        """Waits until the pane has handled everything that it was sent before, which shows that it works."""
        count = self.handled()
        self.world.send(PANE, 7, {"IsConnected": True})
        wait_until(lambda: self.handled() > count, "the pane to handle a message")
        # It is at the beginning that the line is written; nothing else is answered before the end. This means nothing.
        self.world.send("WindowMessagePort", 0, b"")
        self.assertIsNone(self.process.poll())

    def handled(self):
        return sum(line.startswith(HANDLED) for line in self.log.read())

    def show_tab(self, index):
        self.world.send(PANE, 8, {"SelectedMenuItem": index})
        self.wait_handled()

    def check_saves(self, index):
        """That the pane saves the tab that is shown."""
        self.show_tab(index)
        self.assertEqual(self.world.plist("Utilities.plist")["SelectedMenuItem"], index)
        self.assertEqual(self.world.plist("Utilities.plist")["SelectDeviceName"], "Desk")

    def check_cannot_save(self, index):
        """That the pane works on though it cannot save, and that the old file stays as it was, with nothing beside
        it."""
        before = self.file.read_bytes(), self.names()
        self.show_tab(index)
        self.assertEqual((self.file.read_bytes(), self.names()), before)

    def names(self):
        return sorted(entry.name for entry in self.file.parent.iterdir())

    def end_pane(self):
        self.process.terminate()
        wait_until(lambda: self.log.read() is not None and self.process.poll() is not None, "the window's end")
        self.assertEqual(self.process.returncode, 0)
