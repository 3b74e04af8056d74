"""Finds widgets of a running program by what they tell assistive technology. Takes the program's process id, and on
standard input lines of JSON [ROLE, NAME], of which an empty role is any but that of a pop-up's choice. Answers each,
once there is such a widget on the screen, by what it tells of itself, as a line of JSON."""

import json
import os
import sys

import screen as eyesight
from screen import Atspi, GLib, Screen, ScreenError, names_of, wait_for

# They are looked through, and not for.
BOXES = ("filler", "layered pane")
CHOICE = "list item"


class Running:
    """A process that another program started."""

    def __init__(self, pid):
        self.pid = pid
        self.returncode = None

    def poll(self):
        return None if os.path.exists(f"/proc/{self.pid}") else 0


class Eyes(Screen):
    """Remembers what it has seen: to look through a whole window takes a small computer long."""

    def __init__(self, process):
        super().__init__()
        self.window_process = process
        self.application = wait_for(self.find_application, "the program's window")
        self.seen = []

    def find(self, role, name):
        """The widget on the screen now of that role whose name begins so."""
        self.check_window()
        found = self.remember(role, name)
        if not found:
            self.seen = list(self.look_around())
            found = self.remember(role, name)
        return found

    def remember(self, role, name):
        try:
            return next((widget for its_role, names, widget in self.seen
                         if (its_role == role if role else its_role != CHOICE)
                         and is_named(names, name) and is_shown(widget) and is_named(names_of(widget), name)), None)
        except GLib.Error:
            return None  # It is no longer there.

    def look_around(self):
        waiting = [self.application]
        while waiting:
            widget = waiting.pop(0)
            if not is_shown(widget):
                continue  # Nothing inside it shows either.
            role = widget.get_role_name()
            if role not in BOXES:
                yield role, names_of(widget), widget
            waiting += [child for child in map(widget.get_child_at_index, range(widget.get_child_count())) if child]


def is_shown(widget):
    widget.clear_cache()
    return widget.get_state_set().contains(Atspi.StateType.SHOWING)


def is_named(names, name):
    return any(each.startswith(name) for each in names)


def facts_of(widget):
    place, states = widget.get_extents(Atspi.CoordType.SCREEN), widget.get_state_set()
    facts = {"place": [place.x, place.y, place.width, place.height], "description": widget.get_description(),
             "checked": states.contains(Atspi.StateType.CHECKED), "open": states.contains(Atspi.StateType.EXPANDED)}
    if value := widget.get_value_iface():
        facts["value"] = [value.get_current_value(), value.get_minimum_value(), value.get_maximum_value()]
    return facts


def main():
    # In an emulated computer, on a machine that has other things to do.
    eyesight.PATIENCE_SECONDS = 90
    eyes = Eyes(Running(int(sys.argv[1])))
    for line in sys.stdin:
        role, name = json.loads(line)
        try:
            found = wait_for(lambda: (widget := eyes.find(role, name)) and facts_of(widget),
                             f"\"{name}\" on the screen")
            answer = {"found": found}
        except ScreenError as error:
            answer = {"error": str(error)}
        print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main()
