"""The driver that the guide for their authors shows: against the command line, and against the real window, which is
operated as the tour does it."""

import importlib.machinery
import importlib.util
import json
import pathlib
import plistlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

import yaml
from peers import Lines, Peer, World, wait_until

PROGRAM, BUILD, SOURCE = sys.argv[1:4]
del sys.argv[1:4]

EXAMPLE = pathlib.Path(SOURCE) / "docs/examples/driver.py"
DRIVER = "TouchDisplayDriverMessagePort"
PANE = "PreferenceMessagePort"

loader = importlib.machinery.SourceFileLoader("tour", str(pathlib.Path(SOURCE) / "scripts/tour"))
tour = importlib.util.module_from_spec(importlib.util.spec_from_loader("tour", loader))
loader.exec_module(tour)


class AgainstTheCommandLine(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())

    def start(self, name="Desk"):
        process = self.world.start(sys.executable, "-B", EXAMPLE, name)
        self.errors = Lines(process.stderr)
        wait_until(lambda: self.world.has_owner(DRIVER) and self.connected() == [name], "the driver")
        return process

    def connected(self):
        try:
            return self.world.plist("Utilities.plist")["CurrentDeviceType"]
        except FileNotFoundError:
            return None

    def ctl(self, *words):
        status, output, errors = self.world.run(PROGRAM, *words)
        self.assertEqual((status, errors), (0, ""), words)
        return output

    def test_stores_every_change_and_keeps_what_else_the_files_hold(self):
        self.world.set_plist("Utilities.plist", {"Own": 7, "DriverEnable": True, "CurrentDeviceType": []})
        self.world.set_plist("Settings_Desk.plist", {"Own": 8, "DriverVersion": "0"})
        self.start()
        for words in (("set", "Desk", "double-click-rate", "0.3"), ("set", "Desk", "rotation", "180"),
                      ("set", "Desk", "right-click", "on", "1.5"), ("set", "Desk", "calibration", "manual", "800", "600"),
                      ("gesture", "Desk", "Rotate", "off")):
            self.ctl(*words)

        settings = json.loads(self.ctl("show", "Desk", "--json"))
        self.assertEqual(len(settings.pop("GestureArray")), 13)
        self.assertEqual(settings, {
            "Own": 8, "DriverVersion": "0", "DoubleClickRate": 0.3, "RotateMode": 2,
            "RightClick": {"RightClickIsEnable": True, "RightClickTimeIntelval": 1.5}, "AutoCalibration": False,
            "ManualCalibration": {"OSDWidth": 800.0, "OSDHeight": 600.0}})
        self.assertEqual(self.world.plist("Utilities.plist")["Own"], 7)
        self.assertIn("No problems found.", self.ctl("doctor"))

    def test_begins_in_a_new_home_and_ends_with_its_display_disconnected(self):
        heard = []
        with Peer(self.world, PANE, lambda number, data: heard.append((number, plistlib.loads(data), self.connected()))):
            process = self.start("Wänd 2")
            wait_until(lambda: len(heard) == 1, "the pane to hear of the display")
            process.send_signal(signal.SIGTERM)
            wait_until(lambda: process.poll() is not None and len(heard) == 2, "the driver's end")
        self.assertEqual(process.returncode, 0)
        self.assertEqual(heard, [(7, {"IsConnected": True}, ["Wänd 2"]), (7, {"IsConnected": False}, [])])
        self.assertEqual(self.world.plist("Settings_Wänd 2.plist"), {
            "DoubleClickRange": 32, "DoubleClickRate": 0.5, "RotateMode": False, "DriverVersion": "1.0"})

    def test_tells_the_pane_of_changes_that_are_not_its_own(self):
        process = self.start()
        # By its answer it has told of its display.
        self.world.send(DRIVER, 99, b"")
        with Peer(self.world, PANE) as pane:
            # This process has the pane's port, so what it sends, on whatever connection, is the pane's own.
            self.assertEqual(self.world.send(DRIVER, 3, {"RotateMode": 3, "DeviceName": "Desk"}), b"")
            wait_until(lambda: self.world.plist("Settings_Desk.plist")["RotateMode"] == 3, "the pane's own change")
            self.ctl("set", "Desk", "rotation", "90")
            self.assertEqual(self.world.plist("Settings_Desk.plist")["RotateMode"], 1)
            self.world.send(DRIVER, 3, b"damage")
            self.ctl("set", "Desk", "rotation", "0")
            process.send_signal(signal.SIGTERM)
            wait_until(lambda: process.poll() is not None and len(pane.received) >= 3, "the driver's end")
        self.assertEqual([(number, plistlib.loads(data)) for number, data in pane.received],
                         [(7, {"IsConnected": is_connected}) for is_connected in (True, True, False)])

    def test_lives_on_whatever_it_is_sent(self):
        self.start()
        before = self.world.plist("Settings_Desk.plist")
        for number, payload in ((3, b"damage"), (3, [1]), (3, {"RotateMode": 1}), (99, {"DeviceName": "Desk"}),
                                (3, {"RotateMode": 1, "DeviceName": "../Desk"})):
            self.assertEqual(self.world.send(DRIVER, number, payload), b"")
        self.ctl("set", "Desk", "rotation", "90")
        self.assertEqual(self.world.plist("Settings_Desk.plist"), {**before, "RotateMode": 1})


