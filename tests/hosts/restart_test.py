"""Pane, driver and status-bar utility on one bus, each killed and started again in every order: the next thing that the
user does works. Operated as the tour does it, with a real pointer under a virtual X server."""

import importlib.machinery
import importlib.util
import itertools
import pathlib
import sys
import tempfile
import unittest

TOUR, BUILD = sys.argv[1:3]
del sys.argv[1:3]

loader = importlib.machinery.SourceFileLoader("tour", TOUR)
tour = importlib.util.module_from_spec(importlib.util.spec_from_loader("tour", loader))
loader.exec_module(tour)

NORMAL_SPEED = "Normal speed"


class Restart(unittest.TestCase):
    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-test-"))
        self.stage = self.enterContext(tour.Stage(pathlib.Path(BUILD).resolve(), pathlib.Path(folder) / "pictures"))
        for start in (self.start_driver, self.start_pane, self.start_utility):
            start()

    def start_driver(self):
        self.stage.start_driver(tour.DISPLAY)

    def start_pane(self):
        self.stage.start_window()

    def start_utility(self):
        self.stage.start_utility()

    def kill(self, name):
        self.stage.kill({"driver": self.stage.driver_process, "pane": self.stage.window_process,
                         "utility": self.stage.utility_process}[name])

    def check_that_all_work(self):
        stage = self.stage
        # The driver reaches the pane, the pane the driver, and the pane the utility.
        stage.driver("show-tab", "0")
        tour.wait_for(lambda: stage.utilities()["SelectedMenuItem"] == 0, "the tab that the driver asked for")
        tour.show_tab(stage, "touch")
        stage.click(NORMAL_SPEED)
        self.assertEqual(stage.heard(0), {"DoubleClickRate": 0.5, "DeviceName": tour.DISPLAY})
        stage.click(tour.STATUS_MENU)
        stage.utility_said("message 10 { IsShowStatuMenu = 0; }")
        stage.click(tour.STATUS_MENU)
        stage.utility_said("icon shown")

    def test_in_every_order(self):
        self.check_that_all_work()
        for order in itertools.permutations(("driver", "pane", "utility")):
            with self.subTest(order=order):
                for name in order:
                    self.kill(name)
                for name in order:
                    getattr(self, f"start_{name}")()
                self.check_that_all_work()


if __name__ == "__main__":
    unittest.main()
