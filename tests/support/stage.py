"""The stage of a test that operates programs by a real pointer and real keys and finds their widgets."""

import unittest

from peers import World
from screen import Screen


class OnStage(unittest.TestCase):
    """Of the accessibility bus a process knows one only, and so there is one world and one display for all tests."""

    @classmethod
    def setUpClass(cls):
        cls.screen = cls.enterClassContext(Screen())
        cls.screen.start_display()
        cls.world = cls.enterClassContext(World(services=["org.a11y.Bus"]))
        cls.screen.lend_to(cls.world)
