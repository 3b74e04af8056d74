"""The command line as a process: with the simulated driver, without one, with one that hangs, and with damaged files."""

import getpass
import json
import os
import pathlib
import plistlib
import re
import signal
import socket
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

import dbus.bus
import dbus.lowlevel
import dbus.service
from peers import INTERFACE, NAME_PREFIX, PATH, Lines, Peer, World, wait_until

PROGRAM, SIMULATOR, SOURCE = sys.argv[1:4]
del sys.argv[1:4]

DRIVER = "TouchDisplayDriverMessagePort"
PANE = "PreferenceMessagePort"

FAILURE, USAGE, NO_DRIVER, NO_DEVICE, FINDINGS = range(1, 6)

COMMANDS = ("list", "show", "get", "set", "gesture", "export", "import", "driver", "record", "actions",
            "calibrate", "watch", "doctor")

ROTATE = {"Name": "Rotate", "Descriptor": ["RotateWithTwoFingers"], "SelectedIndex": 0, "IsEnable": True,
          "MoreGesture": False}


# The command as a process that owners and modes of files hold for, whoever runs the tests.
BOUND_BY_MODES = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else []


def nested(levels):
    value = []
    for _ in range(levels):
        value = [value]
    return value


class TouchctlTest(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())

    def write(self, contents):
        path = self.world.folder / "profile.plist"
        path.write_bytes(contents if isinstance(contents, bytes) else plistlib.dumps(contents, sort_keys=False))
        return str(path)

    def simulate(self, *displays):
        """Starts the driver with these displays connected."""
        options = [word for name in displays for word in ("--connect", name)]
        process = self.world.start(SIMULATOR, "run", *options)
        lines = Lines(process.stdout)
        wait_until(lines.read, "the simulator's first line")
        return process

    def connect_in_file(self, *names, enabled=True):
        self.world.set_plist("Utilities.plist", {"DriverEnable": enabled, "CurrentDeviceType": list(names)})

    def ctl(self, *words):
        return self.world.run(PROGRAM, *words)

    def ctl_each(self, commands):
        """Runs the program with each of these words, side by side: what takes them long is to wait."""
        return self.world.run_together([[PROGRAM, *words] for words in commands])

    def expect(self, status, hint, *words):
        self.expect_each(status, [(words, hint)])

    def expect_each(self, status, cases):
        """Each command fails with this status, prints nothing, and says on one line what would be right."""
        results = self.ctl_each([words for words, _ in cases])
        for (words, hint), (actual, output, errors) in zip(cases, results, strict=True):
            self.assertEqual((actual, output), (status, ""), (words, errors))
            self.assertIn(hint, errors)
            self.assertEqual(errors.count("\n"), 1)

    def succeed(self, *words):
        return self.succeed_each([words])[0]

    def succeed_each(self, commands):
        results = self.ctl_each(commands)
        for words, (status, _, errors) in zip(commands, results, strict=True):
            self.assertEqual((status, errors), (0, ""), words)
        return [output for _, output, _ in results]

    def settings(self, name="Desk"):
        return self.world.plist(f"Settings_{name}.plist")

    def snapshot(self):
        return {str(path): path.read_bytes() for path in self.world.home.rglob("*") if path.is_file()}


