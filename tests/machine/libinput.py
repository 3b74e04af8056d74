"""What libinput makes of event nodes without any desktop."""

import re
import time

import desk

# Longer than the end of a scroll is told after its last step.
QUIET_SECONDS = 0.5


class Libinput(desk.Program):
    """What libinput makes of these nodes by itself, with no desktop's settings: its events in their order, each as its
    kind and what is said of it."""

    EVENT = re.compile(r"[- ]event\d+\s+([A-Z_]+)\s+\+?[\d.]+s\s*(.*)")

    def __init__(self, nodes):
        super().__init__("stdbuf", "--output=L", "libinput", "debug-events", "--show-keycodes",
                         *(f"--device={node}" for node in nodes), user="root")
        desk.wait_for(lambda: sum("DEVICE_ADDED" in line for line in self.lines) == len(nodes), "libinput to have them")
        self.start = len(self.lines)

    def begin_anew(self):
        """What is still said of what was done before counts no more."""
        self.start = -1
        while self.start != len(self.lines):
            self.start = len(self.lines)
            time.sleep(QUIET_SECONDS)

    def events(self):
        matches = [self.EVENT.match(line) for line in self.lines[self.start:]]
        return [match.groups() for match in matches if match]

    def kinds(self):
        """Without repetitions, and without fingers that rest before they do anything."""
        found = [kind for kind, _ in self.events() if not kind.startswith("GESTURE_HOLD")]
        return [kind for kind, before in zip(found, ["", *found]) if kind != before]
