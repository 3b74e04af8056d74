"""The calibration tool as a process on a screen, beside the simulated driver."""

import plistlib
import subprocess
import sys
import unittest

from peers import Lines, World, wait_until

TOOL, SIMULATOR, TOUCHCTL, LIBRARY = sys.argv[1:5]
del sys.argv[1:5]

SUCCESS, FAILURE, USAGE, _, NO_DEVICE = range(5)


class CalibrationTool(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        # The toolkit's platform libraries leak at exit.
        self.world.environment.update(KELVO_LOCAL_LIBRARY=LIBRARY, QT_QPA_PLATFORM="xcb",
                                      ASAN_OPTIONS="detect_leaks=0", LC_ALL="C.UTF-8", LANGUAGE="")
        self.stored = self.world.preferences / "advanceCalibrationPoints.plist"

    def simulate(self):
        self.simulator = self.world.start(SIMULATOR, "run", "--connect", "Desk")
        self.printed = Lines(self.simulator.stdout)
        wait_until(self.printed.read, "the simulator's first line")

    def run_to_end(self, *words):
        return subprocess.run(words, env=self.world.environment, text=True, timeout=60, capture_output=True)

    def is_watched(self):
        """Whether fingers lead to nothing, since somebody watches them."""
        before = len(self.printed.lines)
        for places in (("0.5,0.5",), ()):
            self.run_to_end(SIMULATOR, "contacts", "Desk", *places)
        self.printed.read()
        return len(self.printed.lines) == before

    def window(self):
        found = self.run_to_end("xdotool", "search", "--onlyvisible", "--name", "Calibrate touchscreen")
        return found.stdout.split()

    def test_escape_leaves_everything_as_it_was(self):
        self.simulate()
        tool = self.world.start(TOOL, "Desk")
        wait_until(self.window, "the window")
        wait_until(self.is_watched, "the tool to watch the display")
        self.run_to_end("xdotool", "key", "Escape")
        self.assertEqual(tool.wait(30), FAILURE)
        self.assertFalse(self.stored.exists())
        wait_until(lambda: not self.is_watched(), "the display to be given back")

    def test_one_that_is_killed_changes_nothing(self):
        self.simulate()
        self.stored.write_bytes(plistlib.dumps({"Desk": {"Matrix": [1.0, 0.0, 0.1, 0.0, 1.0, 0.0]}}))
        before = self.stored.read_bytes()
        tool = self.world.start(TOOL)
        wait_until(self.window, "the window")
        wait_until(self.is_watched, "the tool to watch the display")
        tool.kill()
        tool.wait(30)
        self.assertEqual(self.stored.read_bytes(), before)
        wait_until(lambda: not self.is_watched(), "the display to be given back")

    def test_the_command_line_starts_it_for_a_display_that_is_connected(self):
        self.simulate()
        command = self.world.start(TOUCHCTL, "calibrate", "Desk", "--precise")
        wait_until(self.window, "the window")
        self.run_to_end("xdotool", "key", "Escape")
        self.assertEqual(command.wait(30), FAILURE)
        self.assertEqual(self.run_to_end(TOUCHCTL, "calibrate", "Nowhere").returncode, NO_DEVICE)
        self.world.environment["KELVO_LOCAL_LIBRARY"] = "/nowhere"
        missing = self.run_to_end(TOUCHCTL, "calibrate", "Desk")
        self.assertEqual((missing.returncode, missing.stderr.count("\n")), (FAILURE, 1))
        self.assertIn("cannot start", missing.stderr)

    def test_what_it_is_not_asked_for_is_refused(self):
        for words in (("--often",), ("Desk", "Other"), ("--", "--precise", "Other")):
            refused = self.run_to_end(TOOL, *words)
            self.assertEqual(refused.returncode, USAGE, words)
            self.assertIn("unknown argument", refused.stderr)
        self.assertIn("Usage: CalibrationTool", self.run_to_end(TOOL, "--help").stdout)
        self.assertRegex(self.run_to_end(TOOL, "--version").stdout, r"^CalibrationTool \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