class Showing(TouchctlTest):
    def test_lists_the_connected_displays_and_then_those_with_settings_alone(self):
        self.connect_in_file("Wall", "Desk")
        self.world.set_plist("Settings_Attic.plist", {})
        self.world.set_plist("Settings_Desk.plist", {})
        for stranger in ("Settings_(null).plist", "Settings_.plist", "Settings_Odd.txt"):
            self.world.set_plist(stranger, {})

        self.assertEqual(self.succeed("list"), "Wall\tconnected\nDesk\tconnected\nAttic\tnot connected\n")
        self.assertEqual(json.loads(self.succeed("list", "--json")),
                         [{"name": "Wall", "connected": True}, {"name": "Desk", "connected": True},
                          {"name": "Attic", "connected": False}])

    def test_lists_many_displays_in_order_and_each_once(self):
        # So many that to look through all of them for each would take minutes.
        names = [f"Desk {number}" for number in range(100_000)]
        self.connect_in_file(*names, *names)
        self.world.set_plist("Settings_Desk 7.plist", {})
        self.world.set_plist("Settings_Wall.plist", {})
        status, _, errors = self.world.run("sh", "-c", "exec \"$0\" list >\"$1\"", PROGRAM, self.world.folder / "out")
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual((self.world.folder / "out").read_text(encoding="utf-8"),
                         "".join(name + "\tconnected\n" for name in names) + "Wall\tnot connected\n")

    def test_shows_settings_as_set_takes_them(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {
            "DoubleClickRate": 0.3, "DoubleClickRange": 40, "RotateMode": 2, "DriverVersion": "1.2",
            "RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 1.5}, "AutoCalibration": True,
            "FingerMode": "pointer", "GestureArray": [dict(ROTATE, IsEnable=False), {"Name": "Odd", "SelectedIndex": 9}]})

        self.assertEqual(self.succeed("show", "Desk").splitlines(), [
            "Desk (connected)", "  double-click-rate 0.3", "  double-click-range 40", "  right-click on",
            "  long-press 1.5", "  rotation 180", "  calibration auto", "  finger pointer",
            "  gesture Rotate off RotateWithTwoFingers", "  gesture Odd off (not set)", "  driver-version 1.2"])
        self.assertEqual(self.succeed("show"), self.succeed("show", "Desk"))

    def test_what_is_shown_is_taken_back_and_changes_nothing(self):
        self.simulate("Desk")
        for words in (("double-click-rate", "0.1"), ("right-click", "on", "1.5"), ("rotation", "270"),
                      ("calibration", "manual", "1279.3", "720.1")):
            self.succeed("set", "Desk", *words)
        self.succeed("set", "Desk", "finger", "pointer")
        self.succeed("gesture", "Desk", "SwipeBetweenPages", "off", "SwipeWithThreeFingers")
        self.succeed("gesture", "Desk", "Launchpad", "off")
        before = self.settings()
        title, *lines, version = self.succeed("show", "Desk").splitlines()
        self.assertEqual((title, version), ("Desk (connected)", "  driver-version 0.8.0.3"))
        self.assertEqual(len(lines), 7 + 13)
        for first, *others in map(str.split, lines):
            command = ("gesture", "Desk", *others) if first == "gesture" else ("set", "Desk", first, *others)
            self.assertEqual(self.succeed(*command), "")
            self.assertEqual(self.settings(), before, command)

    def test_what_set_would_not_take_is_shown_as_a_remark(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {
            "DoubleClickRate": 7.0, "DoubleClickRange": 32.5, "RotateMode": 4, "RightClick": {"RightClickTimeIntelval": 99},
            "ManualCalibration": {"OSDWidth": 5000.0, "OSDHeight": 10.0}})
        lines = self.succeed("show", "Desk").splitlines()
        for key in ("double-click-rate", "double-click-range", "long-press", "rotation", "calibration"):
            self.assertIn(f"  {key} (invalid)", lines)
        self.assertIn("  right-click (not set)", lines)

    def test_one_value_is_printed_alone(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {
            "DoubleClickRate": 0.3, "DoubleClickRange": 40.0, "RotateMode": False, "DriverVersion": "1.2 beta",
            "RightClick": {"RightClickIsEnable": False}, "ManualCalibration": {"OSDWidth": 800.0, "OSDHeight": 600.5}})
        keys = {"double-click-rate": "0.3", "double-click-range": "40", "rotation": "0", "driver-version": "1.2 beta",
                "right-click": "off", "calibration": "manual 800 600.5"}
        outputs = self.succeed_each([("get", "Desk", key) for key in keys])
        self.assertEqual(outputs, [value + "\n" for value in keys.values()])
        self.expect(FAILURE, "long-press is not set", "get", "Desk", "long-press")
        self.expect_each(USAGE, [
            (("get", "Desk", "Rotate"), "the keys are double-click-rate,"), (("get", "Desk"), "get DEVICE KEY"),
            (("get", "Desk", "gestures"), "driver-version"), (("get", "Desk", "rotation", "90"), "get DEVICE KEY")])
        self.expect(NO_DEVICE, "known displays", "get", "Wall", "rotation")
        self.world.set_plist("Settings_Desk.plist", {"RotateMode": 9})
        self.expect(FAILURE, "rotation is invalid", "get", "Desk", "rotation")
        self.expect(FAILURE, "driver-version is not set", "get", "Desk", "driver-version")

    def test_json_is_the_file_with_its_kinds_whatever_it_holds(self):
        contents = {"Real": 2.0, "Text": "\"\\\n\u20ac\U0001F600", "Data": b"\x00\xff", "Deep": [[[{"": []}]]],
                    "Yes": True, "Big": 2**63, "Infinite": float("inf")}
        self.connect_in_file("Desk", "Wall")
        self.world.set_plist("Settings_Desk.plist", contents)
        expected = dict(contents, Data="00ff", Infinite=None)

        self.assertEqual(json.loads(self.succeed("show", "Desk", "--json")), expected)
        self.assertEqual(json.loads(self.succeed("--json", "show")), {"Desk": expected, "Wall": {}})

    def test_reading_makes_no_files(self):
        for words in (["list"], ["show"], ["doctor"], ["complete", "set"], ["set", "Desk", "rotation", "90"]):
            self.ctl(*words)
        self.assertEqual(list(self.world.home.iterdir()), [])

    def test_unknown_display_is_answered_with_those_known(self):
        self.expect(NO_DEVICE, "no display is known yet", "show", "Desk")
        self.connect_in_file("Desk", "Wall \"2\"")
        self.expect_each(NO_DEVICE, [
            (words, "known displays: \"Desk\", \"Wall \"2\"\"")
            for words in (("show", "Des"), ("export", "desk"), ("set", "", "rotation", "90"),
                          ("gesture", "Desk ", "Rotate", "on"), ("import", "../Desk"))])

    def test_damaged_files_are_named_and_stay(self):
        self.connect_in_file("Desk")
        settings = self.world.preferences / "Settings_Desk.plist"
        settings.write_bytes(b"<plist><dict><key>")
        self.expect_each(FAILURE, [
            (words, "~/Library/Preferences/KelvoTouchDisplay/Settings_Desk.plist")
            for words in (("show", "Desk"), ("show",), ("export", "Desk"), ("set", "Desk", "rotation", "90"),
                          ("gesture", "Desk", "Rotate", "off"))])
        utilities = self.world.preferences / "Utilities.plist"
        utilities.write_bytes(b"\xff")
        for words in (("list",), ("show", "Desk"), ("set", "Desk", "rotation", "90")):
            self.expect(FAILURE, "Utilities.plist is damaged; repair it, or remove it and restart the driver", *words)
        self.assertEqual((settings.read_bytes(), utilities.read_bytes()), (b"<plist><dict><key>", b"\xff"))

    def test_healthy_displays_are_shown_beside_damaged_ones(self):
        self.connect_in_file("Attic", "Desk", "Wall")
        self.world.set_plist("Settings_Desk.plist", {"RotateMode": 1})
        for name in ("Attic", "Wall"):
            (self.world.preferences / f"Settings_{name}.plist").write_bytes(b"damage")
        for words in (("show", "--json"), ("show",)):
            status, output, errors = self.ctl(*words)
            self.assertEqual((status, errors.count("\n")), (FAILURE, 1))
            self.assertIn("Settings_Attic.plist is damaged", errors)
            self.assertIn("Settings_Wall.plist is damaged", errors)
            if "--json" in words:
                self.assertEqual(json.loads(output), {"Attic": None, "Desk": {"RotateMode": 1}, "Wall": None})
            else:
                self.assertTrue(output.startswith("Desk (connected)\n"))
                self.assertNotIn("Wall", output)
        self.assertIn("rotation 90", self.succeed("show", "Desk"))

    def expect_forbidden(self, path, *words):
        status, output, errors = self.world.run(*BOUND_BY_MODES, PROGRAM, *words)
        self.assertEqual((status, output), (FAILURE, ""), words)
        self.assertIn(f"{path} cannot be read (Permission denied); check its owner and permissions", errors)
        self.assertNotIn("damaged", errors)

    def test_what_may_not_be_read_is_neither_empty_nor_damaged(self):
        folder = "~/Library/Preferences/KelvoTouchDisplay"
        self.simulate("Desk")
        for name, commands in (
                ("Settings_Desk.plist", (("show", "Desk"), ("export", "Desk"), ("set", "Desk", "rotation", "90"),
                                         ("import", "Desk", self.write({"RotateMode": 1})), ("get", "Desk", "rotation"))),
                ("Utilities.plist", (("list",), ("show",), ("set", "Desk", "rotation", "90")))):
            (self.world.preferences / name).chmod(0)
            for words in commands:
                self.expect_forbidden(f"{folder}/{name}", *words)
            (self.world.preferences / name).chmod(0o600)
        for mode, unreadable in ((0o300, f"the folder {folder}"), (0o600, f"{folder}/Utilities.plist"),
                                 (0, f"{folder}/Utilities.plist")):
            self.world.preferences.chmod(mode)
            self.expect_forbidden(unreadable, "list")
            self.expect_forbidden(unreadable, "list", "--json")
        self.world.preferences.chmod(0o700)

    def test_change_that_could_not_be_stored_is_not_sent(self):
        self.connect_in_file("Desk")
        profile = self.write({"RotateMode": 1})
        self.world.preferences.chmod(0o500)
        with Peer(self.world, DRIVER) as driver:
            for words in (("set", "Desk", "rotation", "90"), ("gesture", "Desk", "Rotate", "off"),
                          ("import", "Desk", profile)):
                status, output, errors = self.world.run(*BOUND_BY_MODES, PROGRAM, *words)
                self.assertEqual((status, output), (FAILURE, ""))
                self.assertIn("the folder ~/Library/Preferences/KelvoTouchDisplay cannot be written to", errors)
            self.assertEqual(driver.received, [])
        self.world.preferences.chmod(0o700)

    def test_no_folder_is_no_fault_but_something_else_in_its_place_is(self):
        self.assertEqual(self.succeed("list"), "")
        self.world.preferences.parent.mkdir(parents=True)
        self.world.preferences.write_text("")
        self.expect(FAILURE, "KelvoTouchDisplay cannot be read (Not a directory)", "list")

    def test_too_large_a_file_is_called_so(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {})
        os.truncate(self.world.preferences / "Settings_Desk.plist", 2**28 + 1)
        self.expect(FAILURE, "Settings_Desk.plist is too large (more than 256 MiB)", "show", "Desk")
        os.truncate(self.world.preferences / "Utilities.plist", 2**28 + 1)
        self.expect(FAILURE, "Utilities.plist is too large", "list")

    def test_values_of_wrong_kinds_are_shown_as_they_can_be_and_nothing_fails(self):
        self.world.set_plist("Utilities.plist", {"CurrentDeviceType": ["Desk", 7, ""], "DriverEnable": "YES"})
        self.world.set_plist("Settings_Desk.plist", {
            "DoubleClickRate": [], "RightClick": "on", "RotateMode": "turned", "GestureArray": {"a": 1},
            "ManualCalibration": {"OSDWidth": {}}})
        self.assertEqual(self.succeed("list"), "Desk\tconnected\n")
        self.assertIn("double-click-rate (not set)", self.succeed("show"))

    def test_control_characters_of_names_and_values_move_no_cursor(self):
        self.connect_in_file()
        for name, contents in (("Utilities", {"CurrentDeviceType": ["a\t\x7f[31m\nb"]}),
                               ("Settings_a\t\x7f[31m\nb", {"DriverVersion": "1\n2"})):
            (self.world.preferences / f"{name}.plist").write_bytes(plistlib.dumps(contents))
        self.assertEqual(self.succeed("list"), "a\\x09\\x7f[31m\\nb\tconnected\n")
        self.assertIn("driver-version 1\\n2\n", self.succeed("show", "a\t\x7f[31m\nb"))

    def test_names_that_could_never_be_saved_again_are_not_shown(self):
        self.connect_in_file()
        contents = plistlib.dumps({"CurrentDeviceType": ["a\x1b[31m"]}, fmt=plistlib.FMT_BINARY)
        (self.world.preferences / "Utilities.plist").write_bytes(contents)
        self.expect(FAILURE, "is damaged", "list")


