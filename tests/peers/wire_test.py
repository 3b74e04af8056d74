"""What stands on the bus when the pane sends: keys, their order and the kinds of their values."""

import plistlib
import sys
import unittest

from peers import Peer, World

SENDER = sys.argv.pop(1)

DEVICE = ("DeviceName", "Näme")
GESTURE = {"Name": "AppExpos\u00e9", "Descriptor": ["SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"],
           "SelectedIndex": 1, "IsEnable": False, "MoreGesture": True}

# Port, message id and payload, in the order of sending. Python tells 32 from 32.0 and True from 1 by their type.
EXPECTED = [
    ("TouchDisplayDriverMessagePort", 0, [("DoubleClickRate", 1.0), DEVICE]),
    ("TouchDisplayDriverMessagePort", 1, [("DoubleClickRange", 32), DEVICE]),
    ("TouchDisplayDriverMessagePort", 1, [("DoubleClickRange", 40.0), DEVICE]),
    ("TouchDisplayDriverMessagePort", 2, [("GestureArray", [GESTURE]), DEVICE]),
    ("TouchDisplayDriverMessagePort", 3, [("RotateMode", 2), DEVICE]),
    ("TouchDisplayDriverMessagePort", 5,
     [("RightClick", {"RightClickIsEnable": True, "RightClickTimeIntelval": 2.0}), DEVICE]),
    ("TouchDisplayDriverMessagePort", 6, [("AutoCalibration", True), DEVICE]),
    ("TouchDisplayDriverMessagePort", 6,
     [("AutoCalibration", False), ("ManualCalibration", {"OSDWidth": 4096.0, "OSDHeight": 0.10000000149011612}),
      DEVICE]),
    ("StatusBarMessagePort", 10, [("IsShowStatuMenu", False)]),
    ("TouchDisplayDriverMessagePort", 3, [("RotateMode", 0), ("DeviceName", "")]),
    ("TouchDisplayDriverMessagePort", 3, [("RotateMode", 0)]),
]


def exactly(value):
    """A form in which values are equal only when their kinds and the order of their keys are, too."""
    if isinstance(value, dict):
        return [(key, exactly(item)) for key, item in value.items()]
    if isinstance(value, list):
        return [exactly(item) for item in value]
    return type(value).__name__, value


class Wire(unittest.TestCase):
    def expect(self, port, received):
        expected = [(message_id, payload) for name, message_id, payload in EXPECTED if name == port]
        self.assertEqual([message_id for message_id, _ in received], [message_id for message_id, _ in expected])
        for (_, data), (message_id, payload) in zip(received, expected):
            with self.subTest(message_id=message_id):
                self.assertTrue(data.startswith(b'<?xml version="1.0" encoding="UTF-8"?>'))
                self.assertEqual(exactly(plistlib.loads(data)), exactly(dict(payload)))

    def test_payloads_have_their_keys_in_order_and_their_kinds(self):
        with World() as world, \
                Peer(world, "TouchDisplayDriverMessagePort") as driver, Peer(world, "StatusBarMessagePort") as utility:
            self.assertEqual(world.run(SENDER), (0, "", ""))
            self.expect("TouchDisplayDriverMessagePort", driver.received)
            self.expect("StatusBarMessagePort", utility.received)

    def test_without_peers_the_sender_ends_in_silence(self):
        with World() as world:
            self.assertEqual(world.run(SENDER), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
