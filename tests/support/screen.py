"""A virtual display, and a real pointer and real keys for a program on it, whose widgets are found by what they tell
assistive technology."""

import contextlib
import os
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# How long anything may take on the slowest machine.
PATIENCE_SECONDS = 20
SCREEN = "1280x900x24"


class ScreenError(Exception):
    pass


def wait_for(find, what):
    """What `find` gives as soon as it gives something."""
    deadline = time.monotonic() + PATIENCE_SECONDS
    while True:
        try:
            found = find()
        except (GLib.Error, AttributeError, KeyError):
            found = None  # A widget that went away while it was looked at, or a key that is not there yet.
        if found:
            return found
        if time.monotonic() > deadline:
            raise ScreenError(f"waited in vain for {what}")
        time.sleep(0.05)


def names_of(widget):
    """What a widget goes by: the texts of its labels and its own name, which a pop-up has from its choice. Neither a
    label nor a group, which names all that is in it, is what it names."""
    relations = widget.get_relation_set()
    labels = [relation.get_target(index) for relation in relations
              if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
              for index in range(relation.get_n_targets())]
    names = [label.get_name() for label in labels if label.get_role() == Atspi.Role.LABEL]
    is_name = any(relation.get_relation_type() == Atspi.RelationType.LABEL_FOR for relation in relations)
    return names if is_name or widget.get_role() == Atspi.Role.PANEL else [*names, widget.get_name()]


def middle_of(place):
    return place.x + place.width // 2, place.y + place.height // 2


def area_that_hides(widget, place):
    """The innermost of what the widget stands in that does not show that place of it; none where the place is seen."""
    around = widget.get_parent()
    while around and around.get_role() != Atspi.Role.APPLICATION:
        shown = around.get_extents(Atspi.CoordType.SCREEN)
        if not (shown.x <= place[0] < shown.x + shown.width and shown.y <= place[1] < shown.y + shown.height):
            return around
        around = around.get_parent()
    return None


class Screen(contextlib.AbstractContextManager):
    """The virtual display with the programs on it, which all end with it. The display and what Qt's programs need to be
    operated are in this process's own environment; the message bus there is the one that widgets are found by."""

    def __init__(self):
        self.processes = []
        os.environ.update(LC_ALL="C.UTF-8", QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                          NO_AT_BRIDGE="1")
        os.environ.pop("WAYLAND_DISPLAY", None)

    def lend_to(self, world):
        """Lets the programs of a world be shown here, and this process find their widgets by the world's bus."""
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = world.address
        runtime = world.folder / "run"
        runtime.mkdir(mode=0o700)
        # The toolkit's platform libraries leak at exit.
        world.environment.update(
            {name: os.environ[name] for name in ("DISPLAY", "LC_ALL", "QT_QPA_PLATFORM",
                                                 "QT_LINUX_ACCESSIBILITY_ALWAYS_ON")},
            XDG_RUNTIME_DIR=str(runtime), ASAN_OPTIONS="detect_leaks=0")
        world.environment.pop("WAYLAND_DISPLAY", None)

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(PATIENCE_SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def start(self, *command, **how):
        process = subprocess.Popen([str(word) for word in command], **how)
        self.processes.append(process)
        return process

    def kill(self, process):
        """Ends a program as a crash does."""
        process.kill()
        process.wait()
        self.processes.remove(process)

    def start_display(self):
        reading, writing = os.pipe()
        self.start("Xvfb", "-displayfd", writing, "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset",
                   pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise ScreenError("the virtual display did not start")
        os.environ["DISPLAY"] = f":{number}"
        self.start("openbox", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def operate(self, process):
        """Turns to a program that was started on the display, once its window is there."""
        self.window_process = process
        self.application = wait_for(self.find_application, "the settings window")
        self.window = wait_for(lambda: self.windows("--name", "."), "the window on the display")[-1]

    def windows(self, *which):
        """The program's windows on the display, menus included."""
        return self.output_of("xdotool", "search", "--onlyvisible", "--all", "--pid", self.window_process.pid,
                              *which).split()

    def check_window(self):
        if self.window_process.poll() is not None:
            raise ScreenError(f"the settings window ended with {self.window_process.returncode}")

    def find_application(self):
        self.check_window()
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child and child.get_process_id() == self.window_process.pid:
                return child
        return None

    @staticmethod
    def output_of(*command):
        result = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False)
        return result.stdout

    def shown(self, name, role=None):
        """The widget on the screen now whose name begins so, or whose label does, and which has that role where one is
        named; none when there is none."""
        self.check_window()
        waiting = [self.application]
        while waiting:
            widget = waiting.pop(0)
            widget.clear_cache()
            if not widget.get_state_set().contains(Atspi.StateType.SHOWING):
                continue  # Nothing inside it shows either.
            if role in (None, widget.get_role()) and any(each.startswith(name) for each in names_of(widget)):
                return widget
            # The choices of a pop-up count as showing though its menu is closed.
            if widget.get_role() != Atspi.Role.COMBO_BOX:
                waiting += [child for child in map(widget.get_child_at_index, range(widget.get_child_count())) if child]
        return None

    def wait_shown(self, name):
        return wait_for(lambda: self.shown(name), f"\"{name}\" on the screen")

    def wait_gone(self, name):
        wait_for(lambda: not self.shown(name), f"\"{name}\" to go away")

    def place_of(self, name):
        return self.wait_shown(name).get_extents(Atspi.CoordType.SCREEN)

    def state_of(self, name, state):
        return self.wait_shown(name).get_state_set().contains(state)

    def middle_in_view(self, name):
        """The middle of the widget, once what it stands in is scrolled so far that a pointer reaches it."""
        while True:
            middle = middle_of(self.place_of(name))
            area = area_that_hides(self.shown(name), middle)
            if not area:
                return middle
            where = area.get_extents(Atspi.CoordType.SCREEN)
            self.point_at(middle_of(where), "click", "5" if middle[1] > where.y else "4")
            wait_for(lambda: middle_of(self.place_of(name)) != middle, f"\"{name}\" to come into view")

    @staticmethod
    def point_at(place, *then):
        subprocess.run(["xdotool", "mousemove", *map(str, place), *then], check=True, stdout=subprocess.DEVNULL)

    def click(self, name, *how):
        """One click in the middle of the widget, or several as xdotool's options say."""
        self.point_at(self.middle_in_view(name), "click", *how, "1")

    @staticmethod
    def keys(*names):
        subprocess.run(["xdotool", "key", *names], check=True)

    def pick(self, pop_up, steps):
        """Opens a pop-up with the pointer and goes to the item so many below its first with the keys."""
        windows = self.windows()
        self.click(pop_up)
        # Not every toolkit tells that a pop-up is open.
        wait_for(lambda: len(self.windows()) > len(windows), f"the menu of \"{pop_up}\"")
        self.keys("Home", *["Down"] * steps, "Return")
