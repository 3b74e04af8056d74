"""A window that is open while another program changes settings: it shows the change, and its own next one keeps it.
Takes the settings window, the driver simulator and the command line."""

import sys
import unittest

import pyatspi

from peers import Lines, wait_until
from stage import OnStage

WINDOW, SIMULATOR, COMMAND_LINE = sys.argv[1:4]
del sys.argv[1:4]

DISPLAY = "Kelvo 24"
TOUCH_TAB = 1
GESTURES_PAGE = "Gestures"
LAUNCHPAD, MISSION_CONTROL = "Launchpad", "Mission Control"


class OpenWindow(OnStage):
    def test_shows_what_a_command_changed_and_does_not_undo_it(self):
        self.world.set_utilities(SelectedMenuItem=TOUCH_TAB)
        simulator = self.world.start(SIMULATOR, "run", "--connect", DISPLAY)
        lines = Lines(simulator.stdout)
        wait_until(lines.read, "the simulator's first line")
        self.screen.operate(self.world.start(WINDOW))
        self.screen.click(GESTURES_PAGE)
        wait_until(lambda: self.is_on(LAUNCHPAD), "the gesture that is on")

        self.command("gesture", DISPLAY, LAUNCHPAD, "off")
        wait_until(lambda: not self.is_on(LAUNCHPAD), "the window to show the change")

        self.screen.click(MISSION_CONTROL)
        wait_until(lambda: not self.stored("MissionControl"), "the window's own change to be stored")
        self.assertFalse(self.stored("Launchpad"))

    def is_on(self, name):
        return self.screen.state_of(name, pyatspi.STATE_CHECKED)

    def command(self, *words):
        status, _, errors = self.world.run(COMMAND_LINE, *words)
        self.assertEqual((status, errors), (0, ""))

    def stored(self, gesture):
        records = self.world.plist(f"Settings_{DISPLAY}.plist")["GestureArray"]
        return next(record["IsEnable"] for record in records if record["Name"] == gesture)


if __name__ == "__main__":
    unittest.main()
