"""What a person does while the pane waits for a driver that answers late or never, by a real pointer and real keys: it is
handled in its order and as soon as the wait is over, though nothing else happens then. Takes the settings window."""

import contextlib
import plistlib
import signal
import subprocess
import sys
import unittest

from hosts import PANE
from peers import LatePeer, Lines, wait_until
from stage import OnStage

PROGRAM = sys.argv.pop(1)

DRIVER = "TouchDisplayDriverMessagePort"
DISPLAY = "Desk"
TOUCH_TAB, VERSION_TAB = 1, 3

TAB_POP_UP = "Page:"
SPEED, SIZE = "Double-click speed", "Double-click size"
NUMBER = "Double-click size as a number"
NORMAL_SPEED, NORMAL_SIZE = "Normal speed", "Normal size"
RIGHT_CLICK = "Press and hold to right-click"

RATE, RANGE, RIGHT_CLICK_MESSAGE = 0, 1, 5
# What the ends of the slider for the speed stand for, in seconds.
SLOWEST, FASTEST = 1.0, 0.1
# Inside its handle at either end.
HANDLE = 6
POSITIONS = 12
ROUNDS = 8


class Waits(OnStage):
    def setUp(self):
        self.world.set_utilities(DISPLAY, SelectedMenuItem=TOUCH_TAB)
        self.world.set_plist(f"Settings_{DISPLAY}.plist", {
            "DoubleClickRate": SLOWEST, "DoubleClickRange": 48,
            "RightClick": {"RightClickIsEnable": False, "RightClickTimeIntelval": 1.0}})
        self.driver = self.enterContext(LatePeer(self.world, DRIVER))
        self.window = self.world.start(PROGRAM)
        self.addCleanup(self.end)
        self.log = Lines(self.window.stderr)
        self.screen.operate(self.window)
        wait_until(lambda: self.world.has_owner(PANE), "the pane's port")
        # To ask for a place is an event of its own, which would wake the window.
        self.places = self.places_at_rest()

    def places_at_rest(self):
        """Where everything is, once the window manager has moved the window to its place."""
        places = {}

        def are_at_rest():
            before = dict(places)
            for name in (TAB_POP_UP, SPEED, NUMBER, NORMAL_SPEED, NORMAL_SIZE, RIGHT_CLICK):
                place = self.screen.place_of(name)
                places[name] = (place.x, place.y, place.width, place.height)
            return before == places

        wait_until(are_at_rest, "the window at its place")
        return places

    def end(self):
        self.window.send_signal(signal.SIGCONT)
        self.window.terminate()
        self.window.wait()

    def tearDown(self):
        self.assertEqual([line for line in self.log.read() if "Sanitizer" in line or "runtime error" in line], [])

    # What the user does. The words are xdotool's.

    @staticmethod
    def user(*words):
        """Does it all in one go; the display has told the window when this returns."""
        subprocess.run(["xdotool", *map(str, words), "getmouselocation"], check=True, stdout=subprocess.DEVNULL)

    def at(self, name):
        x, y, width, height = self.places[name]
        return ["mousemove", x + width // 2, y + height // 2]

    def click(self, name):
        return [*self.at(name), "click", 1]

    def drag(self, first, last):
        """From one end of the slider for the speed to the other by as many moves."""
        x, y, width, height = self.places[SPEED]
        ends = {SLOWEST: x + HANDLE, FASTEST: x + width - HANDLE}
        steps = [ends[first] + (ends[last] - ends[first]) * n // POSITIONS for n in range(1, POSITIONS + 1)]
        middle = y + height // 2
        words = ["mousemove", ends[first], middle, "mousedown", 1]
        for step in steps:
            words += ["mousemove", step, middle]
        return [*words, "mouseup", 1]

    # What comes of it.

    def received(self):
        """(id, the value) of each message to the driver."""
        messages = [(number, plistlib.loads(data)) for number, data in self.driver.received]
        keys = {RATE: "DoubleClickRate", RANGE: "DoubleClickRange", RIGHT_CLICK_MESSAGE: "RightClick"}
        values = [(number, payload[keys[number]]) for number, payload in messages]
        return [(number, value["RightClickIsEnable"] if number == RIGHT_CLICK_MESSAGE else round(value, 6))
                for number, value in values]

    def wait_for_messages(self, count):
        wait_until(lambda: len(self.driver.received) >= count, f"message {count} after {self.received()}")

    def forget(self):
        self.driver.received.clear()
        self.driver.is_late = True

    @contextlib.contextmanager
    def wait_begun_by(self, *words):
        """While the window waits for the answer to what this makes it send. It stands still meanwhile, so that the wait
        lasts until all is done; then all of it reaches the window before the answer does."""
        before = len(self.driver.received)
        self.user(*words)
        self.wait_for_messages(before + 1)
        self.window.send_signal(signal.SIGSTOP)
        yield
        self.window.send_signal(signal.SIGCONT)
        self.world.let_run(PANE)

    # The tests.

    def test_click_is_handled_as_soon_as_the_wait_is_over(self):
        for number in range(ROUNDS):
            with self.subTest(number=number):
                self.forget()
                with self.wait_begun_by(*self.click(NORMAL_SPEED)):
                    self.user(*self.click(NORMAL_SIZE))
                self.driver.answer_and_go_on()
                self.wait_for_messages(2)
                self.assertEqual(self.received(), [(RATE, 0.5), (RANGE, 32)])

    def test_click_is_handled_when_the_driver_never_answers(self):
        with self.wait_begun_by(*self.click(NORMAL_SPEED)):
            self.user(*self.click(NORMAL_SIZE))
        self.wait_for_messages(2)
        self.assertEqual(self.received(), [(RATE, 0.5), (RANGE, 32)])

    def test_presses_and_keys_are_handled_each_and_in_their_order(self):
        with self.wait_begun_by(*self.click(NORMAL_SPEED)):
            self.user(*self.click(RIGHT_CLICK), "click", 1, *self.click(NUMBER), "key", "ctrl+a", "6", "4", "Return",
                      *self.click(NORMAL_SPEED), "key", "space", *self.click(RIGHT_CLICK))
        self.driver.answer_and_go_on()
        self.wait_for_messages(8)
        # The number ends with Return, and once more when the focus leaves it.
        self.assertEqual(self.received(), [
            (RATE, 0.5), (RIGHT_CLICK_MESSAGE, True), (RIGHT_CLICK_MESSAGE, False), (RANGE, 64.0), (RANGE, 64.0),
            (RATE, 0.5), (RATE, 0.5), (RIGHT_CLICK_MESSAGE, True)])

    def test_what_comes_in_the_second_of_two_waits_is_handled_after_it(self):
        with self.wait_begun_by(*self.click(NORMAL_SPEED)):
            self.user(*self.click(RIGHT_CLICK))
        self.driver.unanswered.pop(0)(b"")
        self.wait_for_messages(2)
        self.window.send_signal(signal.SIGSTOP)
        self.user(*self.click(NORMAL_SIZE))
        self.window.send_signal(signal.SIGCONT)
        self.world.let_run(PANE)
        self.driver.answer_and_go_on()
        self.wait_for_messages(3)
        self.assertEqual(self.received(), [(RATE, 0.5), (RIGHT_CLICK_MESSAGE, True), (RANGE, 32)])

    def test_drag_and_release_in_one_burst_come_to_the_end(self):
        self.driver.is_late = False
        ends = [SLOWEST, FASTEST]
        for number in range(2 * ROUNDS):
            with self.subTest(number=number):
                self.driver.received.clear()
                self.user(*self.drag(*ends))
                ends.reverse()
                wait_until(lambda: (RATE, ends[0]) in self.received(), f"{ends[0]} after {self.received()}")
                self.assertEqual(self.received()[-1], (RATE, ends[0]))

    def test_positions_that_queue_up_behind_one_that_waits_are_one(self):
        press, rest = self.drag(SLOWEST, FASTEST)[:8], self.drag(SLOWEST, FASTEST)[8:]
        for answers in (True, False):
            with self.subTest(answers=answers):
                self.forget()
                with self.wait_begun_by(*press):
                    self.user(*rest, *self.click(NORMAL_SIZE))
                if answers:
                    self.driver.answer_and_go_on()
                self.wait_for_messages(3)
                first, *others = self.received()
                self.assertEqual(first[0], RATE)
                self.assertEqual(others, [(RATE, FASTEST), (RANGE, 32)])
                self.driver.answer_and_go_on()
                wait_until(lambda: self.screen.wait_shown(SPEED).get_current_value() == 90,
                           "the slider at its end")
                self.user(*self.drag(FASTEST, SLOWEST))
                wait_until(lambda: self.received()[-1] == (RATE, SLOWEST), "the slider at its beginning")

    def test_whole_drag_behind_another_wait_costs_one_message(self):
        with self.wait_begun_by(*self.click(NORMAL_SIZE)):
            self.user(*self.drag(SLOWEST, FASTEST), *self.click(NORMAL_SIZE))
        self.wait_for_messages(3)
        self.assertEqual(self.received(), [(RANGE, 32), (RATE, FASTEST), (RANGE, 32)])

    def test_turns_of_the_wheel_are_one_and_keys_are_not(self):
        # The slider has the focus, at its beginning.
        self.driver.is_late = False
        self.user(*self.at(SPEED), "click", 1, "key", "Home")
        wait_until(lambda: self.received()[-1:] == [(RATE, SLOWEST)], "the slider at its beginning")
        self.forget()
        with self.wait_begun_by("key", "Right"):
            self.user("key", "Right", "Right", "Right", *self.at(SPEED), "click", "--repeat", 3, "--delay", 0, 4,
                      "key", "End", "Left")
        self.driver.answer_and_go_on()
        self.wait_for_messages(7)
        # How far one turn goes is a setting of the desktop.
        wheel = self.received().pop(4)
        self.assertEqual(wheel[0], RATE)
        self.assertTrue(FASTEST < wheel[1] < 0.96, wheel)
        values = [value for _, value in self.received() if value != wheel[1]]
        self.assertEqual(values, [0.99, 0.98, 0.97, 0.96, FASTEST, 0.11])

    def test_menu_opens_and_takes_a_choice(self):
        with self.wait_begun_by(*self.click(NORMAL_SPEED)):
            self.user(*self.click(TAB_POP_UP), "key", "End", "Return")
        self.driver.answer_and_go_on()
        wait_until(lambda: self.world.plist("Utilities.plist")["SelectedMenuItem"] == VERSION_TAB, "the last tab")

    def test_window_that_is_closed_meanwhile_closes(self):
        with self.wait_begun_by(*self.click(NORMAL_SPEED)):
            self.user("key", "alt+F4")
        self.driver.answer_and_go_on()
        wait_until(lambda: self.log.read() is not None and self.window.poll() is not None, "the window's end")
        self.assertEqual(self.window.returncode, 0)


if __name__ == "__main__":
    unittest.main()
