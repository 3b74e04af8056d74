"""Measures the driver on a kernel of its own, beside a bare relay and what people use today: the time that each adds to
a frame of five fingers at 125 Hz, in turns in one boot; how late a long press is; and what the driver takes while
nobody touches anything. Prints rows of a table in Markdown and leaves every sample in results.json."""

import contextlib
import fcntl
import json
import os
import pathlib
import signal
import statistics
import struct
import subprocess
import threading
import time

import evdev
from evdev import ecodes

import desk
from fixtures import connected_displays, DRIVER
from nodes import GONE, is_virtual, virtual_nodes
from panel import FRAME_SECONDS, Panel
from panels import FOCALTECH

EVENT = struct.Struct("llHHi")
EVIOCSCLOCKID = 0x400445A0
MONOTONIC = struct.pack("i", time.CLOCK_MONOTONIC)
ROUNDS = 5
FRAMES = 400
# The first frames of a hand are looked at before they are given out.
WARM_UP = 25
IDLE_SECONDS = 30
LONG_PRESSES = 10
LONG_PRESS_SECONDS = 0.5
TSLIB = {"TSLIB_CONFFILE": "/run/ts.conf", "TSLIB_CONSOLEDEVICE": "none", "TSLIB_FBDEVICE": "/dev/fb0"}
DRIVER_NAME, RELAY = "driver", "bare relay"


class Stamps(contextlib.AbstractContextManager):
    """When each frame came out of an event node, in ns, by the kernel's own stamps."""

    def __init__(self, node):
        self.file = os.open(node, os.O_RDONLY)
        fcntl.ioctl(self.file, EVIOCSCLOCKID, MONOTONIC)
        self.chunks = []
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        with contextlib.suppress(OSError):
            while chunk := os.read(self.file, EVENT.size * 512):
                self.chunks.append(chunk)

    def events(self):
        return [((seconds * 1000000 + microseconds) * 1000, kind, code, value)
                for chunk in list(self.chunks) for seconds, microseconds, kind, code, value in EVENT.iter_unpack(chunk)]

    def frames(self):
        return [stamp for stamp, kind, code, _ in self.events() if kind == ecodes.EV_SYN and code == ecodes.SYN_REPORT]

    def __exit__(self, *_):
        os.close(self.file)


def touch_screens():
    """Nodes that take several fingers."""
    found = {}
    for node in evdev.list_devices():
        with contextlib.suppress(*GONE), contextlib.closing(evdev.InputDevice(node)) as device:
            axes = [code for code, _ in device.capabilities().get(ecodes.EV_ABS, [])]
            if ecodes.ABS_MT_SLOT in axes and ecodes.INPUT_PROP_POINTER not in device.input_props():
                found[node] = is_virtual(device)
    return found


