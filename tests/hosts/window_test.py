"""The pane in its own window as a process: its life, its port and its files, seen from the bus and the disk."""

import signal
import sys
import unittest

from hosts import PANE, PaneLife
from peers import NAME_PREFIX, Lines, Peer, World, wait_until

PROGRAM = sys.argv.pop(1)


class Window:
    """A running window that has shown the pane."""

    def __init__(self, world):
        self.world = world
        self.process = world.start(PROGRAM)
        self.log = Lines(self.process.stderr)
        self.life = PaneLife(world, "kelvo-touch-display", self.log)
        self.wait_for_line("kelvo-touch-display: willSelect")
        wait_until(lambda: world.has_owner(PANE), "the pane's port")

    def wait_for_line(self, line, count=1):
        wait_until(lambda: self.log.read().count(line) >= count, f"{line!r} in the log")

    def terminate(self):
        self.process.terminate()
        wait_until(lambda: self.log.read() is not None and self.process.poll() is not None, "the window's end")
        self.log.read()
        return self.process.returncode


class PaneWindow(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        # The toolkit's platform libraries leak at exit.
        self.world.environment.update(QT_QPA_PLATFORM="offscreen", ASAN_OPTIONS="detect_leaks=0")

    def wait_for_item(self, key, value):
        wait_until(lambda: self.world.plist("Utilities.plist").get(key) == value, f"{key} = {value!r}")

    def test_lives_from_loading_to_leaving_with_the_port_open_between(self):
        self.world.set_utilities("Desk")
        window = Window(self.world)

        window.life.expect("mainViewDidLoad", "willSelect")
        self.assertEqual(window.terminate(), 0)
        window.life.expect("mainViewDidLoad", "willSelect", "willUnselect")
        self.assertEqual(self.world.plist("Utilities.plist")["SelectDeviceName"], "Desk")

    def test_ends_in_order_by_a_signal_as_soon_as_it_can_be_found(self):
        self.world.set_utilities("Desk")
        owners = []
        self.world.bus.add_signal_receiver(
            lambda name, old, new: owners.append(new), "NameOwnerChanged", "org.freedesktop.DBus",
            arg0=NAME_PREFIX + "WindowMessagePort")
        process = self.world.start(PROGRAM)
        wait_until(lambda: owners, "the window's port")

        process.terminate()
        wait_until(lambda: process.poll() is not None, "the window's end")

        self.assertEqual(process.returncode, 0)

    def test_creates_its_folder_and_file_in_a_new_home(self):
        window = Window(self.world)

        self.assertEqual(list(self.world.plist("Utilities.plist")),
                         ["SelectedMenuItem", "IsShowStatuMenu", "DriverEnable", "CurrentDeviceType", "VerboseLog"])
        self.assertEqual((self.world.preferences / "Utilities.plist").stat().st_mode & 0o777, 0o600)
        window.wait_for_line("return")

    def test_hears_of_a_display_and_shows_the_tab_asked_for(self):
        window = Window(self.world)
        self.world.set_utilities("Desk")

        self.assertEqual(self.world.send(PANE, 7, {"IsConnected": True}), b"")
        window.wait_for_line("kMessageIDForDeviceIsConnected  ")
        self.wait_for_item("SelectDeviceName", "Desk")
        self.world.send(PANE, 8, {"SelectedMenuItem": 258})
        self.wait_for_item("SelectedMenuItem", 2)

    def test_answers_with_nothing_whatever_it_is_sent(self):
        Window(self.world)
        for message_id, payload in ((9, {}), (-1, b""), (4, b"\xff" * 1000), (7, [1]), (2**31 - 1, {"a": 1})):
            with self.subTest(message_id=message_id):
                self.assertEqual(self.world.send(PANE, message_id, payload), b"")

    def test_keeps_a_damaged_file_byte_for_byte(self):
        self.world.preferences.mkdir(parents=True)
        file = self.world.preferences / "Utilities.plist"
        file.write_bytes(b"<plist><dict><key>CurrentDeviceType</key>")
        window = Window(self.world)
        self.world.send(PANE, 8, {"SelectedMenuItem": 1})
        self.world.send(PANE, 7, {"IsConnected": True})
        window.wait_for_line("kMessageIDForDeviceIsConnected  ")

        self.assertEqual(window.terminate(), 0)
        self.assertEqual(file.read_bytes(), b"<plist><dict><key>CurrentDeviceType</key>")

    def test_finds_a_bus_that_went_away_and_came_back(self):
        self.world.set_utilities("Desk")
        window = Window(self.world)

        self.world.stop_bus()
        self.world.start_bus()
        wait_until(lambda: self.world.has_owner(PANE), "the port on the new bus")
        self.world.send(PANE, 8, {"SelectedMenuItem": 3})

        self.wait_for_item("SelectedMenuItem", 3)
        self.assertEqual(window.terminate(), 0)

    def test_runs_without_its_port_while_another_has_the_name(self):
        self.world.set_utilities("Desk")
        with Peer(self.world, PANE):
            process = self.world.start(PROGRAM)
            log = Lines(process.stderr)
            self.wait_for_item("SelectDeviceName", "Desk")
            wait_until(lambda: "kelvo-touch-display: willSelect" in log.read(), "the window")
            process.terminate()
            wait_until(lambda: log.read() is not None and process.poll() is not None, "the window's end")
            self.assertEqual(process.returncode, 0)

    def test_started_again_tells_the_first_to_come_to_the_front_instead(self):
        with Peer(self.world, "WindowMessagePort") as first:
            self.assertEqual(self.world.run(PROGRAM)[0], 0)

            self.assertEqual(first.received, [(1, b"")])
        self.assertFalse(self.world.has_owner(PANE))

    def test_started_again_while_it_hangs_says_so(self):
        window = Window(self.world)
        window.process.send_signal(signal.SIGSTOP)

        status, _, errors = self.world.run(PROGRAM)

        self.assertEqual(status, 1)
        self.assertIn("does not answer", errors)

    def test_stands_alone_where_there_is_no_bus(self):
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"
        process = self.world.start(PROGRAM)
        log = Lines(process.stderr)
        wait_until(lambda: "return" in log.read(), "the pane without a bus")
        process.terminate()
        wait_until(lambda: process.poll() is not None, "the window's end")
        self.assertEqual(process.returncode, 0)

    def test_owns_no_name_that_it_does_not_need(self):
        Window(self.world)

        names = {str(name) for name in self.world.bus.list_names() if str(name).startswith(NAME_PREFIX)}
        self.assertEqual(names, {NAME_PREFIX + PANE, NAME_PREFIX + "WindowMessagePort"})


if __name__ == "__main__":
    unittest.main()
