"""Runs the cases of a boot inside the machine, as root: prints a line for each on the port to the machine outside, and
leaves there what is needed to understand one that failed."""

import faulthandler
import pathlib
import subprocess
import sys
import time
import traceback
import unittest

import bench
import desk

# Longer than any case takes, but the one that is played for ten minutes.
HANGS_SECONDS = 900 if desk.IS_LONG else 300
# What holds on every desktop, and what is tried on one.
FOLDERS = {"xorg": ("desktop", "xorg"), "sway": ("desktop", "sway"), "window": ("window",)}
RESULTS = pathlib.Path("/run/results")
sys.path.append("/run/tests/support")


def open_port():
    (name,) = pathlib.Path("/sys/class/virtio-ports").glob("*/name")
    return open(f"/dev/{name.parent.name}", "w", buffering=1, encoding="utf-8")


def seconds_since_boot():
    return float(pathlib.Path("/proc/uptime").read_text().split()[0])


def write_journal(path):
    """What kernel, services and programs said until now."""
    with open(path, "w", encoding="utf-8") as journal:
        subprocess.run(["journalctl", "--no-pager", "--output=short-monotonic"], stdout=journal, check=False)


def take_picture(path):
    """Of the screen; none where there is none yet."""
    command = ["grim"] if desk.BOOT == "sway" else ["import", "-window", "root"]
    subprocess.run([*command, path], check=False, capture_output=True, timeout=60, env=desk.ENVIRONMENT)


class Result(unittest.TestResult):
    """One line a case, with how long it took; a failing one leaves the journal and a picture of the screen."""

    def __init__(self, port):
        super().__init__()
        self.port = port

    def startTest(self, test):
        super().startTest(test)
        # One that hangs says where, before the machine outside switches this one off.
        faulthandler.dump_traceback_later(HANGS_SECONDS, file=self.port)
        self.began = time.time()
        self.words = "ok"

    def stopTest(self, test):
        print(f"{self.words}: {sentence_of(test)} ({time.time() - self.began:.1f} s)", file=self.port)
        super().stopTest(test)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self.words = f"skipped, {reason}"

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self.note(test, self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self.note(test, self.errors[-1][1])

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err:
            self.note(test, f"{subtest}\n{self._exc_info_to_string(err, test)}")

    def note(self, test, trace):
        self.words = "FAILED"
        print(f"FAILED: {sentence_of(test)}\n{trace}", file=self.port)
        name = getattr(test, "_testMethodName", "preparation")
        write_journal(RESULTS / f"{name}.journal")
        take_picture(RESULTS / f"{name}.png")


def sentence_of(test):
    return str(getattr(test, "_testMethodName", test)).removeprefix("test_").replace("_", " ")


def cases_of(boot, words):
    """The cases whose names have one of the words in them, or all."""
    cases = unittest.TestSuite()
    for folder in FOLDERS[boot]:
        loader = unittest.TestLoader()
        if words:
            loader.testNamePatterns = [f"*{word}*" for word in words]
        cases.addTests(loader.discover(str(pathlib.Path(__file__).parent / folder), "*_cases.py"))
    # Those that need the same window one after the other: to start one takes long.
    return unittest.TestSuite(sorted(each_of(cases), key=lambda case: getattr(case, "program", ())))


def each_of(cases):
    for case in cases:
        if isinstance(case, unittest.TestSuite):
            yield from each_of(case)
        else:
            yield case


def main(port):
    print(f"The machine is up after {seconds_since_boot():.0f} s.", file=port)
    if desk.BOOT == "bench":
        bench.measure(port, RESULTS)
        write_journal(RESULTS / "journal")
        (RESULTS / "status").write_text("0", encoding="utf-8")
        return
    result = Result(port)
    cases_of(desk.BOOT, [word for word in desk.WORDS if word != "--long"]).run(result)
    write_journal(RESULTS / "journal")
    print(f"{result.testsRun} cases, {len(result.failures) + len(result.errors)} failed, "
          f"{len(result.skipped)} skipped, {seconds_since_boot():.0f} s since power on.", file=port)
    # Nothing run is nothing shown.
    (RESULTS / "status").write_text("0" if result.wasSuccessful() and result.testsRun else "1", encoding="utf-8")


if __name__ == "__main__":
    lines = open_port()
    try:
        main(lines)
    except Exception:  # There is nobody in here to tell.
        traceback.print_exc(file=lines)
    finally:
        subprocess.run(["sync"], check=False)
        pathlib.Path("/proc/sysrq-trigger").write_text("o", encoding="utf-8")