class AgainstTheWindow(unittest.TestCase):
    def test_stores_what_is_clicked(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-test-"))
        stage = self.enterContext(tour.Stage(pathlib.Path(BUILD).resolve(), pathlib.Path(folder) / "pictures"))
        utilities = stage.home / "Library/Preferences/KelvoTouchDisplay/Utilities.plist"
        utilities.parent.mkdir(parents=True)
        utilities.write_bytes(plistlib.dumps({"DriverEnable": True, "SelectedMenuItem": tour.TABS.index("touch")}))
        stage.start(sys.executable, "-B", EXAMPLE, tour.DISPLAY)
        tour.wait_for(lambda: stage.utilities().get("CurrentDeviceType") == [tour.DISPLAY], "the driver")
        subprocess.run([PROGRAM, "set", tour.DISPLAY, "double-click-rate", "0.9"], check=True)
        stage.start_window()

        def is_changed():
            # A click on a window that the desktop is still placing may go beside it.
            stage.click("Normal speed")
            return stage.settings(tour.DISPLAY)["DoubleClickRate"] == 0.5

        tour.wait_for(is_changed, "the change")


class Guide(unittest.TestCase):
    def test_shows_the_driver_as_it_is_and_names_every_port_id_and_key(self):
        guide = (pathlib.Path(SOURCE) / "docs/WRITING-A-DRIVER.md").read_text(encoding="utf-8")
        names = (pathlib.Path(SOURCE) / "src/TDNames.h").read_text(encoding="utf-8")
        self.assertIn(EXAMPLE.read_text(encoding="utf-8"), guide)
        for port in re.findall(r"PortName\[\] = \"(\w+)\"", names):
            self.assertIn(port, guide)
        for name, number in re.findall(r"^    (kMessage\w+|COMMAND\w+) = (\d+),", names, re.MULTILINE):
            self.assertRegex(guide, rf"\| {number} \| `{name}` \|")
        for key in re.findall(r"= \"(\w+)\";", names.split("namespace keys")[1].split("}")[0]):
            self.assertIn(f"`{key}`", guide)

    def test_playbook_for_many_machines_is_sound_and_calls_the_command_as_it_is(self):
        fleet = (pathlib.Path(SOURCE) / "docs/FLEET.md").read_text(encoding="utf-8")
        [play] = yaml.safe_load(re.search(r"```yaml\n(.*?)```", fleet, re.DOTALL)[1])
        task = next(task for task in play["tasks"] if "ansible.builtin.command" in task)
        self.assertEqual(task["ansible.builtin.command"]["argv"],
                         ["kelvo-touchctl", "import", "{{ display }}", "{{ profile }}"])
        self.assertLessEqual({"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"}, set(task["environment"]))
        self.assertEqual(task["become_user"], "{{ display_user }}")


if __name__ == "__main__":
    unittest.main()
