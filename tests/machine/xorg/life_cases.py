"""Displays, drivers and services that come, go, hang and are killed: nothing stays down, and a display that no driver
has is a plain touch screen."""

import contextlib
import itertools
import os
import pathlib
import random
import re
import signal
import time
import unittest

import desk
from fixtures import AsPointer, connected_displays, DRIVER, SERVICE, start_driver
from nodes import virtual_inputs, virtual_nodes
from panel import FRAME_SECONDS, Panel
from panels import ELO, FOCALTECH

CORPUS = pathlib.Path("/run/tests").resolve().parent / "fuzz/corpus/touch"
# What an allocator keeps now and then, and no leak of ten minutes.
FLAT_KILOBYTES = 256


class Life(AsPointer):
    def wait_next(self, unit, number, gone):
        """Another process of the unit has taken over, with other virtual devices than those that are gone."""
        desk.wait_for(lambda: desk.process_of(unit) not in (0, number), f"the next process of {unit}")
        self.wait_driver(gone)
        self.wait_driven()

    def test_unplugged_under_two_fingers_nothing_stays_down_and_plugged_again_it_is_the_same_display(self):
        self.press()
        self.panel.unplug()
        self.wait_event("release")
        self.assert_nothing_down()
        desk.wait_for(lambda: connected_displays() == [], "the driver to miss the display")
        desk.wait_for(lambda: not virtual_nodes(), "the virtual devices to go")
        self.plug()
        self.wait_driver()
        self.wait_driven()
        self.assertEqual(connected_displays(), [ELO.name])
        # Its settings as well: one finger is still the pointer.
        self.assert_driven()

    def test_a_second_display_and_a_second_one_of_the_same_model_work_beside_the_first(self):
        with Panel(FOCALTECH) as other, Panel(ELO) as twin:
            desk.wait_for(lambda: len(connected_displays()) == 3, "the driver to have all three")
            self.assertEqual(sorted(connected_displays()), sorted([ELO.name, f"{ELO.name} 2", FOCALTECH.name]))
            desk.wait_for(lambda: len([name for name in desk.listened() if name.endswith(" Pointer")]) == 3,
                          "their pointers")
            for panel in (other, twin):
                desk.run("kelvo-touchctl", "set", FOCALTECH.name if panel is other else f"{ELO.name} 2", "finger",
                         "pointer")
                self.begin_anew()
                panel.tap((0.2, 0.6))
                self.wait_event("release")
                self.assert_place(self.clicks()[0], (0.2, 0.6))
            self.assert_driven()
        desk.wait_for(lambda: connected_displays() == [ELO.name], "the other two to go")
        self.assert_driven()

    def test_switched_off_the_display_is_a_plain_touch_screen_until_it_is_switched_on(self):
        self.press()
        desk.run("kelvo-touchctl", "driver", "off")
        self.addCleanup(desk.run, "kelvo-touchctl", "driver", "on")
        self.wait_event("release")
        self.assert_nothing_down()
        self.panel.lift()
        self.wait_plain()
        self.assert_plain()
        desk.run("kelvo-touchctl", "driver", "on")
        self.wait_driven()
        self.assert_driven()

    def test_a_driver_that_is_killed_leaves_nothing_down_and_the_next_one_takes_over(self):
        self.assert_next_takes_over(DRIVER)

    def test_a_service_that_is_killed_leaves_nothing_down_and_the_next_one_gives_the_display_again(self):
        self.assert_next_takes_over(SERVICE)

    def assert_next_takes_over(self, unit):
        for has_fingers in (False, True):
            with self.subTest(has_fingers=has_fingers):
                if has_fingers:
                    self.press()
                number, gone = desk.process_of(unit), virtual_inputs()
                os.kill(number, signal.SIGKILL)
                if has_fingers:
                    self.wait_event("release")
                self.assert_nothing_down()
                self.panel.lift()
                self.wait_next(unit, number, gone)
                self.assert_driven()

    def test_a_driver_that_hangs_is_killed_and_the_next_one_takes_over(self):
        self.press()
        number, gone = desk.process_of(DRIVER), virtual_inputs()
        os.kill(number, signal.SIGSTOP)
        self.wait_event("release")
        self.panel.lift()
        self.wait_next(DRIVER, number, gone)
        self.assert_driven()

    def test_stopped_it_leaves_a_plain_touch_screen(self):
        self.press()
        desk.run("systemctl", "--user", "stop", DRIVER)
        self.wait_event("release")
        self.panel.lift()
        self.wait_plain()
        self.assert_plain()
        start_driver()
        self.wait_driver()
        self.wait_driven()
        self.assert_driven()

    def test_a_driver_that_missed_reports_has_nothing_down_that_is_up(self):
        self.press()
        number = desk.process_of(DRIVER)
        os.kill(number, signal.SIGSTOP)
        # Far more than the kernel keeps for a reader.
        for step in range(600):
            self.panel.move({0: (0.2 + step / 2000, 0.5), 1: (0.8, 0.2 + step / 2000)})
        self.panel.lift()
        os.kill(number, signal.SIGCONT)
        self.wait_event("release")
        self.assert_nothing_down()
        self.assertEqual(desk.process_of(DRIVER), number)
        self.assert_driven()

    def test_garbage_reports_leave_nothing_down(self):
        chance = random.Random(1)
        number = desk.process_of(DRIVER)
        for _ in range(300):
            self.panel.send_garbage(chance)
        # What it said is there it has to say is gone.
        self.panel.lift_all()
        self.assertEqual(desk.process_of(DRIVER), number)
        self.assert_nothing_down()
        self.assert_driven()

    def test_random_fingers_leave_nothing_down_and_take_neither_memory_nor_files(self):
        number = desk.process_of(DRIVER)
        service = desk.process_of(SERVICE)
        # What is taken once is taken by then.
        self.play_random_fingers(5)
        before = [taken_by(each) for each in (number, service)]
        self.play_random_fingers(600 if desk.IS_LONG else 10)
        self.assertEqual(desk.process_of(DRIVER), number)
        self.assert_nothing_down()
        for (memory, files), (memory_before, files_before) in zip([taken_by(each) for each in (number, service)], before):
            self.assertEqual(files, files_before)
            self.assertLessEqual(memory, memory_before + FLAT_KILOBYTES)
        # What they last did is no first tap of a double one.
        self.settle()
        self.assert_driven()

    def play_random_fingers(self, seconds):
        """Fingers that land, go on and leave as the bytes of the fuzzer's corpus say."""
        end = time.monotonic() + seconds
        inputs = sorted(CORPUS.iterdir())
        for path in itertools.cycle(inputs):
            data = path.read_bytes()
            for finger, x, y in zip(data[0::3], data[1::3], data[2::3]):
                if time.monotonic() > end:
                    self.panel.lift()
                    return
                if finger >= 128 and self.panel.fingers:
                    self.panel.lift(sorted(self.panel.fingers)[finger % len(self.panel.fingers)])
                else:
                    self.panel.move({finger % ELO.fingers: (x / 255, y / 255)})
                time.sleep(FRAME_SECONDS)

    def settle(self):
        """Whatever was held back has been given out."""
        time.sleep(2)


def taken_by(process):
    """The kilobytes of its own and the open files of a process, by their kinds."""
    folder = pathlib.Path("/proc") / str(process)
    memory = re.search(r"RssAnon:\s+(\d+)", (folder / "status").read_text(encoding="ascii"))
    return int(memory[1]), sorted(kinds_in(folder / "fd"))


def kinds_in(folder):
    for file in folder.iterdir():
        # It may be closed meanwhile.
        with contextlib.suppress(FileNotFoundError):
            yield re.sub(r"\d+", "", os.readlink(file))


if __name__ == "__main__":
    unittest.main()
