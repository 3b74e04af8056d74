"""Pane, driver simulator and a third program merge their keys into one file at the same time, while the status-bar
utility and others read it. There is no lock: of two merges that began with the same file the later one wins, and what
the other wrote is gone until it is written again. That is all that is lost: every version of the file is whole, holds
the keys that nobody wrote, and has for each key a value that somebody wrote."""

import plistlib
import sys
import threading
import time
import unittest

from pane import PaneCase
from peers import NAME_PREFIX, wait_until
from scale import figure, times
from watching import FileWatch

PaneCase.program, SIMULATOR, UTILITY, SAVER = sys.argv[1:5]
del sys.argv[1:5]

SECONDS = times(1, 60)
FOREIGN = {"Own": "kept", "Nested": {"Unknown": [1, 2.5, True, b"data"]}}


class Reader(FileWatch):
    """Reads the file again and again and keeps what it was."""

    def __init__(self, path):
        super().__init__(path)
        self.versions = 0
        self.set_back = 0
        self.seen = {"SelectedMenuItem": set(), "DriverEnable": set(), "Begin": set()}

    def run(self):
        before = None
        last = 0
        while not self.is_stopped:
            contents = self.path.read_bytes()
            if contents == before:
                continue
            before = contents
            self.versions += 1
            try:
                items = plistlib.loads(contents)
                self.problems += self.problems_of(items)
            except Exception as error:  # Any damage at all is the same to a reader.
                self.problems.append(f"{len(contents)} bytes that are no property list: {error}")
                continue
            self.set_back += items["Begin"] < last
            last = items["Begin"]
            for key, values in self.seen.items():
                values.add(items[key])

    def has_seen_all_write(self):
        """Whether enough was seen of each writer; on a machine that does much else that takes its time."""
        return (len(self.seen["SelectedMenuItem"]) > 1 and self.seen["DriverEnable"] == {True, False}
                and len(self.seen["Begin"]) > 10)

    @staticmethod
    def problems_of(items):
        expected = {
            "a foreign key": all(items.get(key) == value for key, value in FOREIGN.items()),
            "SelectedMenuItem": items["SelectedMenuItem"] in (0, 1, 2, 3),
            "DriverEnable": items["DriverEnable"] in (True, False),
            "CurrentDeviceType": items["CurrentDeviceType"] == ["Desk"],
            "SelectDeviceName": items.get("SelectDeviceName", "Desk") == "Desk",
            "IsShowStatuMenu": items["IsShowStatuMenu"] is True,
            "the keys of one merge": items["Begin"] == items["End"]
            and len(items["Filling"]) == items["Begin"] * 7919 % 60000}
        return [f"{what} in {items}" for what, holds in expected.items() if not holds]


class Writers(PaneCase):
    def setUp(self):
        super().setUp()
        self.world.set_utilities("Desk", Begin=0, Filling="", End=0, **FOREIGN)

    def command(self, *words):
        proxy = self.world.bus.get_object(NAME_PREFIX + "Driver", "/com/kelvo/TouchDisplay/Driver",
                                          introspect=False)
        succeeded, text = proxy.Perform(words, dbus_interface=NAME_PREFIX + "Driver", signature="as",
                                        timeout=60)
        self.assertTrue(succeeded, text)

    def test_of_one_file_lose_no_more_than_the_last_one_wins(self):
        self.start_pane()
        simulator = self.world.start(SIMULATOR, "run", "--connect", "Desk")
        self.assertIn("Desk", simulator.stdout.readline())
        self.world.start(UTILITY, "--session-start")
        wait_until(lambda: self.world.has_owner("StatusBarMessagePort"), "the utility")
        before = self.world.plist("Utilities.plist")
        self.assertEqual({key: before[key] for key in FOREIGN}, FOREIGN)

        rounds = 0
        with Reader(self.file) as reader:
            saver = self.world.start(SAVER, self.file)
            # Its dots are nobody's to read.
            threading.Thread(target=saver.stdout.read, daemon=True).start()
            end = time.monotonic() + SECONDS
            while time.monotonic() < end or not reader.has_seen_all_write():
                self.command("show-tab", str(rounds % 4))
                self.command("disable" if rounds % 2 else "enable")
                rounds += 1
                self.log.read()
            self.assertIsNone(saver.poll())
            saver.kill()
            saver.wait()
            self.wait_handled()
        self.assertEqual(reader.problems, [])

        # Each of them can still write, and what one writes alone stays.
        self.command("enable")
        self.check_saves(1)
        self.check_saves(3)
        self.assertIs(self.world.plist("Utilities.plist")["DriverEnable"], True)
        self.assertEqual(self.names(), ["Settings_Desk.plist", "Utilities.plist"])
        figure("seconds of writing, commands to the simulator, merges by the third program",
               (SECONDS, 2 * rounds, max(reader.seen["Begin"])))
        figure("versions of the file that were read, each of them whole", reader.versions)
        figure("versions in which a later merge had set an earlier one back", reader.set_back)


if __name__ == "__main__":
    unittest.main()