@contextlib.contextmanager
def started(command, environment):
    """A program that gives a display out anew, and the node where."""
    known = set(touch_screens())
    process = subprocess.Popen(command, env={**os.environ, **environment}, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        yield desk.wait_for(lambda: set(touch_screens()) - known, f"the device of {command[0]}").pop()
    finally:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        desk.wait_for(lambda: set(touch_screens()) <= known, f"the device of {command[0]} to go")


@contextlib.contextmanager
def started_driver(_node):
    desk.run("systemctl", "--user", "start", DRIVER)
    try:
        desk.wait_for(lambda: FOCALTECH.name in connected_displays(), "the driver to have the display")
        yield desk.wait_for(lambda: [node for node, is_ours in touch_screens().items() if is_ours],
                            "the driver's touch screen").pop()
    finally:
        desk.run("systemctl", "--user", "stop", DRIVER)


SIDES = {
    DRIVER_NAME: started_driver,
    RELAY: lambda node: started(["/opt/kelvo-machine-relay", node], {}),
    "tslib's ts_uinput": lambda node: started(["ts_uinput", "-s", "5"], {**TSLIB, "TSLIB_TSDEVICE": node}),
    "interception-tools": lambda node: started(["sh", "-c", f"interception -g {node} | uinput -d {node}"], {}),
}


def added_times(panel, node):
    """What lies between the display's report and the frame that is given out for it, in ns."""
    sent = []
    with Stamps(node) as stamps:
        due = time.monotonic()
        for frame in range(FRAMES):
            way = frame / FRAMES / 2
            places = {finger: (0.1 + finger / 10 + way / 5, 0.1 + way) for finger in range(5)}
            panel.move(places)
            sent.append(panel.written_at)
            due += FRAME_SECONDS
            time.sleep(max(0.0, due - time.monotonic()))
        # Its frame is not among those that are compared.
        panel.lift()
        desk.wait_for(lambda: len(stamps.frames()) > FRAMES, f"{FRAMES} frames of {node}")
        given = stamps.frames()[:FRAMES]
    return [out - into for into, out in zip(sent, given)][WARM_UP:]


def measure_frames(port):
    samples = {side: [] for side in SIDES}
    missing = {}
    for round_number in range(ROUNDS):
        for side, start in SIDES.items():
            if side in missing:
                continue
            try:
                with Panel(FOCALTECH) as panel, start(panel.touch_node()) as node:
                    samples[side].append(added_times(panel, node))
                print(f"round {round_number + 1}, {side}: {statistics.median(samples[side][-1]) / 1000:.0f} µs",
                      file=port)
            except (AssertionError, subprocess.CalledProcessError, OSError) as error:
                missing[side] = str(error)
                print(f"{side} is left out: {error}", file=port)
    return {side: rounds for side, rounds in samples.items() if rounds}


def measure_rest(port):
    """Long presses, memory and wake-ups of the driver."""
    with Panel(FOCALTECH) as panel, started_driver(None):
        (pointer,) = virtual_nodes(" Pointer")
        desk.run("kelvo-touchctl", "set", FOCALTECH.name, "right-click", "on", LONG_PRESS_SECONDS)
        late = []
        with Stamps(pointer) as stamps:
            for number in range(LONG_PRESSES):
                landed = time.monotonic_ns()
                panel.move({0: (0.3 + number / 50, 0.5)})
                pressed = lambda: [stamp for stamp, kind, code, value in stamps.events()  # noqa: E731
                                   if (kind, code, value) == (ecodes.EV_KEY, ecodes.BTN_RIGHT, 1)]
                desk.wait_for(lambda: len(pressed()) > number, "the long press")
                late.append(pressed()[number] - landed - LONG_PRESS_SECONDS * 1e9)
                panel.lift()
        process = pathlib.Path("/proc") / desk.run("systemctl", "--user", "show", "--value", "--property=MainPID",
                                                   DRIVER).strip()
        memory = next(int(line.split()[1]) for line in (process / "smaps_rollup").read_text().splitlines()
                      if line.startswith("Pss:"))
        print("idle ...", file=port)
        before = wake_ups(process)
        time.sleep(IDLE_SECONDS)
        with_display = wake_ups(process) - before
        panel.unplug()
        desk.wait_for(lambda: not connected_displays(), "the driver to miss the display")
        time.sleep(2)
        before = wake_ups(process)
        time.sleep(IDLE_SECONDS)
        return {"late": late, "memory": memory, "with display": with_display,
                "without display": wake_ups(process) - before}


def wake_ups(process):
    """How often its threads have gone to sleep by themselves."""
    return sum(int(line.split()[1]) for status in process.glob("task/*/status")
               for line in status.read_text().splitlines() if line.startswith("voluntary_ctxt_switches"))


def percentile(values, share):
    return sorted(values)[min(len(values) - 1, int(len(values) * share))]


def rows(samples, rest):
    def pooled(side):
        return [each for rounds in samples[side] for each in rounds]

    yield "| what | here | against | there | ratio | min – max | goal | |"
    yield "|---|--:|---|--:|--:|:-:|--:|---|"
    for name, of in (("median", statistics.median), ("99 of 100", lambda values: percentile(values, 0.99))):
        here = of(pooled(DRIVER_NAME))
        for side in samples:
            if side == DRIVER_NAME:
                continue
            ratios = [of(ours) / of(theirs) for ours, theirs in zip(samples[DRIVER_NAME], samples[side])]
            goal = 1.15 if side == RELAY else 1
            ratio = statistics.median(ratios)
            yield (f"| time added to a frame of five fingers, {name} | {here / 1000:.0f} µs | {side} | "
                   f"{of(pooled(side)) / 1000:.0f} µs | {ratio:.2f} | {min(ratios):.2f} – {max(ratios):.2f} | "
                   f"≤ {goal} | {'yes' if ratio <= goal else '**no**'} |")
    late = [each / 1e6 for each in rest["late"]]
    yield (f"| a long press of {LONG_PRESS_SECONDS} s late, median of {len(late)} | {statistics.median(late):.1f} ms | "
           f"earliest, latest | {min(late):.1f}, {max(late):.1f} ms | | | ≥ 0 | {'yes' if min(late) >= 0 else '**no**'} |")
    yield (f"| memory (PSS) of the driver with a display | {rest['memory'] / 1024:.1f} MiB | | | | | ≤ 4 MiB | "
           f"{'yes' if rest['memory'] <= 4096 else '**no**'} |")
    # With a display the watchdog's, every 5 s.
    for place, most in (("with display", IDLE_SECONDS // 5 + 1), ("without display", 0)):
        yield (f"| wake-ups in {IDLE_SECONDS} s, {place} | {rest[place]} | | | | | ≤ {most} | "
               f"{'yes' if rest[place] <= most else '**no**'} |")


def measure(port, results):
    pathlib.Path("/run/ts.conf").write_text("module_raw input grab_events=1\n", encoding="ascii")
    desk.start_session(desk.NAME, 1, "tty", "/bin/sleep", "infinity")
    desk.wait_for((desk.RUNTIME / "bus").exists, "the user's bus")
    desk.activate(desk.NAME)
    samples = measure_frames(port)
    rest = measure_rest(port)
    (results / "results.json").write_text(json.dumps({"added": samples, "rest": rest}), encoding="utf-8")
    for row in rows(samples, rest):
        print(row, file=port)
