"""What stands at the kernel's event nodes, which no program's word is needed for."""

import contextlib
import pathlib

import evdev
from evdev import ecodes

OWN_PHYS = "kelvo-touch/"
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


def is_virtual(device):
    return device.phys.startswith(OWN_PHYS)


def virtual_nodes(name=""):
    """The event nodes of the virtual devices whose names end so."""
    found = []
    for node in evdev.list_devices():
        with contextlib.suppress(*GONE), contextlib.closing(evdev.InputDevice(node)) as device:
            if is_virtual(device) and device.name.endswith(name):
                found.append(node)
    return found


def virtual_inputs():
    """The virtual devices by the kernel's own numbers, which unlike those of nodes are never given again."""
    found = set()
    for device in pathlib.Path("/sys/class/input").glob("input*"):
        with contextlib.suppress(OSError):
            if (device / "phys").read_text(encoding="utf-8").startswith(OWN_PHYS):
                found.add(device.name)
    return found


def is_anything_down():
    """Whether any key, button or finger of a virtual device is down, as the kernel has it."""
    for node in virtual_nodes():
        with contextlib.suppress(*GONE), contextlib.closing(evdev.InputDevice(node)) as device:
            if device.active_keys():
                return True
    return False
