"""The driver simulator as a process: its files, its messages to the pane, its command line."""

import json
import plistlib
import sys
import unittest

from peers import Lines, Peer, World, wait_until

SIMULATOR = sys.argv.pop(1)

DRIVER = "TouchDisplayDriverMessagePort"
PANE = "PreferenceMessagePort"


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


class DriverSimulator(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())

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

    def test_says_what_is_wrong_and_how_to_mend_it(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        for words, hint in (
                (("connect", "Desk"), 'see "status"'), (("disconnect", "Wall"), 'see "status"'),
                (("connect", "a/b"), 'none of them "/"'), (("connect", ""), "1 to 200 bytes"),
                (("connect",), "see --help"), (("enable", "now"), "see --help"), (("dance",), "see --help"),
                (("show-tab", "two"), "0 to 3"), (("hang", "-1"), "up to 600"), (("hang", "soon"), "up to 600")):
            with self.subTest(words=words):
                status, output, errors = simulator.command(*words)
                self.assertEqual((status, output), (1, ""))
                self.assertIn(hint, errors)
        self.assertEqual(json.loads(simulator.command("status")[1]), {"devices": ["Desk"], "enabled": True})

    def test_a_command_without_a_simulator_names_the_fix(self):
        status, _, errors = self.world.run(SIMULATOR, "status")
        self.assertEqual(status, 1)
        self.assertIn('start one with "kelvo-touch-driver-sim run"', errors)

    def test_a_second_one_names_the_reason(self):
        Simulator(self.world)
        status, _, errors = self.world.run(SIMULATOR, "run")
        self.assertEqual(status, 1)
        self.assertIn("another driver has it", errors)

    def test_hangs_for_as_long_as_it_is_told(self):
        simulator = Simulator(self.world, "--connect", "Desk")
        self.assertEqual(simulator.command("hang", "0.2")[:2], (0, "hanging for 0.2 s\n"))
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
        for word in ("run", "connect", "disconnect", "enable", "disable", "show-tab", "hang", "status"):
            self.assertIn(word, output)


if __name__ == "__main__":
    unittest.main()
