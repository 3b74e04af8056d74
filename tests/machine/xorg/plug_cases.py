"""What the kernel and udev make of touch displays of different kinds."""

import contextlib
import unittest

import evdev
from evdev import ecodes

from desk import wait_for
from panel import Panel
from panels import MODELS


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


class Plugged(unittest.TestCase):
    def test_each_model_is_one_touch_screen_to_udev(self):
        for model in MODELS:
            with self.subTest(model.name), Panel(model) as panel:
                self.assertEqual(len(panel.nodes), model.nodes)
                self.assertIn(panel.touch_node(), panel.nodes)

    def test_each_model_tells_its_size_in_mm_or_none(self):
        for model in MODELS:
            with self.subTest(model.name), Panel(model) as panel:
                with contextlib.closing(evdev.InputDevice(panel.touch_node())) as device:
                    axes = [device.absinfo(code) for code in (ecodes.ABS_MT_POSITION_X, ecodes.ABS_MT_POSITION_Y)]
                    sizes = [(axis.max - axis.min) / axis.resolution if axis.resolution else None for axis in axes]
                if model.size_mm:
                    # The kernel's resolution is a whole number.
                    self.assertEqual([round(size / side, 1) for size, side in zip(sizes, model.size_mm)], [1, 1])
                else:
                    self.assertEqual(sizes, [None, None])

    def test_fingers_of_each_model_arrive_where_they_are_and_leave(self):
        for model in MODELS:
            with self.subTest(model.name), Panel(model) as panel, Reader(panel.touch_node()) as reader:
                width = reader.device.absinfo(ecodes.ABS_MT_POSITION_X).max
                height = reader.device.absinfo(ecodes.ABS_MT_POSITION_Y).max

                panel.move({0: (0.25, 0.5), 1: (0.75, 1)})
                panel.move({0: (0, 0), 1: (1, 0.25)})
                panel.lift()

                wait_for(lambda: reader.values_of(ecodes.ABS_MT_TRACKING_ID).count(-1) == 2, "both fingers to leave")
                self.assertEqual(sorted(reader.values_of(ecodes.ABS_MT_POSITION_X)),
                                 sorted([round(width * part) for part in (0.25, 0.75, 0, 1)]))
                self.assertEqual(sorted(reader.values_of(ecodes.ABS_MT_POSITION_Y)),
                                 sorted([round(height * part) for part in (0.5, 1, 0, 0.25)]))


if __name__ == "__main__":
    unittest.main()
