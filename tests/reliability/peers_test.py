"""Peers that misbehave against the real window, operated with a real pointer: the window goes on painting and taking
input, keeps what it has, and comes back to the memory and the descriptors that it had."""

import importlib.machinery
import importlib.util
import pathlib
import plistlib
import queue
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from scale import IS_FULL, descriptors, figure, resident_kib, times

TOUR, BUILD = sys.argv[1:3]
del sys.argv[1:3]

loader = importlib.machinery.SourceFileLoader("tour", TOUR)
tour = importlib.util.module_from_spec(importlib.util.spec_from_loader("tour", loader))
loader.exec_module(tour)

HOSTILE_PEER = pathlib.Path(__file__).with_name("hostile_peer.py")
NORMAL_SPEED = "Normal speed"
PATIENCE_SECONDS = 60
MEBIBYTE = 1 << 20
# What allocator and toolkit may keep of what came and went.
ALLOWED_GROWTH_KIB = 16 * 1024
# How long a pane's send may take from beginning to end; only a machine that is left alone can be held to it.
LONGEST_SEND_SECONDS = 2.5


class Peer:
    """A peer that misbehaves, in a process of its own."""

    def __init__(self, *words):
        self.process = subprocess.Popen([sys.executable, "-B", HOSTILE_PEER, *map(str, words)], text=True,
                                        stdout=subprocess.PIPE)
        self.lines = queue.Queue()
        self.thread = threading.Thread(target=self.read, daemon=True)
        self.thread.start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line.strip())

    def next_line(self):
        return self.lines.get(timeout=PATIENCE_SECONDS)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.thread.join()
        self.process.stdout.close()

    def wait(self):
        if self.process.wait(10 * PATIENCE_SECONDS):
            raise AssertionError(f"a hostile peer ended with {self.process.returncode}")
        return self.next_line()