class Changing(TouchctlTest):
    def test_every_setting_reaches_the_file_through_the_driver(self):
        self.simulate("Desk")
        for words, key, value in (
                (("double-click-rate", "0.25"), "DoubleClickRate", 0.25),
                (("double-click-range", "40"), "DoubleClickRange", 40),
                (("right-click", "on", "2"), "RightClick", {"RightClickIsEnable": True, "RightClickTimeIntelval": 2.0}),
                (("long-press", "0.5"), "RightClick", {"RightClickIsEnable": True, "RightClickTimeIntelval": 0.5}),
                (("rotation", "270"), "RotateMode", 3),
                (("calibration", "manual", "1280", "720.5"), "ManualCalibration", {"OSDWidth": 1280.0, "OSDHeight": 720.5}),
                (("calibration", "auto"), "AutoCalibration", True)):
            self.assertEqual(self.succeed("set", "Desk", *words), "")
            self.assertEqual(self.settings()[key], value, words)
        self.succeed("set", "Desk", "gestures", "default")
        self.assertEqual(len(self.settings()["GestureArray"]), 13)

    def test_sends_and_writes_no_file(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {"RotateMode": 0})
        before = self.snapshot()
        with Peer(self.world, DRIVER) as driver:
            status, output, errors = self.ctl("set", "Desk", "rotation", "90")
            self.assertEqual((status, output), (0, ""))
            self.assertIn("has not saved it", errors)
            self.assertEqual([(number, plistlib.loads(data)) for number, data in driver.received],
                             [(3, {"RotateMode": 1, "DeviceName": "Desk"})])
        self.assertEqual(self.snapshot(), before)

    def test_commands_in_a_row_build_on_one_another(self):
        self.simulate("Desk")
        names = ["SecondaryClick", "LookUp", "ScrollDirection", "ZoomInOrOut", "SmartZoom", "Rotate", "Launchpad"]
        for name in names:
            self.succeed("gesture", "Desk", name, "off")
        self.assertEqual([each["Name"] for each in self.settings()["GestureArray"] if not each["IsEnable"]], names)

    def test_gestures_that_collide_move_as_in_the_window(self):
        self.simulate("Desk")
        self.succeed("gesture", "Desk", "AppExpose", "SwipeDownWithFourFingers")
        self.succeed("gesture", "Desk", "SwipeBetweenPages", "SwipeWithThreeFingers")
        indexes = {each["Name"]: each["SelectedIndex"] for each in self.settings()["GestureArray"]}
        self.assertEqual([indexes[name] for name in ("AppExpos\u00e9", "MissionControl", "SwipeBetweenPages",
                                                     "FullScreenApps")], [1, 1, 1, 1])

        self.succeed("gesture", "Desk", "FullScreenApps", "SwipeLeftOrRightWithThreeFingers")

        pages = next(each for each in self.settings()["GestureArray"] if each["Name"] == "SwipeBetweenPages")
        self.assertEqual((pages["SelectedIndex"], pages["IsEnable"]), (0, False))

    def test_switch_and_action_can_be_given_at_once(self):
        self.simulate("Desk")
        self.succeed("gesture", "Desk", "SwipeBetweenPages", "off", "SwipeWithTwoOrThreeFingers")
        self.succeed("gesture", "Desk", "MissionControl", "on", "SwipeUpWithFourFingers")
        records = {each["Name"]: (each["IsEnable"], each["SelectedIndex"]) for each in self.settings()["GestureArray"]}
        self.assertEqual((records["SwipeBetweenPages"], records["FullScreenApps"], records["MissionControl"],
                          records["AppExpos\u00e9"]), ((False, 2), (True, 1), (True, 1), (True, 1)))
        before = self.snapshot()
        self.expect_each(USAGE, [(("gesture", "Desk", "Rotate", *deeds), hint) for deeds, hint in (
            (("off", "fast"), "not \"fast\""), (("on", "off"), "not \"off\""),
            (("RotateWithTwoFingers", "off"), "on, off, or one of RotateWithTwoFingers"),
            (("off", "RotateWithTwoFingers", "on"), "gesture DEVICE NAME [on|off] [ACTION]"))])
        self.assertEqual(self.snapshot(), before)

    def test_window_that_may_undo_a_change_is_told_of_where_the_driver_does_not_tell_it(self):
        note = "note: an open settings window may undo this"

        def changed(*displays, chosen=None):
            utilities = {"DriverEnable": True, "CurrentDeviceType": list(displays)}
            self.world.set_plist("Utilities.plist", {**utilities, **({"SelectDeviceName": chosen} if chosen else {})})
            results = self.ctl_each([("set", "Desk", "rotation", "90"), ("gesture", "Desk", "Rotate", "off"),
                                     ("import", "Desk", self.write({"RotateMode": 1}))])
            self.assertEqual([status for status, _, _ in results], [0, 0, 0])
            return {note in errors for _, _, errors in results}

        with Peer(self.world, DRIVER):
            self.assertEqual(changed("Desk", "Wall"), {False})
            with Peer(self.world, PANE):
                self.assertEqual(changed("Desk", "Wall"), {True})
                self.assertEqual(changed("Desk", "Wall", chosen="Desk"), {True})
                self.assertEqual(changed("Desk", "Wall", chosen="Attic"), {True})
                self.assertEqual(changed("Desk", "Wall", chosen="Wall"), {False})
                self.assertEqual(changed("Desk"), {False})

    def test_what_is_wrong_is_answered_with_what_is_right(self):
        self.simulate("Desk")
        before = self.snapshot()
        self.expect_each(USAGE, [
            (("set", "Desk", "double-click-rate", "2"), "from 0.1 to 1"),
            (("set", "Desk", "double-click-range", "0x20"), "from 8 to 128"),
            (("set", "Desk", "rotation", "-90"), "0, 90, 180 or 270"),
            (("set", "Desk", "calibration", "manual"), "width and the height"),
            (("set", "Desk", "RotateMode", "1"), "the keys are double-click-rate,"),
            (("set", "Desk", "rotation"), "set DEVICE KEY VALUE"),
            (("gesture", "Desk", "Rotate", "fast"), "RotateWithTwoFingers"),
            (("gesture", "Desk", "Fly", "on"), "the gestures are SecondaryClick,"),
            (("gesture", "Desk", "Rotate"), "gesture DEVICE NAME"),
            (("dance",), "see --help"), ((), "see --help"), (("list", "Desk"), "list [--json]"),
            (("doctor", "--json"), "takes no --json"), (("show", "--jason"), "see --help"),
            (("gesture", "Desk", "Rotate", "on", "--force"), "takes no --force")])
        self.assertEqual(self.snapshot(), before)

    def test_damaged_gesture_list_is_not_sent_on(self):
        self.connect_in_file("Desk")
        with Peer(self.world, DRIVER) as driver:
            for damage in ("x", [7], [dict(ROTATE, SelectedIndex=5)], [dict(ROTATE, IsEnable="on")]):
                self.world.set_plist("Settings_Desk.plist", {"GestureArray": damage})
                self.expect(FAILURE, "GestureArray", "gesture", "Desk", "Rotate", "off")
            for record in (dict(ROTATE, Own="x" * 2**20), dict(ROTATE, Own=nested(64))):
                self.world.set_plist("Settings_Desk.plist", {"GestureArray": [record]})
                self.expect(FAILURE, "too large for one message", "gesture", "Desk", "Rotate", "off")
            self.assertEqual(driver.received, [])

    def test_names_with_odd_characters_are_names_like_others(self):
        names = ["Wänd \"2\"", "--help", "$(touch odd)", " 'blank' ", "%n%s%@", "\u6f22\u5b57", "-"]
        self.simulate(*names)
        for rate, environment in (("0.75", {"LC_ALL": "C"}), ("0.25", {"LC_ALL": "C.UTF-8"}),
                                  ("0.5", {"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "ar"})):
            self.world.environment.update(environment)
            self.succeed_each([("set", "--", name, "double-click-rate", rate) for name in names])
            for name in names:
                self.assertEqual(self.settings(name)["DoubleClickRate"], float(rate))
            for output in self.succeed_each([("show", "--", name) for name in names]):
                self.assertIn(f"double-click-rate {rate}\n", output)
            self.assertEqual([line.split("\t")[0] for line in self.succeed("list").splitlines()], names)


class WithoutADriver(TouchctlTest):
    CHANGES = (("set", "Desk", "rotation", "90"), ("gesture", "Desk", "Rotate", "off"), ("import", "Desk", "PROFILE"))

    def setUp(self):
        super().setUp()
        self.profile = self.world.folder / "profile.plist"
        self.profile.write_bytes(plistlib.dumps({"RotateMode": 1}))

    def expect_no_driver(self, hint):
        before = self.snapshot()
        self.expect_each(NO_DRIVER, [([str(self.profile) if word == "PROFILE" else word for word in words], hint)
                                     for words in self.CHANGES])
        self.assertEqual(self.snapshot(), before)

    def test_absent(self):
        self.connect_in_file("Desk")
        self.expect_no_driver("start the driver")

    def test_absent_and_the_display_only_known(self):
        self.world.set_plist("Settings_Desk.plist", {})
        self.expect_no_driver("start the driver")

    def test_hung(self):
        driver = self.simulate("Desk")
        driver.send_signal(signal.SIGSTOP)
        self.expect_no_driver("does not answer")

    def test_switched_off(self):
        self.simulate("Desk")
        self.assertEqual(self.world.run(SIMULATOR, "disable")[0], 0)
        self.expect_no_driver("switched off; switch it on")

    def test_that_refuses_messages(self):
        self.connect_in_file("Desk")
        stranger = dbus.bus.BusConnection(self.world.address)
        self.addCleanup(stranger.close)
        stranger.request_name(NAME_PREFIX + DRIVER)
        self.expect_no_driver("refused")

    def test_without_a_bus(self):
        self.connect_in_file("Desk")
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"
        self.expect_no_driver("set DBUS_SESSION_BUS_ADDRESS")
        self.expect(NO_DRIVER, "set DBUS_SESSION_BUS_ADDRESS", "watch")

    def test_on_a_bus_that_does_not_answer(self):
        self.connect_in_file("Desk")
        path = f"{self.world.folder}/silent"
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(path)
            silent.listen()
            self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={path}"
            self.expect_each(NO_DRIVER, [(words, "no session bus, or it does not answer") for words in (
                ("set", "Desk", "rotation", "90"), ("gesture", "Desk", "Rotate", "off"), ("driver", "off"),
                ("set", "Desk", "finger", "touch"), ("watch",))])
            self.assertEqual(self.succeed("list"), "Desk\tconnected\n")

    def test_with_another_display_connected(self):
        self.simulate("Wall")
        self.world.set_plist("Settings_Desk.plist", {})
        self.expect(NO_DEVICE, "not connected; connect it", "set", "Desk", "rotation", "90")


class DriverItself(TouchctlTest):
    """What goes to the driver by its control channel, since no message says it."""

    def test_is_switched_off_and_on_and_the_pane_told(self):
        self.simulate("Desk")
        with Peer(self.world, PANE) as pane:
            for word, is_on in (("off", False), ("on", True)):
                self.assertEqual(self.succeed("driver", word), "")
                self.assertIs(self.world.plist("Utilities.plist")["DriverEnable"], is_on)
            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                             [(4, {"DriverEnable": False}), (4, {"DriverEnable": True})])

    def test_is_told_what_one_finger_is_and_has_stored_it(self):
        self.simulate("Desk")
        self.assertIn("\n  finger (not set)\n", self.succeed("show", "Desk"))
        for mode in ("pointer", "touch"):
            self.assertEqual(self.succeed("set", "Desk", "finger", mode), "")
            self.assertEqual(self.settings()["FingerMode"], mode)
            self.assertIn(f"\n  finger {mode}\n", self.succeed("show", "Desk"))

    def test_takes_no_other_words(self):
        self.simulate("Desk")
        before = self.snapshot()
        self.expect_each(USAGE, [
            (("driver", "away"), 'driver takes on or off, not "away"'), (("driver",), "driver on|off"),
            (("driver", "on", "off"), "driver on|off"),
            (("set", "Desk", "finger", "mouse"), 'finger must be touch or pointer, not "mouse"'),
            (("set", "Desk", "finger", "touch", "pointer"), "finger takes touch or pointer")])
        self.expect(NO_DEVICE, "there is no display", "set", "Wall", "finger", "touch")
        self.assertEqual(self.snapshot(), before)

    def test_absent_hung_or_unreachable_names_the_fix(self):
        self.expect(NO_DRIVER, "start the driver", "driver", "off")
        driver = self.simulate("Desk")
        driver.send_signal(signal.SIGSTOP)
        self.expect_each(NO_DRIVER, [(words, "does not answer") for words in (
            ("driver", "off"), ("set", "Desk", "finger", "touch"))])
        driver.send_signal(signal.SIGCONT)
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"
        self.expect(NO_DRIVER, "set DBUS_SESSION_BUS_ADDRESS", "driver", "off")

    def test_that_takes_messages_alone_says_so(self):
        with Peer(self.world, DRIVER):
            self.expect(NO_DRIVER, "takes no commands", "driver", "off")


class Profiles(TouchctlTest):
    def test_one_displays_settings_become_anothers(self):
        self.simulate("Desk", "Wall")
        for words in (("double-click-rate", "0.3"), ("right-click", "off", "1.5"), ("rotation", "180"),
                      ("calibration", "manual", "1024", "768")):
            self.succeed("set", "Desk", *words)
        self.succeed("gesture", "Desk", "Launchpad", "off")
        profile = self.world.folder / "profile.plist"

        self.succeed("export", "Desk", profile)
        self.succeed("import", "Wall", profile)

        expected = self.settings("Desk")
        self.assertEqual(self.settings("Wall"), expected)
        del expected["DriverVersion"]
        self.assertEqual(plistlib.loads(profile.read_bytes()), expected)

    def test_pass_through_pipes_and_as_the_binary_format(self):
        self.simulate("Desk")
        output = self.succeed("export", "Desk")
        self.assertEqual(self.succeed("export", "Desk", "-"), output)
        path = self.write(plistlib.dumps({"RotateMode": 3}, fmt=plistlib.FMT_BINARY))
        status, _, errors = self.world.run("sh", "-c", "exec \"$0\" import Desk < \"$1\"", PROGRAM, path)
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(self.settings()["RotateMode"], 3)

    def test_that_do_not_fit_are_refused_before_anything_is_sent(self):
        self.connect_in_file("Desk")
        with Peer(self.world, DRIVER) as driver:
            for contents, hint in (
                    ({"DoubleClickRate": 0.5, "RotateMode": 9}, "RotateMode must be"),
                    ({"DoubleClickRate": "0.5"}, "DoubleClickRate must be a number of seconds from 0.1 to 1"),
                    ({"DoubleClickRate": 0.5, "GestureArray": [{}]}, "gesture 1 of GestureArray"),
                    ({"Rotation": 1}, "the settings are DoubleClickRate,"), ({}, "contains no settings"),
                    ([1], "not a property list of settings"), (b"", "not a property list of settings"),
                    (b"<plist><dict>", "not a property list of settings")):
                self.expect(FAILURE, hint, "import", "Desk", self.write(contents))
            self.expect(FAILURE, "cannot be read", "import", "Desk", "/nowhere")
            self.expect(FAILURE, "too large for one message", "import", "Desk",
                        self.write({"GestureArray": [dict(ROTATE, Own="x" * 2**20)]}))
            self.assertEqual(driver.received, [])

    def test_are_checked_whole_before_anything_is_sent(self):
        self.connect_in_file("Desk")
        healthy = {"DoubleClickRate": 0.5, "DoubleClickRange": 32, "RotateMode": 1, "AutoCalibration": True,
                   "RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 1.0}}
        with Peer(self.world, DRIVER) as driver:
            for own in ("x" * 2**20, nested(64)):
                self.expect(FAILURE, "too large for one message", "import", "Desk",
                            self.write({**healthy, "GestureArray": [dict(ROTATE, Own=own)]}))
                self.expect(FAILURE, "too large for one message", "set", "Desk", "gestures",
                            self.write({"GestureArray": [dict(ROTATE, Own=own)]}))
            self.assertEqual(driver.received, [])

    def test_onto_a_damaged_file_fail_and_leave_it(self):
        self.simulate("Desk")
        settings = self.world.preferences / "Settings_Desk.plist"
        settings.write_bytes(b"damage")
        self.expect(FAILURE, "Settings_Desk.plist is damaged", "import", "Desk", self.write({"RotateMode": 1}))
        self.assertEqual(settings.read_bytes(), b"damage")

    def test_tell_what_they_changed_and_nothing_the_second_time(self):
        self.simulate("Desk", "Wall")
        self.succeed("gesture", "Desk", "Rotate", "off")
        self.succeed("set", "Desk", "rotation", "90")
        profile = self.succeed("export", "Desk")
        self.assertEqual(self.succeed("import", "Wall", self.write(profile.encode())), "RotateMode\nGestureArray\n")
        self.assertEqual(self.succeed("import", "Wall", self.write(profile.encode())), "")
        self.succeed("set", "Wall", "rotation", "0")
        self.assertEqual(self.succeed("import", "Wall", self.write(profile.encode())), "RotateMode\n")

    PAGES = {"Name": "SwipeBetweenPages", "SelectedIndex": 0, "IsEnable": True, "MoreGesture": True,
             "Descriptor": ["ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers", "SwipeWithTwoOrThreeFingers"]}
    FULL_SCREEN = {"Name": "FullScreenApps", "SelectedIndex": 0, "IsEnable": True, "MoreGesture": True,
                   "Descriptor": ["SwipeLeftOrRightWithThreeFingers", "SwipeLeftOrRightWithFourFingers"]}
    MISSION_CONTROL = {"Name": "MissionControl", "SelectedIndex": 0, "IsEnable": True, "MoreGesture": True,
                       "Descriptor": ["SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"]}
    EXPOSE = {"Name": "AppExpos\u00e9", "SelectedIndex": 1, "IsEnable": True, "MoreGesture": True,
              "Descriptor": ["SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"]}

    def test_with_gestures_that_the_window_never_makes_need_force(self):
        self.simulate("Desk")
        before = self.snapshot()
        refused = [
            ([dict(ROTATE, Name="Fly")], "unknown gesture \"Fly\""),
            ([ROTATE, ROTATE], "duplicate gesture \"Rotate\""),
            ([dict(ROTATE, Descriptor=["Twist"])], "unknown action \"Twist\" of Rotate"),
            ([dict(ROTATE, Descriptor=["RotateWithTwoFingers"] * 2)], "duplicate action"),
            ([dict(self.PAGES, SelectedIndex=1), self.FULL_SCREEN], "both use three fingers"),
            ([self.FULL_SCREEN, dict(self.PAGES, SelectedIndex=2)], "both use three fingers"),
            ([self.MISSION_CONTROL, self.EXPOSE], "do not use the same number of fingers")]
        for gestures, hint in refused:
            profile = self.write({"RotateMode": 3, "GestureArray": gestures})
            self.expect(FAILURE, hint, "import", "Desk", profile)
            self.expect(FAILURE, "--force", "set", "Desk", "gestures", profile)
        self.assertEqual({**before, str(self.world.folder): 0}, {**self.snapshot(), str(self.world.folder): 0})

        self.succeed("import", "Desk", profile, "--force")
        self.assertEqual(self.settings()["GestureArray"], [self.MISSION_CONTROL, self.EXPOSE])
        # What the display has by now is no longer strange to it, but for what collides.
        self.succeed("set", "--force", "Desk", "gestures", self.write({"GestureArray": [dict(ROTATE, Name="Fly")]}))
        self.succeed("import", "Desk", self.write({"GestureArray": [dict(ROTATE, Name="Fly", IsEnable=False)]}))
        self.assertEqual(self.settings()["GestureArray"], [dict(ROTATE, Name="Fly", IsEnable=False)])

    def test_with_gestures_that_the_window_makes_need_none(self):
        self.simulate("Desk")
        for gestures in ([dict(self.PAGES, SelectedIndex=1), dict(self.FULL_SCREEN, SelectedIndex=1)],
                         [self.MISSION_CONTROL, dict(self.EXPOSE, SelectedIndex=0, IsEnable=False)],
                         [dict(self.MISSION_CONTROL, Descriptor=["SwipeUpWithThreeFingers"]), self.EXPOSE],
                         [dict(self.PAGES, SelectedIndex=1), dict(self.FULL_SCREEN, Descriptor=[
                             "SwipeLeftOrRightWithThreeFingers"])],
                         [dict(self.PAGES, Descriptor=["SwipeWithThreeFingers"], IsEnable=False), self.FULL_SCREEN]):
            self.succeed("import", "Desk", self.write({"GestureArray": gestures}))
            self.assertEqual(self.settings()["GestureArray"], gestures)

    def test_come_from_pipes_and_go_into_them_under_a_name(self):
        self.simulate("Desk")
        path = self.write({"RotateMode": 2})

        def bash(script):
            return self.world.run("bash", "--norc", "-c", script, PROGRAM, path, self.world.folder)

        self.assertEqual(bash("\"$0\" import Desk <(cat \"$1\")"), (0, "RotateMode\n", ""))
        self.assertEqual(bash("\"$0\" import Desk /dev/stdin <\"$1\""), (0, "", ""))
        self.assertEqual(bash("mkfifo \"$2/pipe\"; cat \"$1\" >\"$2/pipe\" & \"$0\" set Desk gestures \"$2/pipe\"")[0], FAILURE)
        exported = self.succeed("export", "Desk")
        for script in ("\"$0\" export Desk /dev/stdout | cat", "\"$0\" export Desk /dev/stdout",
                       "\"$0\" export Desk >(cat >\"$2/out\"); wait $!; cat \"$2/out\"",
                       "\"$0\" export Desk /dev/fd/3 3>\"$2/out\"; cat \"$2/out\"",
                       "cat \"$2/pipe\" & \"$0\" export Desk \"$2/pipe\"; wait"):
            self.assertEqual(bash(script), (0, exported, ""), script)
        self.assertEqual(bash("echo before >\"$2/out\"; \"$0\" export Desk /dev/stdout >>\"$2/out\"; cat \"$2/out\""),
                         (0, "before\n" + exported, ""))
        self.expect(FAILURE, "cannot be written", "export", "Desk", self.world.folder)

    def test_neither_come_from_nor_go_to_streams_that_are_closed(self):
        self.simulate("Desk")
        path = self.write({"RotateMode": 2})
        cases = {"\"$0\" import Desk <&-": "standard input cannot be read (Bad file descriptor)",
                 "\"$0\" import Desk \"$1\" >&-": "cannot write to standard output",
                 "\"$0\" watch <&- >&-": "cannot write to standard output"}
        for script, hint in cases.items():
            status, output, errors = self.world.run("bash", "--norc", "-c", script, PROGRAM, path)
            self.assertEqual((status, output), (FAILURE, ""), script)
            self.assertIn(hint, errors)
        self.assertEqual(self.world.run("bash", "--norc", "-c", "\"$0\" set Desk rotation 7 <&- >&- 2>&-", PROGRAM)[0],
                         USAGE)

    def test_without_end_are_given_up(self):
        self.connect_in_file("Desk")
        with Peer(self.world, DRIVER) as driver:
            for name in ("/dev/zero", "-"):
                status, _, errors = self.world.run("sh", "-c", "exec \"$0\" import Desk \"$1\" </dev/zero", PROGRAM, name)
                self.assertEqual(status, FAILURE)
                self.assertIn("too large; the limit is 16 MiB", errors)
            path = self.write({"RotateMode": 1})
            os.truncate(path, 2**24 + 1)
            self.expect(FAILURE, "profile.plist\" is too large", "import", "Desk", path)
            self.expect(FAILURE, "cannot be read (Is a directory)", "import", "Desk", self.world.folder)
            self.assertEqual(driver.received, [])

    def test_come_in_order_each_once(self):
        self.connect_in_file("Desk")
        with Peer(self.world, DRIVER) as driver:
            path = self.write({"GestureArray": [ROTATE], "AutoCalibration": True, "RotateMode": 1,
                               "DoubleClickRange": 32, "DoubleClickRate": 0.5})
            self.assertEqual(self.ctl("import", "Desk", path)[0], 0)
            self.assertEqual([number for number, _ in driver.received], [0, 1, 3, 6, 2])

    def test_that_cannot_be_written_fail(self):
        self.connect_in_file("Desk")
        self.expect(FAILURE, "no settings yet", "export", "Desk")
        self.world.set_plist("Settings_Desk.plist", {"RotateMode": 1})
        self.expect(FAILURE, "cannot be written", "export", "Desk", "/nowhere/profile.plist")
        status, _, errors = self.world.run("sh", "-c", "exec \"$0\" export Desk > /dev/full", PROGRAM)
        self.assertEqual(status, FAILURE)
        self.assertIn("cannot write to standard output", errors)
        self.world.set_plist("Settings_Desk.plist", {"RotateMode": 99})
        self.expect(FAILURE, "RotateMode must be", "export", "Desk")


class CommandedDriver(dbus.service.Object):
    """The control channel of a driver that does as a test says: it knows the commands and answers as `answer` does."""

    def __init__(self, world, answer):
        self.bus = dbus.bus.BusConnection(world.address)
        self.bus.set_exit_on_disconnect(False)
        self.bus_name = dbus.service.BusName(NAME_PREFIX + "Driver", self.bus, do_not_queue=True)
        super().__init__(self.bus, "/com/kelvo/TouchDisplay/Driver")
        self.answer = answer
        self.commands = []

    def end(self):
        self.remove_from_connection()
        del self.bus_name
        self.bus.close()

    @dbus.service.method(NAME_PREFIX + "Driver", in_signature="as", out_signature="bs")
    def Perform(self, words):
        self.commands.append([str(word) for word in words])
        return self.answer(self.commands[-1])


class Recording(TouchctlTest):
    def setUp(self):
        super().setUp()
        self.connect_in_file("Desk")
        self.file = self.world.folder / "fingers.events"
        self.refusals = {}
        self.driver = CommandedDriver(self.world, self.answer)

    def answer(self, words):
        refusal = self.refusals.get(len(words))
        return (False, refusal) if refusal else (True, "{}")

    def record(self, file):
        process = self.world.start(PROGRAM, "record", "Desk", file)
        lines = Lines(process.stdout)
        wait_until(lines.read, "the first line")
        return process, lines

    def end(self, process):
        wait_until(lambda: process.poll() is not None, "the end")
        return process.returncode, process.stderr.read()

    def test_goes_on_until_it_is_interrupted_and_is_then_complete(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process, lines = self.record(self.file)
            self.assertEqual(lines.lines, [f"recording to {self.file}; press Ctrl+C to stop"])
            self.assertEqual(self.driver.commands, [["record", "Desk", str(self.file)]])
            process.send_signal(number)
            self.assertEqual(self.end(process), (0, ""))
            self.assertEqual(self.driver.commands, [["record", "Desk", str(self.file)], ["record", "Desk"]])
            self.assertEqual(process.stdout.read(), f"{self.file} is complete\n")
            self.driver.commands.clear()

    def test_names_the_file_to_the_driver_by_its_whole_path(self):
        process = self.world.start("sh", "-c", "cd \"$1\" && exec \"$0\" record Desk ./a.events", PROGRAM,
                                   self.world.folder)
        wait_until(lambda: self.driver.commands, "the command")
        self.assertEqual(self.driver.commands, [["record", "Desk", f"{self.world.folder}/a.events"]])
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.end(process), (0, ""))

    def test_that_was_left_behind_is_ended_without_a_file(self):
        self.assertEqual(self.succeed("record", "Desk"), "")
        self.assertEqual(self.driver.commands, [["record", "Desk"]])
        self.refusals[2] = '"Desk" is not being recorded'
        self.expect(FAILURE, "is not being recorded", "record", "Desk")

    def test_that_the_driver_refuses_says_why_and_does_not_begin(self):
        self.refusals[3] = "/x already exists; choose another file"
        self.expect(FAILURE, "/x already exists", "record", "Desk", "/x")
        self.assertEqual(self.driver.commands, [["record", "Desk", "/x"]])

    def test_that_could_not_be_ended_as_it_should_is_not_called_complete(self):
        process, _ = self.record(self.file)
        self.refusals[2] = "the recording was not written completely; check the free disk space"
        process.send_signal(signal.SIGINT)
        status, errors = self.end(process)
        self.assertEqual(status, FAILURE)
        self.assertIn("not written completely", errors)
        self.assertNotIn("is complete\n", process.stdout.read())

    def test_ends_with_the_driver(self):
        process, _ = self.record(self.file)
        self.driver.end()
        status, errors = self.end(process)
        self.assertEqual(status, NO_DRIVER)
        self.assertIn("the driver quit", errors)

    def test_ends_with_the_bus(self):
        process, _ = self.record(self.file)
        self.world.stop_bus()
        status, errors = self.end(process)
        self.assertEqual(status, FAILURE)
        self.assertIn("lost the session bus", errors)
        self.world.start_bus()

    def test_needs_a_display_a_driver_and_a_file(self):
        self.expect_each(NO_DEVICE, [(("record", "Nowhere", "x"), "there is no display \"Nowhere\""),
                                     (("record", "Nowhere"), "there is no display \"Nowhere\"")])
        self.expect_each(USAGE, [(("record", "Desk", file), "needs a file name") for file in ("-", "")])
        self.assertEqual(self.driver.commands, [])
        self.driver.end()
        self.expect(NO_DRIVER, "no driver is running", "record", "Desk", "x")
        self.simulate("Desk")
        self.expect(FAILURE, "has no fingers", "record", "Desk", "x")
        self.connect_in_file("Desk", enabled=False)
        self.expect(NO_DRIVER, "driver on", "record", "Desk", "x")


class Watching(TouchctlTest):
    def watch(self):
        process = self.world.start(PROGRAM, "watch")
        lines = Lines(process.stdout)

        def is_watching():
            # What nobody hears is not sent to the bus, so this is asked for until somebody is seen to have heard it.
            self.probe()
            return lines.read()

        wait_until(is_watching, "the watch")
        return process, lines

    def probe(self):
        with Peer(self.world, "ProbeMessagePort"):
            pass

    def send(self, port, signature, *arguments):
        """Sends to a port of this very process, which answers meanwhile."""
        answers = []
        proxy = self.world.bus.get_object(NAME_PREFIX + port, PATH, introspect=False)
        proxy.Send(*arguments, dbus_interface=INTERFACE, signature=signature, reply_handler=answers.append,
                   error_handler=answers.append)
        wait_until(lambda: answers, "the answer")

    def messages(self, lines, count):
        def found():
            return [line for line in map(json.loads, lines.read()) if line["port"] != "ProbeMessagePort"]
        wait_until(lambda: len(found()) >= count, f"{count} lines")
        return found()

    def wait_for_end(self, process):
        wait_until(lambda: process.poll() is not None, "the watch's end")
        return process.returncode

    def test_prints_messages_and_the_ports_that_open_and_close(self):
        process, lines = self.watch()
        with Peer(self.world, PANE), Peer(self.world, DRIVER):
            self.send(PANE, "iay", 8, plistlib.dumps({"SelectedMenuItem": 2}))
            self.send(DRIVER, "iay", 0, plistlib.dumps({"DoubleClickRate": 1.0, "DeviceName": "Wänd"}))
            self.send(DRIVER, "iay", 99, b"\xff\xfe")
            self.send(DRIVER, "s", "text")

        self.assertEqual(self.messages(lines, 8), [
            {"port": PANE, "state": "opened"}, {"port": DRIVER, "state": "opened"},
            {"port": PANE, "id": 8, "name": "kMessageIDForSelectedMenuItem", "payload": {"SelectedMenuItem": 2}},
            {"port": DRIVER, "id": 0, "name": "kMessageIDForDoubleClickRate",
             "payload": {"DoubleClickRate": 1.0, "DeviceName": "Wänd"}},
            {"port": DRIVER, "id": 99, "undecodable bytes": 2},
            {"port": DRIVER, "malformed": "is to carry (i id, ay data)"},
            {"port": DRIVER, "state": "closed"}, {"port": PANE, "state": "closed"}])
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.wait_for_end(process), 0)

    def test_begins_with_the_ports_that_are_open(self):
        with Peer(self.world, PANE), Peer(self.world, DRIVER):
            _, lines = self.watch()
            found = self.messages(lines, 2)
            self.assertEqual(sorted(found, key=lambda line: line["port"]),
                             [{"port": PANE, "state": "open"}, {"port": DRIVER, "state": "open"}])

    def test_tells_of_each_port_that_a_connection_has_and_of_ports_alone(self):
        owner = dbus.bus.BusConnection(self.world.address)
        self.addCleanup(owner.close)
        for port in (PANE, DRIVER, "Driver"):
            owner.request_name(NAME_PREFIX + port)
        process, lines = self.watch()
        self.assertCountEqual(self.messages(lines, 2), [{"port": PANE, "state": "open"}, {"port": DRIVER, "state": "open"}])
        for port in (PANE, "Driver"):
            owner.release_name(NAME_PREFIX + port)
        call = dbus.lowlevel.MethodCallMessage(owner.get_unique_name(), PATH, INTERFACE, "Send")
        call.append(5, dbus.ByteArray(b""), signature="iay")
        self.world.bus.send_message(call)
        self.assertEqual(self.messages(lines, 4)[2:], [{"port": PANE, "state": "closed"}, {
            "port": DRIVER, "id": 5, "name": "kMessageIDForRightClick", "undecodable bytes": 0}])
        process.terminate()
        self.wait_for_end(process)

    def test_ends_by_a_signal_with_success_and_without_the_bus_with_a_failure(self):
        process, _ = self.watch()
        process.send_signal(signal.SIGTERM)
        self.assertEqual(self.wait_for_end(process), 0)

        process, _ = self.watch()
        self.world.stop_bus()
        self.assertEqual(self.wait_for_end(process), FAILURE)
        self.assertIn("lost the session bus", process.stderr.read())
        self.world.start_bus()

    def test_owns_no_name_and_answers_nobody(self):
        self.watch()
        self.assertFalse([name for name in self.world.bus.list_names() if str(name).startswith(NAME_PREFIX)])

    def test_ends_when_nobody_can_read_it(self):
        process = self.world.start("sh", "-c", "exec \"$0\" watch > /dev/full", PROGRAM)

        def has_ended():
            self.probe()
            return process.poll() is not None

        wait_until(has_ended, "the watch's end")
        self.assertEqual(process.returncode, FAILURE)


class ServiceManager(dbus.service.Object):
    """The user's service manager, which knows the driver's unit alone."""

    def __init__(self, world):
        self.bus = dbus.bus.BusConnection(world.address)
        self.bus.set_exit_on_disconnect(False)
        self.bus_name = dbus.service.BusName("org.freedesktop.systemd1", self.bus, do_not_queue=True)
        super().__init__(self.bus, "/org/freedesktop/systemd1/unit/kelvo_2dtouch_2ddriver_2eservice")
        self.properties = {"Result": "success", "NRestarts": dbus.UInt32(0)}

    def end(self):
        self.remove_from_connection()
        del self.bus_name
        self.bus.close()

    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        assert interface == "org.freedesktop.systemd1.Service", interface
        return self.properties[name]


class Doctor(TouchctlTest):
    def report(self):
        status, output, errors = self.ctl("doctor")
        self.assertEqual(errors, "")
        problems = re.findall(r"^  PROBLEM  (.*)$", output, re.MULTILINE)
        # Each problem has its fix.
        self.assertEqual(len(re.findall(r"^  PROBLEM  .*\n           fix: \S", output, re.MULTILINE)), len(problems))
        self.assertEqual(status, FINDINGS if problems else 0)
        return problems, output

    def test_finds_nothing_where_all_is_well(self):
        self.simulate("Desk")
        problems, output = self.report()
        self.assertEqual(problems, [])
        self.assertIn("the driver answers", output)
        self.assertIn("display 1, driver version 0.8.0.3", output)
        self.assertIn("No problems found.", output)

    def test_names_a_driver_that_does_not_run_and_one_that_hangs(self):
        self.assertEqual(self.report()[0], ["no driver is running, so changes have no effect"])
        self.simulate("Desk").send_signal(signal.SIGSTOP)
        self.assertEqual(self.report()[0], ["the driver is running but does not answer, so changes have no effect"])

    def test_names_a_driver_that_is_switched_off(self):
        self.connect_in_file("Desk", enabled=False)
        with Peer(self.world, DRIVER):
            self.assertEqual(self.report()[0], ["the driver is switched off"])

    def test_names_a_bus_that_is_not_there(self):
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"
        problems, output = self.report()
        self.assertEqual(problems, ["there is no session bus, or it does not answer"])
        self.assertIn("DBUS_SESSION_BUS_ADDRESS", output)

    def test_asks_the_driver_for_its_displays_and_names_that_there_is_none(self):
        self.connect_in_file("Desk")
        states = plistlib.dumps({"displays": {}, "refused": {}}).decode()
        driver = CommandedDriver(self.world, lambda words: (True, states))
        self.addCleanup(driver.end)
        with Peer(self.world, DRIVER):
            self.assertEqual(self.report()[0], ["no touch display is found"])
        self.assertEqual(driver.commands, [["states", "plist"]])

    def test_a_driver_that_knows_no_such_question_is_another_makers(self):
        self.connect_in_file("Desk")
        for answer in ((False, "there is no command"), (True, "nonsense"), (True, "")):
            driver = CommandedDriver(self.world, lambda words, answer=answer: answer)
            with Peer(self.world, DRIVER):
                self.assertEqual(self.report()[0], [])
            driver.end()

    def test_names_a_driver_that_its_watchdog_has_ended(self):
        self.simulate("Desk")
        unit = ServiceManager(self.world)
        self.addCleanup(unit.end)
        self.assertEqual(self.report()[0], [])
        unit.properties = {"Result": "watchdog", "NRestarts": dbus.UInt32(3)}
        self.assertEqual(self.report()[0], ["the driver hung, and its watchdog stopped it"])
        unit.properties = {"Result": "success", "NRestarts": dbus.UInt32(1)}
        problems, output = self.report()
        self.assertEqual(problems, [])
        self.assertIn("restarted, 1 time since", output)

    def test_names_damaged_files_and_values_of_wrong_kinds(self):
        with Peer(self.world, DRIVER):
            self.world.set_plist("Utilities.plist", {"CurrentDeviceType": ["Desk", "Wall"], "DriverEnable": True,
                                                     "SelectedMenuItem": "two"})
            self.world.set_plist("Settings_Desk.plist", {"DoubleClickRate": 7.0, "RotateMode": "x"})
            (self.world.preferences / "Settings_Wall.plist").write_bytes(b"damage")
            self.assertEqual(self.report()[0], [
                "SelectedMenuItem in Utilities.plist must be a whole number",
                "display 1: DoubleClickRate must be a number of seconds from 0.1 to 1",
                "display 1: RotateMode must be a whole number of quarter turns from 0 to 3",
                "the settings file of display 2 is damaged"])

    def test_advice_on_a_damaged_list_brings_its_displays_back(self):
        driver = self.simulate("Desk")
        self.succeed("set", "Desk", "rotation", "90")
        utilities = self.world.preferences / "Utilities.plist"
        utilities.write_bytes(b"damage")
        problems, output = self.report()
        self.assertEqual(problems, ["Utilities.plist is damaged"])
        fix = re.search(r"fix: repair it, or remove it: (rm .*), then restart the driver\n", output)[1]
        self.assertEqual(self.world.run("sh", "-c", fix), (0, "", ""))
        # Half of the advice is not enough, and what is left of it is said.
        problems, output = self.report()
        self.assertEqual(problems, ["the driver answers, but no display is listed as connected"])
        self.assertIn("restart the driver", output)

        driver.terminate()
        wait_until(lambda: driver.poll() is not None, "the driver's end")
        self.simulate("Desk")
        self.assertEqual(self.report()[0], [])
        self.assertEqual(self.succeed("get", "Desk", "rotation"), "90\n")

    def test_names_a_driver_that_answers_beside_a_list_without_displays(self):
        with Peer(self.world, DRIVER):
            expected = ["the driver answers, but no display is listed as connected"]
            self.assertEqual(self.report()[0], expected)
            self.connect_in_file()
            self.assertEqual(self.report()[0], expected)
            self.world.set_plist("Settings_Desk.plist", {})
            self.assertEqual(self.report()[0], expected)
        self.assertEqual(self.report()[0], ["no driver is running, so changes have no effect"])

    def test_recommends_nobody_the_simulator(self):
        outputs = [self.report()[1]]
        with Peer(self.world, DRIVER):
            outputs.append(self.report()[1])
        for output in outputs:
            self.assertNotIn("kelvo-touch-driver-sim", output)

    def test_names_what_may_not_be_read_once_and_calls_it_not_damaged(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {})
        for place, mode, expected in (
                ("Settings_Desk.plist", 0, "the settings file of display 1 is not readable and writable by its owner"),
                ("Utilities.plist", 0, "Utilities.plist is not readable and writable by its owner"),
                (".", 0, "the settings folder is not readable and writable by its owner"),
                (".", 0o300, "the settings folder is not readable and writable by its owner"),
                (".", 0o600, "the settings folder is not readable and writable by its owner"),
                ("..", 0, "the settings folder cannot be read (Permission denied)")):
            path = self.world.preferences / place
            before = path.stat().st_mode
            path.chmod(mode)
            with Peer(self.world, DRIVER):
                status, output, errors = self.world.run(*BOUND_BY_MODES, PROGRAM, "doctor")
            path.chmod(before)
            self.assertEqual((status, errors), (FINDINGS, ""), place)
            self.assertEqual(re.findall(r"^  PROBLEM  (.*)$", output, re.MULTILINE), [expected])
            self.assertNotIn("damaged", output)

    def test_names_a_list_that_holds_more_than_names(self):
        with Peer(self.world, DRIVER):
            for stranger in (7, "", "a/b"):
                self.connect_in_file("Desk", stranger)
                self.assertEqual(self.report()[0], [
                    "CurrentDeviceType in Utilities.plist contains something that is not a display name"])

    def test_names_too_large_a_file_and_a_folder_in_a_files_place(self):
        self.connect_in_file("Desk", "Wall")
        self.world.set_plist("Settings_Desk.plist", {})
        os.truncate(self.world.preferences / "Settings_Desk.plist", 2**28 + 1)
        (self.world.preferences / "Settings_Wall.plist").mkdir(mode=0o700)
        with Peer(self.world, DRIVER):
            self.assertEqual(self.report()[0], [
                "the settings file of display 1 is too large (more than 256 MiB)",
                "the settings file of display 2 cannot be read (not a regular file)"])

    def test_names_files_that_others_may_change_and_that_the_owner_may_not(self):
        self.connect_in_file("Desk")
        self.world.set_plist("Settings_Desk.plist", {})
        (self.world.preferences / "Utilities.plist").chmod(0o666)
        (self.world.preferences / "Settings_Desk.plist").chmod(0o400)
        self.world.preferences.chmod(0o777)
        with Peer(self.world, DRIVER):
            self.assertEqual(self.report()[0], [
                "the settings folder can be changed by other users", "Utilities.plist can be changed by other users",
                "the settings file of display 1 is not readable and writable by its owner"])

    def test_names_a_file_in_the_folders_place_and_a_system_without_gestures(self):
        self.world.preferences.parent.mkdir(parents=True)
        self.world.preferences.write_text("")
        self.world.environment["KELVO_SYSTEM_VERSION"] = "0x1059"
        with Peer(self.world, DRIVER):
            self.assertEqual(self.report()[0], [
                "system version 0x1059 has no gestures", "~/Library/Preferences/KelvoTouchDisplay is not a folder"])

    def test_tells_nothing_private(self):
        home = self.world.folder / getpass.getuser() / socket.gethostname()
        self.world.environment.update(HOME=str(home), KELVO_LOCAL_LIBRARY=str(home / "Library"))
        self.world.preferences = home / "Library/Preferences/KelvoTouchDisplay"
        serial = "SN-0815-4711"
        self.connect_in_file(serial)
        self.world.set_plist(f"Settings_{serial}.plist", {"RotateMode": 77})
        damaged = self.world.preferences / f"Settings_{serial}-2.plist"
        damaged.write_bytes(b"damage")
        damaged.chmod(0o666)

        problems, output = self.report()

        self.assertEqual(len(problems), 4)
        for secret in (getpass.getuser(), socket.gethostname(), serial, str(self.world.folder), self.world.address):
            self.assertNotIn(secret, output)


class Help(TouchctlTest):
    def test_there_is_one_for_each_command_which_the_manual_page_knows_too(self):
        page = (pathlib.Path(SOURCE) / "docs/man/kelvo-touchctl.1").read_text(encoding="utf-8")
        everything = self.succeed("--help")
        helps = self.succeed_each([(command, "--help") for command in COMMANDS])
        for command, text in zip(COMMANDS, helps, strict=True):
            self.assertIn(f"\n  {command} ", everything)
            self.assertIn(f"Usage: kelvo-touchctl {command}", text)
            self.assertRegex(page, rf"(?m)^\.B {command}\b|^\.BI? \"?{command} ")
        keys = self.succeed("complete", "set", "Desk").splitlines()
        self.assertIn("rotation", keys)
        for key in keys:
            self.assertIn(key, helps[COMMANDS.index("set")])
            self.assertIn(key.replace("-", "\\-"), page)
        self.assertRegex(self.succeed("--version"), r"^kelvo-touchctl \d+\.\d+\.\d+\n$")

    DOCS = pathlib.Path(SOURCE) / "docs"

    def document(self, name):
        """The text of a document, a manual page without what sets its type, on one line for each paragraph."""
        text = (self.DOCS / name).read_text(encoding="utf-8")
        if name.endswith(".1"):
            text = re.sub(r"\\f[RBI]", "", text).replace("\\-", "-").replace('" ', "").replace(' "', "")
            text = re.sub(r"(?m)^\.(B|I|BR|BI|IR|RI) ", "", text)
        return re.sub(r"(?<=[^\n|])\n(?=[^\n|.])", " ", text)

    def test_synopses_are_those_of_the_manual_page(self):
        page = re.sub(r"\\f[RBI]", "", (self.DOCS / "man/kelvo-touchctl.1").read_text(encoding="utf-8"))
        listed = [line.replace("\\-", "-") for line in re.findall(r"(?m)^\.TP\n\.B (.*)", page.split(".SH KEYS")[0])]
        usages = [text.splitlines()[0].removeprefix("Usage: kelvo-touchctl ").strip()
                  for text in self.succeed_each([(command, "--help") for command in COMMANDS])]
        self.assertEqual(listed[:-1], usages)

    def test_statuses_are_those_of_the_documents_in_the_same_words(self):
        [*helps, everything] = self.succeed_each([*((command, "--help") for command in COMMANDS), ("--help",)])
        statuses = re.findall(r"(?m)^  (\d)  (.*)$", everything.split("Exit status:\n")[1])
        self.assertEqual([int(number) for number, _ in statuses],
                         [0, FAILURE, USAGE, NO_DRIVER, NO_DEVICE, FINDINGS])
        for text in helps:
            self.assertEqual(re.findall(r"(?m)^  (\d)  (.*)$", text.split("Exit status:\n")[1]), statuses)

        page = self.document("man/kelvo-touchctl.1").split(".SH EXIT STATUS")[1].split(".PP")[0]
        listed = re.findall(r"\.TP (\d) (.*?)\.$", page.strip().replace("\n", " ").replace(" .TP", "\n.TP"), re.MULTILINE)
        self.assertEqual([(number, text[0].lower() + text[1:]) for number, text in listed], statuses)

        fleet = (self.DOCS / "FLEET.md").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"(?m)^\| (\d) \| ([^|]*) \|", fleet), statuses)

    def test_bounds_are_those_of_the_documents(self):
        text = self.succeed("set", "--help")
        spans = {key: re.search(rf"(?m)^  {key} .* ([\d.]+ to [\d.]+)$", text)[1]
                 for key in ("double-click-rate", "double-click-range", "right-click", "long-press")}
        pixels = re.search(r"(?m)^  calibration .* up to (\d+ by \d+)$", text)[1]
        width, height = pixels.split(" by ")

        page = self.document("man/kelvo-touchctl.1")
        for key, span in spans.items():
            self.assertRegex(page, rf"\.TP {key} (?:(?!\.TP).)*, {re.escape(span)}[.;]")
        self.assertIn(f"in pixels, up to {pixels}.", page)
        guide = self.document("USER-GUIDE.md")
        for words in (f"type a number from {spans['double-click-range']}.", f"from {spans['long-press']} seconds.",
                      f"The width is at most {width} and the height at most {height};"):
            self.assertIn(words, guide)
        driver = self.document("WRITING-A-DRIVER.md")
        for words in (f"seconds between the two clicks, {spans['double-click-rate']} |",
                      f"`DoubleClickRange`: {spans['double-click-range']},",
                      f"`RightClickTimeIntelval` real: seconds, {spans['long-press']}}} |",
                      f"`OSDHeight` real}}: pixels, up to {pixels} |"):
            self.assertIn(words, driver)

    def test_bounds_of_the_help_are_kept(self):
        self.simulate("Desk")
        text = self.succeed("set", "--help")
        for key, prefix in (("double-click-rate", ()), ("double-click-range", ()), ("right-click", ("on",)),
                            ("long-press", ())):
            least, most = re.search(rf"(?m)^  {key} .* ([\d.]+) to ([\d.]+)$", text).groups()
            step = 1 if key == "double-click-range" else 0.01
            for value in (least, most):
                self.succeed("set", "Desk", key, *prefix, value)
            self.expect_each(USAGE, [(("set", "Desk", key, *prefix, f"{value:g}"), f"from {least} to {most}")
                                     for value in (float(least) - step, float(most) + step)])
        width, height = map(int, re.search(r"up to (\d+) by (\d+)\n", text).groups())
        self.succeed("set", "Desk", "calibration", "manual", f"{width}", f"{height}")
        self.expect_each(USAGE, [(("set", "Desk", "calibration", "manual", f"{width + over}", f"{height + 1 - over}"),
                                  "a number of pixels from 0 to") for over in (0, 1)])

    def test_manual_pages_are_without_a_warning(self):
        # As they are installed, since one may stand for another.
        installed = self.world.folder / "man"
        for page in (pathlib.Path(SOURCE) / "docs/man").iterdir():
            section = installed / f"man{page.suffix[1:]}"
            section.mkdir(parents=True, exist_ok=True)
            (section / page.name).symlink_to(page)
        for page in sorted(installed.glob("man*/*")):
            result = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-Kutf8", "-z", str(page)], capture_output=True,
                                    text=True, check=True, cwd=installed)
            self.assertEqual(result.stderr, "", page.name)

    def test_bounds_are_those_of_the_panes_forms(self):
        form = ElementTree.parse(pathlib.Path(SOURCE) / "qt/forms/TDSettingViewCtl.ui")
        text = self.succeed("set", "--help")

        def bounds(slider):
            widget = form.find(f".//widget[@name='{slider}']")
            numbers = {name: float(widget.find(f"property[@name='{name}']/number").text)
                       for name in ("minimum", "maximum")}
            steps = widget.find("property[@name='stepsPerUnit']/number")
            scale = float(steps.text) if steps is not None else 1.0
            return numbers["minimum"] / scale, numbers["maximum"] / scale

        slowest, fastest = (round(1.0 - value, 2) for value in bounds("rateSlider_"))
        self.assertIn(f"{fastest:g} to {slowest:g}\n", text)
        for slider in ("rangeSlider_", "longPressInterval_"):
            self.assertIn("{:g} to {:g}\n".format(*bounds(slider)), text)


