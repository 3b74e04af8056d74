"""What stands at the kernel's event nodes, which no program's word is needed for."""

import contextlib
import os
import pathlib

import evdev
from evdev import ecodes

OWN_PHYS = "kelvo-touch/"
INPUTS = pathlib.Path("/sys/class/input")
# The second is what the bindings make of a device that goes while they ask for what it is.
GONE = (OSError, SystemError)


class Reader(contextlib.AbstractContextManager):
    """What comes out of an event node, as frames of (code, value)."""

    def __init__(self, node):
        self.device = evdev.InputDevice(node)
        self.frames = []
        self.frame = []

    def __exit__(self, *_):
        self.device.close()

    def read(self):
        with contextlib.suppress(BlockingIOError):
            for event in self.device.read():
                if event.type == ecodes.EV_SYN and event.code == ecodes.SYN_REPORT:
                    self.frames.append(self.frame)
                    self.frame = []
                else:
                    self.frame.append((event.code, event.value))
        return self.frames

    def values_of(self, code):
        return [value for frame in self.read() for each, value in frame if each == code]


def told_by_udev(node):
    """The lines that udev keeps of an event node; none before it has looked at it."""
    try:
        number = os.stat(node).st_rdev
        kept = pathlib.Path(f"/run/udev/data/c{os.major(number)}:{os.minor(number)}")
        return kept.read_text(encoding="utf-8").splitlines()
    except FileNotFoundError:
        return []


def has_udev_seen_all():
    """Whether it has nothing to do, and knows every event node that there is."""
    return not os.path.exists("/run/udev/queue") and all(
        told_by_udev(f"/dev/input/{path.name}") for path in INPUTS.glob("event*"))


def is_virtual(device):
    return device.phys.startswith(OWN_PHYS)


def virtual_nodes(name=""):
    """The event nodes of the virtual devices whose names end so."""
    return [f"/dev/input/{node.name}" for node in INPUTS.glob("event*")
            if is_own(node / "device") and told_by(node / "device/name").endswith(name)]


def virtual_inputs():
    """The virtual devices by the kernel's own numbers, which unlike those of nodes are never given again."""
    return {device.name for device in INPUTS.glob("input*") if is_own(device)}


def is_own(device):
    return told_by(device / "phys").startswith(OWN_PHYS)


def told_by(attribute):
    """What the kernel says of a device; nothing when that has gone."""
    try:
        return attribute.read_text(encoding="utf-8").rstrip("\n")
    except OSError:
        return ""


def is_anything_down():
    """Whether any key, button or finger of a virtual device is down, as the kernel has it."""
    for node in virtual_nodes():
        with contextlib.suppress(*GONE), contextlib.closing(evdev.InputDevice(node)) as device:
            if device.active_keys():
                return True
    return False
