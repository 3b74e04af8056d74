"""Finds widgets of a running program by what they tell assistive technology. Takes the program's process id, and on
standard input lines ["place", NAME] or ["checked", NAME]; answers each by a line of JSON."""

import json
import os
import sys

import screen as eyesight
from screen import Atspi, Screen, ScreenError, wait_for


class Running:
    """A process that another program started."""

    def __init__(self, pid):
        self.pid = pid
        self.returncode = None

    def poll(self):
        return None if os.path.exists(f"/proc/{self.pid}") else 0


def answer(screen, verb, name):
    if verb == "place":
        place = screen.place_of(name)
        return [place.x, place.y, place.width, place.height]
    if verb == "checked":
        return screen.state_of(name, Atspi.StateType.CHECKED)
    raise ScreenError(f"no such question: {verb}")


def main():
    # In an emulated computer, on a machine that has other things to do.
    eyesight.PATIENCE_SECONDS = 90
    screen = Screen()
    screen.window_process = Running(int(sys.argv[1]))
    screen.application = wait_for(screen.find_application, "the program's window")
    for line in sys.stdin:
        try:
            found = {"found": answer(screen, *json.loads(line))}
        except ScreenError as error:
            found = {"error": str(error)}
        print(json.dumps(found), flush=True)


if __name__ == "__main__":
    main()