class HostilePeers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="kelvo-test-"))
        cls.stage = cls.enterClassContext(
            tour.Stage(pathlib.Path(BUILD).resolve(), pathlib.Path(folder) / "pictures"))
        cls.preferences = cls.stage.home / "Library/Preferences/KelvoTouchDisplay"
        cls.preferences.mkdir(parents=True)
        cls.write_files()
        cls.stage.start_window()
        cls.window = cls.stage.window_process
        place = cls.stage.place_of(NORMAL_SPEED)
        cls.middle_of_button = [str(place.x + place.width // 2), str(place.y + place.height // 2)]

    @classmethod
    def write_files(cls):
        for name, contents in (
                ("Utilities.plist", {"SelectedMenuItem": 1, "IsShowStatuMenu": True, "DriverEnable": True,
                                     "CurrentDeviceType": [tour.DISPLAY], "VerboseLog": False}),
                (f"Settings_{tour.DISPLAY}.plist", {"DriverVersion": "0.8.0.3"})):
            (cls.preferences / name).write_bytes(plistlib.dumps(contents))

    def setUp(self):
        self.send(8, plistlib.dumps({"SelectedMenuItem": 1}))
        self.stage.wait_shown(NORMAL_SPEED)

    def tearDown(self):
        """Whatever came before, the pane works."""
        self.check_sends()
        self.stage.check_window()

    def driver(self, *words):
        peer = self.enterContext(Peer(*words))
        self.assertEqual(peer.next_line(), "ready")
        return peer

    def send(self, message_id, data, *how):
        """Sends to the pane from yet another process, and gives what it said."""
        code = ("import sys, dbus, dbus.bus, os; bus = dbus.bus.BusConnection(os.environ['DBUS_SESSION_BUS_ADDRESS']); "
                "pane = bus.get_object('com.kelvo.TouchDisplay.PreferenceMessagePort', "
                "'/com/kelvo/TouchDisplay/MessagePort', introspect=False); "
                "print(len(pane.Send(dbus.Int32(int(sys.argv[1])), dbus.ByteArray(sys.stdin.buffer.read()), "
                "dbus_interface='com.kelvo.TouchDisplay.MessagePort', signature='iay', timeout=60)))")
        result = subprocess.run([sys.executable, "-B", "-c", code, str(message_id), *how], input=data, check=True,
                                capture_output=True)
        self.assertEqual(result.stdout, b"0\n")

    def click(self):
        """Presses the button that makes the pane send, without a look at where it is."""
        subprocess.run(["xdotool", "mousemove", *self.middle_of_button, "click", "1"], check=True)

    def check_sends(self):
        """That a click reaches a driver that behaves."""
        with Peer("honest") as driver:
            self.assertEqual(driver.next_line(), "ready")
            self.click()
            self.assertTrue(driver.next_line().endswith(" 0"))

    def held(self):
        return resident_kib(self.window), descriptors(self.window)

    def check_holds_no_more_than(self, before, what):
        # What was closed or freed last may take the next turn of the loop.
        self.check_sends()
        self.stage.application.get_child_count()
        # A thread of the toolkit's own pool takes a descriptor with it when it has had nothing to do for half a minute.
        deadline = time.monotonic() + PATIENCE_SECONDS
        while len(descriptors(self.window)) > len(before[1]) and time.monotonic() < deadline:
            time.sleep(0.5)
        memory, opened = self.held()
        count = len(opened) - len(before[1])
        figure(f"{what}: growth in KiB of memory, in descriptors", (memory - before[0], count))
        self.assertLessEqual(count, 0, (before[1], opened))
        self.assertLessEqual(memory, before[0] + ALLOWED_GROWTH_KIB)

    def test_answers_of_every_wrong_kind(self):
        self.check_sends()
        before = self.held()
        for mode in (("wrong-signature",), ("no-values",), ("error",), ("absent",), ("huge", times(8, 64)), ("twice",),
                     ("vanish",)):
            for _ in range(times(1, 20)):
                with self.subTest(mode=mode), Peer(*mode) as driver:
                    self.assertEqual(driver.next_line(), "ready")
                    self.click()
                    self.assertTrue(driver.next_line().endswith(" 0"))
        self.check_holds_no_more_than(before, "wrong answers")

    def test_no_answer_and_one_that_comes_too_late(self):
        before = self.held()
        for mode in times((("late", 3.0),), (("silent",), ("late", 0.5), ("late", 3.0))):
            with self.subTest(mode=mode), Peer(*mode) as driver:
                self.assertEqual(driver.next_line(), "ready")
                self.click()
                first = float(driver.next_line().split()[0])
                # Input waits while the pane does; all else goes on. A tab is shown, and painted, in the meantime.
                self.send(8, plistlib.dumps({"SelectedMenuItem": 3}))
                self.stage.wait_shown("Version")
                painted = time.monotonic() - first
                self.send(8, plistlib.dumps({"SelectedMenuItem": 1}))
                self.stage.wait_shown(NORMAL_SPEED)
                self.click()
                self.click()
                again = float(driver.next_line().split()[0]) - first
                figure(f"driver {' '.join(map(str, mode))}: seconds until another tab is seen, until the next send",
                       (round(painted, 2), round(again, 2)))
                if IS_FULL:
                    self.assertLess(painted, LONGEST_SEND_SECONDS)
                    self.assertLess(again, 2 * LONGEST_SEND_SECONDS)
        self.check_holds_no_more_than(before, "no answers and late ones")

    def test_driver_that_comes_and_goes(self):
        count = times(200, 20_000)
        before = self.held()
        with Peer("come-and-go", count) as driver:
            clicks = 0
            while driver.process.poll() is None:
                self.click()
                clicks += 1
            self.assertEqual(driver.process.returncode, 0)
        figure("driver that came and went: times, clicks meanwhile", (count, clicks))
        self.check_holds_no_more_than(before, "driver that came and went")

    def test_payloads_up_to_the_limit_are_read_and_no_larger_ones(self):
        before = self.held()
        empty = plistlib.dumps({"SelectedMenuItem": 3, "Filling": ""})
        for size, tab in ((MEBIBYTE, 3), (MEBIBYTE + 1, 0), (MEBIBYTE, 3), (32 * MEBIBYTE, 0)):
            with self.subTest(size=size):
                data = empty.replace(b"<string></string>", b"<string>" + b"x" * (size - len(empty)) + b"</string>")
                self.assertEqual(len(data), size)
                self.send(8, data)
                tour.wait_for(lambda: self.stage.utilities()["SelectedMenuItem"] == tab, f"tab {tab}")
        for _ in range(times(0, 50)):
            self.send(8, b"\xff" * 32 * MEBIBYTE)
        self.send(8, plistlib.dumps({"SelectedMenuItem": 1}))
        self.stage.wait_shown(NORMAL_SPEED)
        self.check_holds_no_more_than(before, "large payloads")

    def flood(self, *words):
        """Floods the pane; gives how long that took, the longest time that the window did not answer for meanwhile, and
        how long a click took to reach the driver."""
        longest = 0.0
        with Peer("honest") as driver, Peer("flood", *words) as peer:
            self.assertEqual(driver.next_line(), "ready")
            clicked = time.monotonic()
            self.click()
            has_ended = False
            while not has_ended:
                has_ended = peer.process.poll() is not None
                begin = time.monotonic()
                self.stage.application.clear_cache()
                self.assertEqual(self.stage.application.get_child_count(), 1)
                longest = max(longest, time.monotonic() - begin)
            reached = float(driver.next_line().split()[0]) - clicked
            return float(peer.wait()), longest, reached

    def test_flood(self):
        self.flood(9, 1000)
        before = self.held()
        for what, message_id, count, size in (
                ("of messages without a meaning", 9, times(3000, 100_000), 0),
                ("of messages that rebuild the list", 7, times(10, 1000), 0),
                ("of payloads of 1 MiB", 9, times(20, 1000), MEBIBYTE)):
            with self.subTest(what=what):
                seconds, longest, reached = self.flood(message_id, count, size)
                figure(f"flood {what}: messages, seconds, longest time until the window answered, until a click's send",
                       (count, seconds, round(longest, 2), round(reached, 2)))
                if IS_FULL:
                    self.assertLess(longest, LONGEST_SEND_SECONDS)
                    self.assertLess(reached, LONGEST_SEND_SECONDS)
        self.check_holds_no_more_than(before, "floods")


if __name__ == "__main__":
    unittest.main()
