"""How much of a test is run, and the figures that it prints: by default little, in ./test; all of it by run."""

import os
import pathlib
import sys

IS_FULL = os.environ.get("KELVO_RELIABILITY") == "full"


def times(short, full):
    return full if IS_FULL else short


def figure(what, number):
    print(f"figure: {what}: {number}", flush=True)


def skip(reason):
    """Ends the test as one that cannot be done here, which CTest shows with the reason."""
    print(f"SKIPPED: {reason}")
    sys.exit(77)


def resident_kib(process):
    """What the process holds in memory."""
    for line in pathlib.Path(f"/proc/{process.pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    raise AssertionError("the process has no memory; it ended")


def descriptors(process):
    """What each of the process's descriptors leads to."""
    folder = pathlib.Path(f"/proc/{process.pid}/fd")
    return sorted(os.readlink(folder / name) for name in os.listdir(folder))