class Completion(TouchctlTest):
    """Each shell is asked what may follow a line that was typed so far."""

    COMPLETIONS = pathlib.Path(SOURCE) / "peers/touchctl/completions"

    BASH = """source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kelvo_touchctl
              printf '%s\\n' "${COMPREPLY[@]}" """
    # What a widget would be given, since a shell that nobody types to has none.
    ZSH = """function compadd { print -rl -- "${candidates[@]}" }; function _files { print -r -- "(files)" }
             function ask { local -a words; words=("$@"); local -i CURRENT=$#; source $file }
             file=$1; shift; ask "$@" """

    def setUp(self):
        super().setUp()
        self.connect_in_file("Desk", "Wall 2")
        self.world.set_plist("Settings_Attic.plist", {})
        bin_folder = pathlib.Path(PROGRAM).parent
        self.world.environment["PATH"] = f"{bin_folder}:{os.environ['PATH']}"
        self.world.environment.update(TERM="dumb", LC_ALL="C.UTF-8")

    def ask(self, *command):
        status, output, errors = self.world.run(*command)
        self.assertEqual((status, errors), (0, ""))
        return output.splitlines()

    def test_bash(self):
        def after(*words):
            return self.ask("bash", "--norc", "-c", self.BASH, "bash", self.COMPLETIONS / "kelvo-touchctl.bash",
                            "kelvo-touchctl", *words)

        self.assertEqual(after(""), list(COMMANDS))
        self.assertEqual(after("s"), ["show", "set"])
        self.assertEqual(after("list", ""), ["--json", "--help"])
        self.assertEqual(after("watch", ""), ["--help"])
        self.assertEqual(after("import", "Desk", "--"), ["--force", "--help"])
        self.assertEqual(after("--v"), ["--version"])
        self.assertEqual(after("gesture", "Desk", "Rotate", "off", ""), ["RotateWithTwoFingers"])
        self.assertEqual(after("get", "A"), ["Attic"])
        self.assertEqual(after("get", "Desk", "d"), ["double-click-rate", "double-click-range", "driver-version"])
        self.assertEqual(after("show", "--json", "D"), ["Desk"])
        self.assertEqual(after("set", ""), ["Desk", "Wall\\ 2"])
        self.assertEqual(after("show", "A"), ["Attic"])
        self.assertEqual(after("driver", ""), ["on", "off"])
        self.assertEqual(after("set", "Desk", "finger", ""), ["touch", "pointer"])
        self.assertEqual(after("set", "\"W"), ["Wall 2"])
        self.assertEqual(after("set", "Wall\\ 2", "r"), ["right-click", "rotation"])
        self.assertEqual(after("set", "\"Wall 2\"", "rotation", "1"), ["180"])
        self.assertEqual(after("gesture", "Desk", "App"), ["AppExpos\u00e9"])
        self.assertEqual(after("gesture", "Desk", "Rotate", ""), ["on", "off", "RotateWithTwoFingers"])
        self.assertEqual(after("import", "Desk", ""), [""])
        self.assertEqual(after("record", ""), ["Desk", "Wall\\ 2"])
        self.assertEqual(after("record", "Desk", ""), [""])

    def test_zsh(self):
        def after(*words):
            return self.ask("zsh", "-f", "-c", self.ZSH, "zsh", self.COMPLETIONS / "_kelvo-touchctl", "kelvo-touchctl",
                            *words)

        self.assertEqual(after(""), list(COMMANDS))
        self.assertEqual(after("set", ""), ["Desk", "Wall 2"])
        self.assertEqual(after("export", ""), ["Desk", "Wall 2", "Attic"])
        self.assertEqual(after("doctor", ""), ["--help"])
        self.assertEqual(after("set", "-"), ["--force", "--help"])
        self.assertEqual(after("get", "Wall\\ 2", "driver")[-1], "driver-version")
        self.assertEqual(after("set", "Wall\\ 2", "rotation", ""), ["0", "90", "180", "270"])
        self.assertIn("AppExpos\u00e9", after("gesture", "Desk", ""))
        self.assertEqual(after("gesture", "'Wall 2'", "Rotate", ""), ["on", "off", "RotateWithTwoFingers"])
        self.assertEqual(after("import", "Desk", ""), ["(files)"])

    def test_fish(self):
        def after(line):
            return self.ask("fish", "--no-config", "-c", "source $argv[1]; complete --do-complete $argv[2]",
                            self.COMPLETIONS / "kelvo-touchctl.fish", line)

        self.assertEqual(after("kelvo-touchctl s"), ["set", "show"])
        self.assertEqual(after("kelvo-touchctl list "), ["--help", "--json"])
        self.assertEqual(after("kelvo-touchctl show --j"), ["--json"])
        self.assertEqual(after("kelvo-touchctl get Desk dri"), ["driver-version"])
        self.assertEqual(after("kelvo-touchctl set D"), ["Desk"])
        self.assertEqual(after("kelvo-touchctl set W"), ["Wall 2"])
        self.assertEqual(after("kelvo-touchctl set 'Wall 2' ro"), ["rotation"])
        self.assertEqual(after("kelvo-touchctl set Wall\\ 2 rotation 1"), ["180"])
        self.assertEqual(after("kelvo-touchctl gesture Desk App"), ["AppExpos\u00e9"])
        self.assertEqual(after("kelvo-touchctl gesture Desk Rotate o"), ["off", "on"])

    def test_nothing_is_offered_where_nothing_is_known(self):
        for words in (("set", "Nowhere", "unknown"), ("gesture", "Desk", "Rotate", "fast"), ("import", "Desk"),
                      ("dance", ""), ("complete", "")):
            self.assertEqual(self.succeed("complete", "--", *words), "")
        (self.world.preferences / "Utilities.plist").write_bytes(b"damage")
        self.assertEqual(self.succeed("complete", "--", "set"), "")


if __name__ == "__main__":
    unittest.main()
