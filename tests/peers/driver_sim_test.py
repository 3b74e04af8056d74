"""The driver simulator as a process: its files, its messages to the pane, its command line."""

import json
import pathlib
import plistlib
import re
import shutil
import signal
import sys
import time
import unittest

import dbus

from peers import NAME_PREFIX, Lines, Peer, World, wait_until

SIMULATOR, RECORDINGS = sys.argv[1], pathlib.Path(sys.argv[2])
del sys.argv[1:3]

DRIVER = "TouchDisplayDriverMessagePort"
PANE = "PreferenceMessagePort"
CHANNEL = "/com/kelvo/TouchDisplay/Driver"

# The system's preference files, beside the product's folder.
DOCK = "../com.apple.dock.plist"
GLOBAL = "../.GlobalPreferences.plist"
ALL_DOCK_GESTURES_ON = {"showAppExposeGestureEnabled": True, "showDesktopGestureEnabled": True,
                        "showMissionControlGestureEnabled": True, "showLaunchpadGestureEnabled": True}
ALL_GLOBAL_GESTURES_ON = {"AppleEnableSwipeNavigateWithScrolls": True}

# A pane's port, whose process can be stopped.
HUNG_PANE = """import sys, dbus.bus, time
bus = dbus.bus.BusConnection(sys.argv[1])
bus.request_name("com.kelvo.TouchDisplay.PreferenceMessagePort")
time.sleep(600)
"""


class Simulator:
    """A running simulator, of which the first line has been read."""

    def __init__(self, world, *arguments):
        self.world = world
        self.process = world.start(SIMULATOR, "run", *arguments)
        self.output = Lines(self.process.stdout)
        wait_until(lambda: self.output.read(), "the simulator's first line")

    def command(self, *words):
        return self.world.run(SIMULATOR, *words)

    def messages(self, count):
        """The messages printed so far, once there are so many."""
        wait_until(lambda: len(self.output.read()) >= count + 1, f"{count} messages")
        return [json.loads(line) for line in self.output.lines[1:]]


class Watcher:
    """A program that watches displays, on a connection of its own, and keeps what it is told."""

    def __init__(self, world):
        self.bus = dbus.bus.BusConnection(world.address)
        self.bus.set_exit_on_disconnect(False)
        self.frames = []
        self.ended = []
        for name, heard in (("Frame", lambda *frame: self.frames.append(frame)), ("WatchEnded", self.ended.append)):
            self.bus.add_signal_receiver(heard, name, NAME_PREFIX + "Driver", path=CHANNEL)
        self.driver = dbus.Interface(self.bus.get_object(NAME_PREFIX + "Driver", CHANNEL, introspect=False),
                                     NAME_PREFIX + "Driver")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.bus.close()

    def places(self):
        return [[(float(x), float(y)) for _, x, y in contacts] for _, _, _, _, contacts in self.frames]


