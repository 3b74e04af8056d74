"""A process that saves in a loop is killed at random moments, while others read: never a torn file, never an empty one,
and never a leftover that the next save trips over or that stays."""

import pathlib
import plistlib
import random
import select
import subprocess
import sys
import tempfile
import time
import unittest

from scale import figure, times
from watching import FileWatch

SAVER = sys.argv.pop(1)
KILLS = times(20, 1000)
PATIENCE_SECONDS = 30
# Long enough for some saves, short enough to come in the middle of one.
LONGEST_LIFE_SECONDS = 0.02


def problem_of(contents):
    """What is wrong with a file that a saver saved; none when it is whole."""
    try:
        items = plistlib.loads(contents)
    except Exception as error:  # Any damage at all is the same to a reader.
        return f"{len(contents)} bytes that are no property list: {error}"
    if items["Begin"] != items["End"] or len(items["Filling"]) != items["Begin"] * 7919 % 60000:
        return f"of two saves: {items['Begin']}, {items['End']}, {len(items['Filling'])}"
    return None if items["Own"] == "kept" else "without the key that nobody writes"


class Reader(FileWatch):
    """Reads a file again and again."""

    def __init__(self, path):
        super().__init__(path)
        self.reads = 0

    def run(self):
        while not self.is_stopped:
            try:
                problem = problem_of(self.path.read_bytes())
            except OSError as error:
                problem = str(error)
            if problem:
                self.problems.append(problem)
            self.reads += 1


class Crash(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-test-")))
        self.file = self.folder / "Settings_Desk.plist"
        self.file.write_bytes(plistlib.dumps({"Own": "kept", "Begin": 0, "Filling": "", "End": 0}))

    def save_until_killed(self, count=1):
        """Starts savers and kills them at a moment after each has saved once, or is about to."""
        savers = [subprocess.Popen([SAVER, str(self.file)], stdout=subprocess.PIPE) for _ in range(count)]
        for saver in savers:
            readable, _, _ = select.select([saver.stdout], [], [], PATIENCE_SECONDS)
            self.assertTrue(readable and saver.stdout.read(1), "a saver saves in spite of what the last one left")
        time.sleep(random.uniform(0, LONGEST_LIFE_SECONDS))
        for saver in savers:
            self.assertIsNone(saver.poll(), "a saver does not end by itself")
            saver.kill()
            saver.wait()
            saver.stdout.close()

    def leftovers(self):
        return sorted(entry.name for entry in self.folder.iterdir() if entry != self.file)

    def check_that_a_save_clears_up(self):
        """Every leftover goes with the next save, but for one that the saver itself is writing."""
        saver = subprocess.Popen([SAVER, str(self.file)], stdout=subprocess.PIPE)
        self.assertTrue(saver.stdout.read(2))
        self.assertLessEqual(len(self.leftovers()), 1)
        saver.kill()
        saver.wait()
        saver.stdout.close()
        self.assertLessEqual(len(self.leftovers()), 1)

    def test_one_that_saves_is_killed(self):
        most = 0
        killed_in_a_save = 0
        with Reader(self.file) as reader:
            for _ in range(KILLS):
                self.save_until_killed()
                most = max(most, len(self.leftovers()))
                killed_in_a_save += bool(self.leftovers())
        self.assertEqual(reader.problems, [])
        self.assertGreater(reader.reads, KILLS)
        self.assertLessEqual(most, 1)
        self.assertIsNone(problem_of(self.file.read_bytes()))
        self.check_that_a_save_clears_up()
        figure("kills", KILLS)
        figure("kills that left a temporary file", killed_in_a_save)
        figure("temporary files that ever lay there at once", most)
        figure("reads meanwhile, each of a whole file", reader.reads)
        figure("saves that reached the file", plistlib.loads(self.file.read_bytes())["Begin"])

    def test_several_that_save_the_same_file_are_killed(self):
        savers = 4
        rounds = times(3, 100)
        most = 0
        with Reader(self.file) as reader:
            for _ in range(rounds):
                self.save_until_killed(savers)
                most = max(most, len(self.leftovers()))
        self.assertEqual(reader.problems, [])
        self.assertLessEqual(most, savers)
        self.check_that_a_save_clears_up()
        figure("kills of four that save the same file", savers * rounds)
        figure("temporary files of theirs that ever lay there at once", most)


if __name__ == "__main__":
    unittest.main()
