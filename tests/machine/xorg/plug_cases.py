"""What the kernel, udev and the X server make of touch displays of different kinds."""

import unittest

from evdev import ecodes

import desk
from desk import wait_for
from nodes import Reader
from panel import Panel
from panels import ELAN, MODELS

X, Y = ecodes.ABS_MT_POSITION_X, ecodes.ABS_MT_POSITION_Y


class Plugged(unittest.TestCase):
    def test_each_model_is_one_touch_screen_of_its_size_whose_fingers_arrive_where_they_are(self):
        for model in MODELS:
            with self.subTest(model.name), Panel(model) as panel:
                self.assertEqual(len(panel.nodes), model.nodes)
                self.assertIn(panel.touch_node(), panel.nodes)
                with Reader(panel.touch_node()) as reader:
                    axes = [reader.device.absinfo(code) for code in (X, Y)]
                    self.assert_size(axes, model.size_mm)
                    self.assert_fingers(panel, reader, *(axis.max for axis in axes))

    def test_the_x_server_knows_the_display_as_a_touch_screen(self):
        desk.start_screen()
        with Panel(ELAN):
            wait_for(lambda: ELAN.name in desk.listened(), "the display among those that the screen listens to")
            self.assertIn("Touch mode: direct", desk.run("xinput", "list", "--long", ELAN.name))

    def assert_size(self, axes, size_mm):
        sizes = [(axis.max - axis.min) / axis.resolution if axis.resolution else None for axis in axes]
        if size_mm:
            # The kernel's resolution is a whole number.
            self.assertEqual([round(size / side, 1) for size, side in zip(sizes, size_mm)], [1, 1])
        else:
            self.assertEqual(sizes, [None, None])

    def assert_fingers(self, panel, reader, width, height):
        panel.move({0: (0.25, 0.5), 1: (0.75, 1)})
        panel.move({0: (0, 0), 1: (1, 0.25)})
        panel.lift()
        wait_for(lambda: reader.values_of(ecodes.ABS_MT_TRACKING_ID).count(-1) >= 2, "both fingers to leave")
        # The kernel lifts a finger of some models, and has it land again, when its next report is late.
        self.assertEqual(set(reader.values_of(X)), {round(width * part) for part in (0.25, 0.75, 0, 1)})
        self.assertEqual(set(reader.values_of(Y)), {round(height * part) for part in (0.5, 1, 0, 0.25)})


if __name__ == "__main__":
    unittest.main()
