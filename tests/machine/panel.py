"""A touch display, plugged in through the kernel's own HID drivers, with fingers on its glass."""

import contextlib
import itertools
import os
import pathlib
import select
import struct
import threading
import time

import evdev
from descriptors import (CONFIDENCE, CONTACT_COUNT, CONTACT_ID, CONTACT_MAX, FEATURE, IN_RANGE, INPUT, PRESSURE,
                         SCAN_TIME, TIP_SWITCH, TOUCH_SCREEN, X, Y, parse)
from nodes import has_udev_seen_all, told_by_udev
from panels import USB

DESTROY, GET_REPORT, GET_REPORT_REPLY, CREATE, INPUT_REPORT, SET_REPORT, SET_REPORT_REPLY = 1, 9, 10, 11, 12, 13, 14
EVENT_SIZE = 4380
# What a display that samples 125 times in a second takes for a frame.
FRAME_SECONDS = 0.008
PLUGGED = itertools.count(1)


class Panel(contextlib.AbstractContextManager):
    """One display of a model; `fingers` are where they are on the glass, 0 to 1 from the top left."""

    def __init__(self, model):
        self.model = model
        self.reports = parse(model.descriptor)
        self.report = next(report for (kind, _), report in self.reports.items() if kind == INPUT and any(
            field.usage == CONTACT_ID and field.application == TOUCH_SCREEN for field in report.fields))
        groups = [field.group for field in self.report.fields if field.usage == CONTACT_ID]
        self.hands = [[field for field in self.report.fields if field.group == group] for group in groups]
        self.fingers = {}
        self.began = time.monotonic()
        self.address = f"usb-machine-{next(PLUGGED)}/input0"
        self.device = os.open("/dev/uhid", os.O_RDWR)
        self.write(CREATE, struct.pack(
            "<128s64s64sHHIIII4096s", model.name.encode(), self.address.encode(), b"", len(model.descriptor), USB,
            model.vendor, model.product, 0x0100, 0, model.descriptor))
        self.listener = threading.Thread(target=self.answer, daemon=True)
        self.listener.start()
        self.nodes = self.find_nodes()

    def __exit__(self, *_):
        self.unplug()

    def unplug(self):
        if self.device is not None:
            device, self.device = self.device, None
            os.write(device, struct.pack("<I", DESTROY).ljust(EVENT_SIZE, b"\0"))
            self.listener.join()
            os.close(device)

    def write(self, kind, payload):
        event = (struct.pack("<I", kind) + payload).ljust(EVENT_SIZE, b"\0")
        self.written_at = time.monotonic_ns()
        os.write(self.device, event)

    def answer(self):
        """Answers what the kernel asks, until the display is unplugged."""
        device = self.device
        while self.device is not None:
            if not select.select([device], [], [], 0.1)[0]:
                continue
            event = os.read(device, EVENT_SIZE)
            kind, number, report = struct.unpack_from("<IIB", event)
            if kind == GET_REPORT:
                data = self.feature(report)
                os.write(device, struct.pack("<IIHH", GET_REPORT_REPLY, number, 0 if data else 5, len(data)) + data)
            elif kind == SET_REPORT:
                os.write(device, struct.pack("<IIH", SET_REPORT_REPLY, number, 0))

    def feature(self, number):
        """How many fingers it takes, which is all that it tells when it is asked."""
        report = self.reports.get((FEATURE, number))
        counts = [field for field in report.fields if field.usage == CONTACT_MAX] if report else []
        return report.pack([(field, self.model.fingers) for field in counts]) if counts else b""

    def find_nodes(self):
        """Its event nodes, once udev has looked at all of them."""
        deadline = time.monotonic() + 60
        nodes = []
        while len(nodes) < self.model.nodes and time.monotonic() < deadline:
            time.sleep(0.05)
            devices = [path.parent for path in pathlib.Path("/sys/devices/virtual/misc/uhid").glob("*/uevent")
                       if f"HID_PHYS={self.address}\n" in path.read_text()]
            nodes = sorted(node.name for device in devices for node in device.glob("input/input*/event*"))
        while not has_udev_seen_all() and time.monotonic() < deadline:
            time.sleep(0.05)
        return [f"/dev/input/{name}" for name in nodes]

    def touch_node(self):
        """The one node that udev calls a touch screen and that takes several fingers."""
        (node,) = [node for node in self.nodes if self.is_touch_screen(node)]
        return node

    @staticmethod
    def is_touch_screen(node):
        if "E:ID_INPUT_TOUCHSCREEN=1" not in told_by_udev(node):
            return False
        device = evdev.InputDevice(node)
        with contextlib.closing(device):
            absolute = [code for code, _ in device.capabilities().get(evdev.ecodes.EV_ABS, [])]
            return evdev.ecodes.ABS_MT_SLOT in absolute and evdev.ecodes.INPUT_PROP_DIRECT in device.input_props()

    def send(self, contacts):
        """One frame of (finger's number, place, whether it is down)."""
        count = len(contacts)
        milliseconds = int((time.monotonic() - self.began) * 1000)
        for first in range(0, count, len(self.hands)):
            values = []
            told = contacts[first:first + len(self.hands)]
            # Fields that stand for no finger must not be taken for one that is down.
            free = (number for number in itertools.count() if number not in self.fingers)
            told += [(next(free), (0, 0), False) for _ in range(len(self.hands) - len(told))]
            for hand, (number, place, is_down) in zip(self.hands, told):
                values += [(field, self.value(field, number, place, is_down))
                           for field in hand if not field.is_constant]
            for field in self.report.fields:
                if field.usage == CONTACT_COUNT:
                    values.append((field, count if first == 0 else 0))
                elif field.usage == SCAN_TIME:
                    values.append((field, milliseconds * 10 % (field.maximum + 1)))
            data = self.report.pack(values)
            self.write(INPUT_REPORT, struct.pack("<H", len(data)) + data)

    def send_garbage(self, chance):
        """A report of the right number and length, or not even that, in which anything may stand."""
        length = chance.choice(((self.report.bits + 7) // 8 + bool(self.report.number), chance.randrange(1, 64)))
        data = bytes([self.report.number]) if self.report.number else b""
        data += bytes(chance.randrange(256) for _ in range(length - len(data)))
        self.write(INPUT_REPORT, struct.pack("<H", len(data)) + data)

    @staticmethod
    def value(field, number, place, is_down):
        if field.usage in (TIP_SWITCH, IN_RANGE):
            return int(is_down)
        if field.usage == CONFIDENCE:
            return 1
        if field.usage == CONTACT_ID:
            return number
        if field.usage in (X, Y):
            return field.minimum + round(place[field.usage == Y] * (field.maximum - field.minimum))
        if field.usage == PRESSURE:
            return (field.maximum + field.minimum) // 2 if is_down else 0
        return min(10, field.maximum)

    def move(self, places):
        """One frame: the fingers that land or go on, by their numbers, beside those that stay where they are."""
        self.fingers.update(places)
        self.send([(number, place, True) for number, place in sorted(self.fingers.items())])

    def lift(self, *numbers):
        """One frame in which these fingers leave, or all."""
        leaving = numbers or tuple(self.fingers)
        self.send([(number, place, number not in leaving) for number, place in sorted(self.fingers.items())])
        for number in leaving:
            del self.fingers[number]

    def lift_all(self):
        """Whatever fingers it has ever told of leave."""
        numbers = next(field for field in self.report.fields if field.usage == CONTACT_ID)
        for number in range(numbers.minimum, 1 << numbers.size):
            self.send([(number, (0.5, 0.5), False)])
        self.fingers = {}

    def tap(self, place, seconds=0.04):
        self.move({0: place})
        time.sleep(seconds)
        self.lift()

    def drag(self, start, end, seconds=0.3, number=0):
        """One finger from place to place."""
        self.glide({number: start}, {number: end}, seconds)
        self.lift()

    def glide(self, starts, ends, seconds):
        """Fingers that move together, and stay down. A frame that is late makes them slower: ones that catch up would
        jump. Gives the longest time between two frames."""
        steps = max(1, round(seconds / FRAME_SECONDS))
        longest, told = 0.0, time.monotonic()
        for step in range(steps + 1):
            part = step / steps
            self.move({number: tuple(a + (b - a) * part for a, b in zip(starts[number], ends[number]))
                       for number in starts})
            now = time.monotonic()
            longest, told = max(longest, now - told), now
            time.sleep(FRAME_SECONDS)
        return longest