class DriverSimulator(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())

    def send_from_elsewhere(self, message_id, payload):
        """Sends to the driver from a process that is not the pane's."""
        status, _, errors = self.world.run(
            "busctl", f"--address={self.world.address}", "--auto-start=no", "call", NAME_PREFIX + DRIVER,
            "/com/kelvo/TouchDisplay/MessagePort", "com.kelvo.TouchDisplay.MessagePort", "Send", "iay",
            message_id, *self.bytes_of(payload))
        self.assertEqual((status, errors), (0, ""))

    @staticmethod
    def bytes_of(payload):
        data = plistlib.dumps(payload)
        return [str(len(data)), *(str(byte) for byte in data)]

    def test_begins_with_the_displays_named_and_the_driver_on(self):
        simulator = Simulator(self.world, "--connect", "Desk", "--connect", "Wall")

        self.assertEqual(json.loads(simulator.output.lines[0]), {"devices": ["Desk", "Wall"], "enabled": True})
        self.assertEqual(self.world.plist("Utilities.plist"),
                         {"SelectedMenuItem": 0, "IsShowStatuMenu": True, "DriverEnable": True,
                          "CurrentDeviceType": ["Desk", "Wall"], "VerboseLog": False})
        defaults = {"DoubleClickRange": 32, "DoubleClickRate": 0.5, "RotateMode": False, "DriverVersion": "0.8.0.3"}
        for name in ("Settings_Desk.plist", "Settings_Wall.plist"):
            self.assertEqual(self.world.plist(name), defaults)
            self.assertIs(self.world.plist(name)["RotateMode"], False)

    def test_runs_where_its_streams_are_closed(self):
        process = self.world.start("sh", "-c", "exec \"$0\" run --connect Desk <&- >&-", SIMULATOR)
        wait_until(lambda: self.world.run(SIMULATOR, "status")[0] == 0, "the simulator to answer")
        self.world.send(DRIVER, 3, {"RotateMode": 2, "DeviceName": "Desk"})

        wait_until(lambda: self.world.plist("Settings_Desk.plist")["RotateMode"] == 2, "the setting to be stored")
        process.terminate()
        self.assertEqual(process.wait(), 0)

    def test_writes_its_files_before_it_tells_the_pane(self):
        simulator = Simulator(self.world)
        found = []

        def look(message_id, data):
            utilities = self.world.plist("Utilities.plist")
            found.append((message_id, plistlib.loads(data), utilities["CurrentDeviceType"], utilities["DriverEnable"],
                          (self.world.preferences / "Settings_Desk.plist").exists()))

        with Peer(self.world, PANE, look):
            for words in (("connect", "Desk"), ("disable",), ("enable",), ("disconnect", "Desk"), ("show-tab", "258")):
                self.assertEqual(simulator.command(*words)[0], 0)

        self.assertEqual(found, [
            (7, {"IsConnected": True}, ["Desk"], True, True),
            (4, {"DriverEnable": False}, ["Desk"], False, True),
            (4, {"DriverEnable": True}, ["Desk"], True, True),
            (7, {"IsConnected": False}, [], True, True),
            (8, {"SelectedMenuItem": 258}, [], True, True)])

    def test_prints_each_message_and_stores_it_for_the_display_it_is_for(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        sent = [
            (0, {"DoubleClickRate": 0.25}),
            (1, {"DoubleClickRange": 40.0}),
            (2, {"GestureArray": [{"Name": "AppExpos\u00e9", "IsEnable": False}]}),
            (3, {"RotateMode": 2}),
            (5, {"RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 2.0}}),
            (6, {"AutoCalibration": False, "ManualCalibration": {"OSDWidth": 1024.0, "OSDHeight": 768.0}})]
        stored = {"DriverVersion": "0.8.0.3"}
        for message_id, items in sent:
            self.assertEqual(self.world.send(DRIVER, message_id, {**items, "DeviceName": "Desk"}), b"")
            stored.update(items)

        messages = simulator.messages(len(sent))
        self.assertEqual([(m["id"], m["payload"]) for m in messages],
                         [(message_id, {**items, "DeviceName": "Desk"}) for message_id, items in sent])
        self.assertEqual(messages[0]["name"], "kMessageIDForDoubleClickRate")
        self.assertIsInstance(messages[1]["payload"]["DoubleClickRange"], float)
        self.assertEqual(self.world.plist("Settings_Desk.plist"), stored)

    def test_stores_nothing_for_a_display_that_is_not_connected(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        before = self.world.plist("Settings_Desk.plist")
        for payload in ({"RotateMode": 1, "DeviceName": "Wall"}, {"RotateMode": 1, "DeviceName": "../Desk"},
                        {"RotateMode": 1}, b"not a property list"):
            self.world.send(DRIVER, 3, payload)

        simulator.messages(4)
        self.assertEqual(self.world.plist("Settings_Desk.plist"), before)
        self.assertEqual(sorted(file.name for file in self.world.preferences.iterdir()),
                         ["Settings_Desk.plist", "Utilities.plist"])

    def test_keeps_what_else_the_files_hold(self):
        self.world.set_plist("Utilities.plist", {"Own": 7, "DriverEnable": False})
        simulator = Simulator(self.world)

        self.assertEqual(json.loads(simulator.output.lines[0]), {"devices": [], "enabled": False})
        self.assertEqual(self.world.plist("Utilities.plist"),
                         {"Own": 7, "DriverEnable": False, "CurrentDeviceType": []})

    def test_stores_what_one_finger_is_and_keeps_what_else_the_file_holds(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        before = self.world.plist("Settings_Desk.plist")
        for mode in ("pointer", "touch"):
            self.assertEqual(simulator.command("finger", "Desk", mode)[0], 0)
            self.assertEqual(self.world.plist("Settings_Desk.plist"), {**before, "FingerMode": mode})

    def test_gives_the_contacts_of_a_display_to_its_watcher_alone(self):
        simulator = Simulator(self.world, "--connect", "Desk", "--connect", "Wall")
        with Watcher(self.world) as watcher, Watcher(self.world) as other:
            watcher.driver.Watch("Desk")
            other.driver.Watch("Wall")
            for words in (("Desk", "0.5,0.25", "1,0"), ("Wall", "0,1"), ("Desk",)):
                self.assertEqual(simulator.command("contacts", *words)[0], 0)
            wait_until(lambda: len(watcher.frames) == 2 and other.frames, "the frames")

            display, begin, width, height, contacts = watcher.frames[0]
            self.assertEqual((display, width, height), ("Desk", 531.0, 299.0))
            self.assertEqual(contacts, [(1, 0.5, 0.25), (2, 1.0, 0.0)])
            self.assertEqual(watcher.frames[1][0], "Desk")
            self.assertGreater(watcher.frames[1][1], begin)
            self.assertLessEqual(watcher.frames[1][1], time.monotonic_ns() // 1000)
            self.assertEqual(watcher.places()[1], [])
            self.assertEqual([(frame[0], frame[4]) for frame in other.frames], [("Wall", [(1, 0.0, 1.0)])])

    def test_gives_no_contacts_to_somebody_who_does_not_watch_or_no_longer_does(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        with Watcher(self.world) as watcher, Watcher(self.world) as other:
            watcher.driver.Watch("Desk")
            watcher.driver.Unwatch()
            simulator.command("contacts", "Desk", "0.1,0.1")
            watcher.driver.Watch("Desk")
            watcher.driver.Watch("Desk")
            simulator.command("contacts", "Desk", "0.2,0.2")
            wait_until(lambda: watcher.frames, "the frame")
            self.assertEqual(watcher.places(), [[(0.2, 0.2)]])
            self.assertEqual(other.frames, [])

    def test_a_display_has_one_watcher_until_that_leaves_the_bus(self):
        Simulator(self.world, "--connect", "Desk")
        with Watcher(self.world) as other:
            with Watcher(self.world) as watcher:
                watcher.driver.Watch("Desk")
                with self.assertRaisesRegex(dbus.DBusException, "is already being watched"):
                    other.driver.Watch("Desk")

            def can_watch():
                try:
                    other.driver.Watch("Desk")
                    return True
                except dbus.DBusException:
                    return False
            wait_until(can_watch, "the display to be free again")

    def test_only_a_connected_display_of_a_driver_that_is_on_can_be_watched(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        with Watcher(self.world) as watcher:
            with self.assertRaisesRegex(dbus.DBusException, '"Wall" is not connected'):
                watcher.driver.Watch("Wall")
            simulator.command("disable")
            with self.assertRaisesRegex(dbus.DBusException, "switched off") as caught:
                watcher.driver.Watch("Desk")
            self.assertEqual(caught.exception.get_dbus_name(), NAME_PREFIX + "Driver.Refused")

    def test_tells_the_watcher_when_there_is_nothing_more_to_watch(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        with Watcher(self.world) as watcher:
            for words, back in ((("disable",), ("enable",)), (("disconnect", "Desk"), ("connect", "Desk"))):
                watcher.ended.clear()
                watcher.driver.Watch("Desk")
                simulator.command(*words)
                wait_until(lambda: watcher.ended, "the end of the watch")
                self.assertEqual(watcher.ended, ["Desk"])
                simulator.command(*back)
                simulator.command("contacts", "Desk", "0.5,0.5")
            watcher.driver.Watch("Desk")
            simulator.command("contacts", "Desk", "0.1,0.1")
            wait_until(lambda: watcher.frames, "the frame of the new watch")
            self.assertEqual(watcher.places(), [[(0.1, 0.1)]])

    def test_tells_the_pane_of_what_another_process_changed(self):
        Simulator(self.world, "--connect", "Desk")
        with Peer(self.world, PANE, lambda *_: rates.append(self.world.plist("Settings_Desk.plist")["DoubleClickRate"])
                  ) as pane:
            rates = []
            self.send_from_elsewhere(0, {"DoubleClickRate": 0.25, "DeviceName": "Desk"})
            wait_until(lambda: pane.received, "the pane to be told")
            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                             [(7, {"IsConnected": True})])
            # It reads the file when it is told, so the file comes first.
            self.assertEqual(rates, [0.25])

    def test_never_tells_the_pane_of_its_own_changes(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        with Peer(self.world, PANE) as pane:
            for rate in (0.2, 0.3):
                self.world.send(DRIVER, 0, {"DoubleClickRate": rate, "DeviceName": "Desk"})
            # What is told is told in order, so that nothing can still come before this.
            self.send_from_elsewhere(3, {"RotateMode": 1, "DeviceName": "Desk"})
            wait_until(lambda: pane.received, "the pane to be told")
            simulator.command("show-tab", "2")
            self.assertEqual([message_id for message_id, _ in pane.received], [7, 8])

    def test_tells_the_pane_again_when_a_change_of_its_own_crossed_with_the_telling(self):
        simulator = Simulator(self.world, "--connect", "Desk")

        def send_own(*_):
            if len(pane.received) == 1:
                self.world.send(DRIVER, 0, {"DoubleClickRate": 0.3, "DeviceName": "Desk"})

        with Peer(self.world, PANE, send_own) as pane:
            self.send_from_elsewhere(0, {"DoubleClickRate": 0.2, "DeviceName": "Desk"})
            wait_until(lambda: len(pane.received) == 2, "the pane to be told again")
            self.assertEqual(self.world.plist("Settings_Desk.plist")["DoubleClickRate"], 0.3)
            simulator.command("show-tab", "2")
            self.assertEqual([message_id for message_id, _ in pane.received], [7, 7, 8])

    def test_a_pane_that_hangs_holds_up_neither_messages_nor_commands(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        pane = self.world.start("/usr/bin/python3", "-c", HUNG_PANE, self.world.address)
        wait_until(lambda: self.world.has_owner(PANE), "the pane's port")
        pane.send_signal(signal.SIGSTOP)
        for rate in (0.2, 0.3, 0.4):
            self.send_from_elsewhere(0, {"DoubleClickRate": rate, "DeviceName": "Desk"})
            wait_until(lambda: self.world.plist("Settings_Desk.plist")["DoubleClickRate"] == rate, "the change")
            self.assertEqual(simulator.command("status")[0], 0)

    def test_tells_the_pane_nothing_of_changes_where_it_would_ask_which_display_is_meant(self):
        simulator = Simulator(self.world, "--connect", "Desk", "--connect", "Wall")
        with Peer(self.world, PANE) as pane:
            self.send_from_elsewhere(3, {"RotateMode": 1, "DeviceName": "Desk"})
            simulator.messages(1)
            simulator.command("show-tab", "2")
            self.assertEqual([message_id for message_id, _ in pane.received], [8])

            simulator.command("disconnect", "Wall")
            self.send_from_elsewhere(3, {"RotateMode": 2, "DeviceName": "Desk"})
            wait_until(lambda: len(pane.received) == 3, "the pane to be told")
            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received[1:]],
                             [(7, {"IsConnected": False}), (7, {"IsConnected": True})])

    def test_tells_the_pane_nothing_of_messages_that_change_nothing(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        with Peer(self.world, PANE) as pane:
            for message_id, payload in ((3, {"RotateMode": 1, "DeviceName": "Wall"}), (4, {"DeviceName": "Desk"})):
                self.send_from_elsewhere(message_id, payload)
            simulator.messages(2)
            self.send_from_elsewhere(3, {"RotateMode": 1, "DeviceName": "Desk"})
            wait_until(lambda: pane.received, "the pane to be told")
            simulator.command("show-tab", "2")
            self.assertEqual([message_id for message_id, _ in pane.received], [7, 8])

    def test_takes_a_driver_switch_of_an_unfit_kind_for_a_missing_one(self):
        for unfit in ([True], {"on": True}, b"1"):
            self.world.set_plist("Utilities.plist", {"DriverEnable": unfit})
            simulator = Simulator(self.world)
            self.assertEqual(json.loads(simulator.output.lines[0]), {"devices": [], "enabled": True})
            simulator.process.terminate()
            simulator.process.wait()

    def test_says_what_is_wrong_and_how_to_mend_it(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        for words, hint in (
                (("connect", "Desk"), 'see "status"'), (("disconnect", "Wall"), 'see "status"'),
                (("connect", "a/b"), 'neither "/"'), (("connect", ""), "1 to 200 bytes"),
                (("connect",), "see --help"), (("enable", "now"), "see --help"), (("dance",), "see --help"),
                (("show-tab", "two"), "0 to 3"), (("hang", "-1"), "up to 600"), (("hang", "soon"), "up to 600"),
                (("system-gesture", "AppExpos\u00e9", "off"),
                 "AppExpose, ShowDesktop, MissionControl, Launchpad, SwipeBetweenPages"),
                (("system-gesture", "Launchpad", "maybe"), '"on" or "off"'),
                (("system-gesture", "Launchpad"), "see --help"),
                (("finger", "Desk", "mouse"), '"touch" or "pointer"'), (("finger", "Wall", "touch"), 'see "status"'),
                (("finger", "Desk"), "see --help"), (("record", "Desk", "/tmp/x"), "no fingers to record"),
                (("record", "Desk"), "not being recorded"), (("record", "Wall", "/tmp/x"), 'see "status"'),
                (("contacts", "Wall", "0,0"), 'see "status"'), (("contacts", "Desk", "0.5"), "two numbers from 0 to 1"),
                (("contacts", "Desk", "0.5,1.01"), "two numbers from 0 to 1"),
                (("contacts", "Desk", "0.5,nan"), "two numbers from 0 to 1")):
            with self.subTest(words=words):
                status, output, errors = simulator.command(*words)
                self.assertEqual((status, output), (1, ""))
                self.assertIn(hint, errors)
        self.assertEqual(json.loads(simulator.command("status")[1]), {"devices": ["Desk"], "enabled": True})

    def test_switches_a_system_gesture_and_keeps_what_else_the_file_holds(self):
        self.world.set_plist(DOCK, {"tilesize": 48, "showLaunchpadGestureEnabled": True})
        self.world.set_plist(GLOBAL, {"AppleEnableSwipeNavigateWithScrolls": False})
        simulator = Simulator(self.world)

        self.assertEqual(simulator.command("system-gesture", "Launchpad", "off")[0], 0)
        self.assertEqual(self.world.plist(DOCK), {"tilesize": 48, "showLaunchpadGestureEnabled": False})
        for name, file, key in (
                ("AppExpose", DOCK, "showAppExposeGestureEnabled"),
                ("ShowDesktop", DOCK, "showDesktopGestureEnabled"),
                ("MissionControl", DOCK, "showMissionControlGestureEnabled"),
                ("Launchpad", DOCK, "showLaunchpadGestureEnabled"),
                ("SwipeBetweenPages", GLOBAL, "AppleEnableSwipeNavigateWithScrolls")):
            with self.subTest(name=name):
                status, output, _ = simulator.command("system-gesture", name, "on")
                self.assertEqual((status, json.loads(output)[name]), (0, True))
                self.assertIs(self.world.plist(file)[key], True)
        self.assertEqual(self.world.plist(DOCK), {"tilesize": 48, **ALL_DOCK_GESTURES_ON})
        self.assertEqual(self.world.plist(GLOBAL), ALL_GLOBAL_GESTURES_ON)

    def test_tells_which_system_gestures_are_on(self):
        simulator = Simulator(self.world)

        self.assertEqual(json.loads(simulator.command("system-gesture", "ShowDesktop", "off")[1]),
                         {"AppExpose": True, "ShowDesktop": False, "MissionControl": True, "Launchpad": True,
                          "SwipeBetweenPages": True})

    def test_makes_the_systems_files_and_their_folder_when_they_are_missing(self):
        simulator = Simulator(self.world)
        shutil.rmtree(self.world.home / "Library")

        simulator.command("system-gesture", "SwipeBetweenPages", "off")

        with open(self.world.home / "Library/Preferences/.GlobalPreferences.plist", "rb") as file:
            self.assertEqual(plistlib.load(file), {"AppleEnableSwipeNavigateWithScrolls": False})

    def test_makes_the_systems_files_that_are_missing_with_all_gestures_on_and_changes_none_that_is_there(self):
        self.world.set_plist(GLOBAL, {"AppleEnableSwipeNavigateWithScrolls": False})
        simulator = Simulator(self.world, "--connect", "Desk")

        self.assertEqual(json.loads(simulator.output.lines[0])["devices"], ["Desk"])
        self.assertEqual(self.world.plist(DOCK), ALL_DOCK_GESTURES_ON)
        self.assertEqual(self.world.plist(GLOBAL), {"AppleEnableSwipeNavigateWithScrolls": False})

    def test_leaves_a_damaged_file_of_the_system_as_it_is(self):
        simulator = Simulator(self.world)
        file = self.world.preferences / DOCK
        file.write_bytes(b"<plist><dict>")

        status, output, errors = simulator.command("system-gesture", "Launchpad", "on")

        self.assertEqual((status, output), (1, ""))
        self.assertIn("repair or remove it", errors)
        self.assertEqual(file.read_bytes(), b"<plist><dict>")

    def test_an_option_that_it_does_not_have_names_those_it_has(self):
        for words in (("run", "--connect"), ("run", "now"), ("--verbose",)):
            with self.subTest(words=words):
                status, _, errors = self.world.run(SIMULATOR, *words)
                self.assertEqual(status, 1)
                self.assertIn("only --connect NAME", errors)

    def test_a_command_without_a_simulator_names_the_fix(self):
        status, _, errors = self.world.run(SIMULATOR, "status")
        self.assertEqual(status, 1)
        self.assertIn('start one with "kelvo-touch-driver-sim run"', errors)

    def test_a_second_one_names_the_reason(self):
        Simulator(self.world)
        status, _, errors = self.world.run(SIMULATOR, "run")
        self.assertEqual(status, 1)
        self.assertIn("another driver is running", errors)

    def test_hangs_for_as_long_as_it_is_told(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        begin = time.monotonic()
        self.assertEqual(simulator.command("hang", "1.5")[:2], (0, "hanging for 1.5 s\n"))
        self.assertEqual(json.loads(simulator.command("status")[1]), {"devices": ["Desk"], "enabled": True})
        self.assertGreaterEqual(time.monotonic() - begin, 1.5)

    def test_can_be_ended_while_it_hangs(self):
        simulator = Simulator(self.world)
        self.assertEqual(simulator.command("hang", "600")[0], 0)
        simulator.process.terminate()
        wait_until(lambda: simulator.process.poll() is not None, "the simulator's end")
        self.assertEqual(simulator.process.returncode, 0)

    def test_begins_and_ends_without_displays_and_tells_the_pane(self):
        self.world.set_plist("Utilities.plist", {"CurrentDeviceType": ["Stale"], "DriverEnable": True})
        with Peer(self.world, PANE) as pane:
            simulator = Simulator(self.world, "--connect", "Desk")
            simulator.process.terminate()
            wait_until(lambda: simulator.process.poll() is not None, "the simulator's end")

            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                             [(7, {"IsConnected": False}), (7, {"IsConnected": True}), (7, {"IsConnected": False})])
        self.assertEqual(self.world.plist("Utilities.plist")["CurrentDeviceType"], [])

    def test_says_so_when_a_file_cannot_be_written(self):
        simulator = Simulator(self.world)
        (self.world.preferences / "Utilities.plist").write_bytes(b"damaged")

        status, _, errors = simulator.command("connect", "Desk")

        self.assertEqual(status, 1)
        self.assertIn("repair or remove", errors)
        self.assertEqual((self.world.preferences / "Utilities.plist").read_bytes(), b"damaged")

    def test_is_found_again_on_a_bus_that_came_back(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        self.world.stop_bus()
        self.world.start_bus()
        wait_until(lambda: self.world.has_owner("Driver"), "the simulator on the new bus")
        self.assertEqual(json.loads(simulator.command("status")[1]), {"devices": ["Desk"], "enabled": True})

    def test_ends_by_a_signal_with_success(self):
        simulator = Simulator(self.world)
        simulator.process.terminate()
        wait_until(lambda: simulator.process.poll() is not None, "the simulator's end")
        self.assertEqual(simulator.process.returncode, 0)
        self.assertFalse(self.world.has_owner(DRIVER))

    def test_help_names_every_command(self):
        status, output, _ = self.world.run(SIMULATOR, "--help")
        self.assertEqual(status, 0)
        for word in ("run", "connect", "disconnect", "enable", "disable", "show-tab", "system-gesture", "hang", "status",
                     "finger", "record", "contacts", "--connect"):
            self.assertIn(word, output)


class Fingers(unittest.TestCase):
    """What the running simulator makes of fingers, by the settings that it was sent last."""

    def setUp(self):
        self.world = self.enterContext(World())
        self.simulator = Simulator(self.world, "--connect", "Desk")
        self.looked_at = 1

    def lay(self, *places, on="Desk"):
        self.assertEqual(self.simulator.command("contacts", on, *places)[0], 0)

    def steps(self, count):
        """The next steps that are given out, each as its device, the step and a button, once there are so many."""
        def given():
            lines = map(json.loads, self.simulator.output.read()[self.looked_at:])
            return [line for line in lines if "device" in line]
        wait_until(lambda: len(given()) >= count, f"{count} steps")
        steps = given()
        self.looked_at = len(self.simulator.output.lines)
        return [(step["device"], step["step"], *([step["button"]] if "button" in step else [])) for step in steps]

    def send(self, message_id, **items):
        self.world.send(DRIVER, message_id, {**items, "DeviceName": "Desk"})

    def test_one_finger_is_a_touch_where_it_is(self):
        self.lay("0.25,0.5")
        self.lay()
        self.assertEqual(self.steps(2), [("touch screen", "down"), ("touch screen", "up")])
        down = json.loads(self.simulator.output.lines[1])
        self.assertEqual((down["display"], down["x"], down["y"]), ("Desk", 0.25, 0.5))

    def test_one_finger_is_the_pointer_as_soon_as_that_was_said(self):
        self.assertEqual(self.simulator.command("finger", "Desk", "pointer")[0], 0)
        self.lay("0.25,0.5")
        self.lay()
        self.assertEqual(self.steps(3), [("pointer", "move"), ("pointer", "down", "left"), ("pointer", "up", "left")])

    def test_a_long_press_is_a_right_click_as_soon_as_the_pane_said_so_and_comes_by_itself(self):
        self.send(5, RightClick={"RightClickIsEnable": True, "RightClickTimeIntelval": 0.3})
        self.simulator.messages(1)
        self.looked_at = 2
        self.lay("0.25,0.5")
        steps = self.steps(4)
        self.assertEqual(steps, [("touch screen", "down"), ("touch screen", "cancel"), ("pointer", "move"),
                                 ("pointer", "down", "right")])
        self.lay()
        self.assertEqual(self.steps(1), [("pointer", "up", "right")])

    def test_what_the_file_holds_counts_when_the_display_connects(self):
        self.world.set_plist("Settings_Wall.plist", {"FingerMode": "pointer"})
        self.simulator.command("connect", "Wall")
        self.lay("0.5,0.5", on="Wall")
        self.lay(on="Wall")
        self.assertEqual(self.steps(3)[1:], [("pointer", "down", "left"), ("pointer", "up", "left")])

    def test_a_calibration_counts_from_the_next_finger_on_and_ends_with_its_file(self):
        points = self.world.preferences / "advanceCalibrationPoints.plist"
        places = []
        for write in (lambda: self.world.set_plist(points.name, {"Desk": {"Matrix": [1.0, 0.0, 0.25, 0.0, 0.5, 0.0]}}),
                      lambda: points.write_bytes(b"damaged"),
                      lambda: self.world.set_plist(points.name, {"Desk": {"Matrix": [0.5, 0.0, 0.0, 0.0, 1.0, 0.0]}}),
                      points.unlink):
            write()
            self.lay("0.25,0.5")
            self.lay()
            self.steps(2)
            down = [json.loads(line) for line in self.simulator.output.lines if '"down"' in line][-1]
            places.append((down["x"], down["y"]))
        self.assertEqual(places, [(0.5, 0.25), (0.25, 0.5), (0.125, 0.5), (0.25, 0.5)])

    def test_a_switch_of_the_systems_that_another_program_turns_counts_from_the_next_hand_on(self):
        def three_fingers_up():
            self.lay("0.5,0.8", "0.55,0.8", "0.6,0.8")
            time.sleep(0.15)  # a hand that has landed as a whole
            for y in ("0.75", "0.7", "0.6", "0.5"):
                self.lay(*(f"{x},{y}" for x in ("0.5", "0.55", "0.6")))
            self.lay()
            lines = list(map(json.loads, self.simulator.output.read()[self.looked_at:]))
            self.looked_at += len(lines)
            return [line["gesture"] for line in lines if line.get("step") == "begin"]
        self.assertEqual(three_fingers_up(), ["MissionControl"])
        self.world.set_plist(DOCK, {**ALL_DOCK_GESTURES_ON, "showMissionControlGestureEnabled": False})
        self.assertEqual(three_fingers_up(), [])
        self.world.set_plist(DOCK, ALL_DOCK_GESTURES_ON)
        self.assertEqual(three_fingers_up(), ["MissionControl"])

    def test_a_display_that_is_watched_gives_nothing_out_and_lifts_what_is_down(self):
        with Watcher(self.world) as watcher:
            self.lay("0.5,0.5")
            watcher.driver.Watch("Desk")
            self.assertEqual([step for _, step in self.steps(2)], ["down", "cancel"])
            self.lay("0.6,0.6")
            self.lay()
            wait_until(lambda: len(watcher.frames) == 2, "the frames")
            watcher.driver.Unwatch()
            self.lay("0.7,0.7")
            self.lay()
            self.assertEqual(self.steps(2), [("touch screen", "down"), ("touch screen", "up")])

    def test_a_watcher_that_leaves_gives_the_display_back(self):
        with Watcher(self.world) as watcher:
            watcher.driver.Watch("Desk")

        def gives():
            self.lay("0.5,0.5")
            self.lay()
            return [line for line in self.simulator.output.read()[1:] if '"touch screen"' in line]
        wait_until(gives, "the display to give out again")

    def test_nothing_stays_down_when_the_driver_is_switched_off_or_the_display_goes(self):
        for words in (("disable",), ("disconnect", "Desk")):
            self.lay("0.5,0.5")
            self.simulator.command(*words)
            self.assertEqual([step for _, step in self.steps(2)], ["down", "cancel"], words)
            self.simulator.command("enable")
            self.simulator.command("contacts", "Desk")

    def test_a_driver_that_is_off_gives_nothing_out(self):
        self.simulator.command("disable")
        self.lay("0.5,0.5")
        self.lay()
        self.simulator.command("enable")
        self.lay("0.5,0.5")
        self.lay()
        self.assertEqual(self.steps(2), [("touch screen", "down"), ("touch screen", "up")])


class Recorded(unittest.TestCase):
    """Recordings that are played without bus and running simulator."""

    PANEL = "EP0430M09"
    # Of this one the recording itself does not describe the panel.
    UNDESCRIBED, DRAG_UNDESCRIBED = "ELAN CANDO Windows7", "ELAN CANDO Windows7.1-finger-drag-up-down.events"
    SCROLL, DRAG, FOUR = (f"EP0430M09.{fingers}.events" for fingers in (
        "2-finger-scroll-down", "1-finger-drag-up-down", "4-finger-drag-down"))
    MISSION_CONTROL_WITH_FOUR = {"GestureArray": [
        {"Name": "MissionControl", "Descriptor": ["SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"],
         "SelectedIndex": 1, "IsEnable": True, "MoreGesture": True}]}

    def setUp(self):
        self.world = self.enterContext(World())
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"

    def play(self, recording, *options):
        status, output, errors = self.world.run(SIMULATOR, "touch", RECORDINGS / recording, *options)
        self.assertEqual((status, errors), (0, ""))
        return [json.loads(line) for line in output.splitlines()]

    def gestures(self, *words):
        return [(step["gesture"], step["step"]) for step in self.play(*words) if step["device"] == "gesture"]

    def refuse(self, path, hint, *options):
        status, output, errors = self.world.run(SIMULATOR, "touch", path, *options)
        self.assertEqual((status, output, errors.count("\n")), (1, "", 1), errors)
        self.assertIn(hint, errors)

    def copy(self, recording, name, change=lambda text: text):
        """A recording, or another file of them, in a folder of its own."""
        path = self.world.folder / name
        path.write_text(change((RECORDINGS / recording).read_text(encoding="utf-8")), encoding="utf-8")
        return path

    def test_prints_what_would_be_given_out(self):
        steps = self.play(self.SCROLL)
        self.assertEqual(self.gestures(self.SCROLL), [("Scroll", "begin"), ("Scroll", "end")])
        self.assertEqual({step["device"] for step in steps}, {"touch screen", "gesture", "touchpad", "pointer"})
        self.assertEqual([step["ms"] for step in steps], sorted(step["ms"] for step in steps))
        for step in steps:
            if "x" in step:
                self.assertIn(step["device"], ("touch screen", "pointer"))
                self.assertTrue(0.0 <= step["x"] <= 1.0 and 0.0 <= step["y"] <= 1.0, step)
            if "x_mm" in step:
                self.assertEqual(step["device"], "touchpad")
                self.assertTrue(100.0 <= step["x_mm"] <= 1500.0 and 100.0 <= step["y_mm"] <= 1500.0, step)
        self.assertTrue(any("x" in step for step in steps) and any("x_mm" in step for step in steps))
        for device in ("touch screen", "touchpad"):
            counts = [sum(step["step"] in ends for step in steps if step["device"] == device)
                      for ends in (("down",), ("up", "cancel"))]
            self.assertEqual(counts[0], counts[1], device)

    def test_times_count_from_the_first_event(self):
        text = (RECORDINGS / self.DRAG).read_text(encoding="utf-8")
        self.assertEqual(self.play(self.DRAG)[0]["ms"], 0.0)
        later = re.sub(r"^E: \d+", lambda event: f"E: {int(event[0][3:]) + 1700000000}", text, flags=re.MULTILINE)
        (self.world.folder / "later.events").write_text(later, encoding="utf-8")
        self.assertEqual(self.play(self.world.folder / "later.events"), self.play(self.DRAG))

    def test_what_is_down_at_the_end_comes_up(self):
        text = (RECORDINGS / self.DRAG).read_text(encoding="utf-8").splitlines(keepends=True)
        cut = self.world.folder / "cut.events"
        cut.write_text("".join(text[:len(text) * 9 // 10]), encoding="utf-8")
        self.assertEqual([step["step"] for step in self.play(cut)][-1], "cancel")
        self.assertEqual([step["step"] for step in self.play(cut, "--keep-touches")][-1], "up")
        self.assertEqual([step["step"] for step in self.play(cut, "--pointer")][-1], "up")

    def test_writes_no_file(self):
        self.play(self.SCROLL)
        self.assertEqual([path for path in self.world.home.rglob("*") if path.is_file()], [])

    def test_goes_by_the_settings_of_the_display_that_was_recorded(self):
        self.assertEqual(self.gestures(self.FOUR), [])
        self.world.set_plist(f"Settings_{self.PANEL}.plist", self.MISSION_CONTROL_WITH_FOUR)
        self.assertEqual(self.gestures(self.FOUR), [("MissionControl", "begin"), ("MissionControl", "end")])
        self.world.set_plist(DOCK, {**ALL_DOCK_GESTURES_ON, "showMissionControlGestureEnabled": False})
        self.assertEqual(self.gestures(self.FOUR), [])

    def test_goes_by_the_settings_of_the_display_that_is_named(self):
        self.world.set_plist(f"Settings_{self.PANEL}.plist", self.MISSION_CONTROL_WITH_FOUR)
        self.world.set_plist("Settings_Desk.plist", {"FingerMode": "pointer"})
        self.assertEqual(self.gestures(self.FOUR, "--display", "Desk"), [])
        self.assertEqual({step["device"] for step in self.play(self.DRAG, "--display", "Desk")}, {"pointer"})

    def test_goes_by_the_calibration_of_the_display(self):
        def place(*options):
            return next((step["x"], step["y"]) for step in self.play(self.DRAG, *options) if step["step"] == "down")
        x, y = place()
        self.world.set_plist("Settings_Desk.plist", {})
        self.world.set_plist("advanceCalibrationPoints.plist", {
            self.PANEL: {"Matrix": [0.5, 0.0, 0.0, 0.0, 1.0, 0.0]}, "Desk": {"Matrix": [-1.0, 0.0, 1.0, 0.0, 1.0, 0.0]}})
        for found, expected in ((place(), (x / 2, y)), (place("--display", "Desk"), (1 - x, y))):
            self.assertAlmostEqual(found[0], expected[0], delta=2e-4)
            self.assertAlmostEqual(found[1], expected[1], delta=2e-4)

    def test_takes_one_finger_for_the_pointer_when_told(self):
        self.assertEqual({step["device"] for step in self.play(self.DRAG)}, {"touch screen"})
        steps = self.play(self.DRAG, "--pointer")
        self.assertEqual({step["device"] for step in steps}, {"pointer"})
        self.assertEqual([step["step"] for step in steps if "button" in step], ["down", "up"])

    def test_takes_no_touch_back_when_told(self):
        self.assertIn("cancel", {step["step"] for step in self.play(self.SCROLL)})
        self.assertNotIn("cancel", {step["step"] for step in self.play(self.SCROLL, "--keep-touches")})

    def test_the_panels_description_may_be_in_the_file(self):
        description = (RECORDINGS / f"{self.UNDESCRIBED}.desc").read_text(encoding="utf-8")
        whole = self.copy(self.DRAG_UNDESCRIBED, "whole", lambda text: description + text)
        self.assertEqual(self.play(whole), self.play(self.DRAG_UNDESCRIBED))

    def test_the_description_beside_it_is_that_of_the_longest_name(self):
        self.copy(f"{self.UNDESCRIBED}.desc", f"{self.UNDESCRIBED}.desc")
        for name in ("ELAN.desc", f"{self.UNDESCRIBED}.3.desc", "ELAN CANDO Windows7.2-fingers.desc.old"):
            (self.world.folder / name).write_text("A: zz\n", encoding="utf-8")
        moved = self.copy(self.DRAG_UNDESCRIBED, f"{self.UNDESCRIBED}.2-fingers.events")
        expected = self.play(self.DRAG_UNDESCRIBED)
        self.assertEqual(self.play(moved), expected)
        status, output, _ = self.world.run("env", f"--chdir={self.world.folder}", pathlib.Path(SIMULATOR).resolve(),
                                           "touch", moved.name)
        self.assertEqual((status, len(output.splitlines())), (0, len(expected)))

    def test_says_what_is_wrong_with_a_recording(self):
        damaged = self.copy(f"{self.PANEL}.desc", "damaged", lambda text: text + "E: 0.000001 0003 0039 1\nE: 0.1 0 0\n")
        lines = damaged.read_text(encoding="utf-8").count("\n")
        self.refuse(damaged, f"damaged: line {lines}: ")
        alone = self.copy(self.DRAG_UNDESCRIBED, "alone.events")
        self.refuse(alone, "does not describe its panel")
        (self.world.folder / "alone.desc").write_text("N: x\nA: zz 0 1 0 0\n", encoding="utf-8")
        self.refuse(alone, "alone.desc: line 2: ")
        pad = self.copy(f"{self.PANEL}.desc", "pad", lambda text: text.replace("P: 02", "P: 01"))
        self.refuse(pad, "not a recording of a touchscreen")
        self.refuse(RECORDINGS / f"{self.PANEL}.desc", "contains no events")
        self.refuse(self.world.folder / "nowhere", "cannot be read")
        self.refuse(self.world.folder, "cannot be read")

    def test_says_what_is_wrong_with_what_was_asked(self):
        recording = RECORDINGS / self.SCROLL
        self.refuse(recording, 'no settings of "Desk"', "--display", "Desk")
        self.refuse(recording, '1 to 200 bytes', "--display", "../Desk")
        self.refuse(recording, "see --help", "--display")
        self.refuse(recording, "see --help", "--loud")
        self.refuse(recording, "see --help", recording)
        self.world.set_plist("Settings_Desk.plist", {})
        (self.world.preferences / "Settings_Desk.plist").write_bytes(b"damaged")
        self.refuse(recording, "repair or remove it", "--display", "Desk")


if __name__ == "__main__":
    unittest.main()
