"""The driver as a real process, with a session bus and a system bus of its own and no touch display. Takes the driver,
the simulator, the script that starts it with the session, and its unit."""

import json
import os
import pathlib
import plistlib
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

DRIVER, SIMULATOR, STARTER, UNIT = sys.argv[1:5]
TIMEOUT = 60
NO_DISPLAY = "no touch display found; waiting for one to be plugged in"


class Driver(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address"],
                                  stdout=subprocess.PIPE, text=True)

        def end():
            daemon.kill()
            daemon.communicate()
        self.addCleanup(end)
        address = daemon.stdout.readline().strip()
        # The service that hands out displays is on neither, so the driver looks for itself.
        self.environment = dict(os.environ, HOME=str(self.folder), DBUS_SESSION_BUS_ADDRESS=address,
                                DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere", KELVO_LOG_STDERR="1")

    def start(self, **more):
        driver = subprocess.Popen([DRIVER], env=dict(self.environment, **more), stderr=subprocess.PIPE, text=True)

        def end():
            driver.kill()
            driver.communicate()
        self.addCleanup(end)
        return driver

    def await_line(self, driver, text):
        lines = []
        for line in driver.stderr:
            lines.append(line)
            if text in line:
                return
        self.fail(f"the driver ended without {text!r}: {lines}")

    def perform(self, *words):
        return subprocess.run([SIMULATOR, *words], env=self.environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=TIMEOUT)

    def test_without_a_display_it_says_so_once_and_waits_without_waking_up(self):
        driver = self.start()
        self.await_line(driver, NO_DISPLAY)
        status = pathlib.Path(f"/proc/{driver.pid}/status")

        def wake_ups():
            return next(int(line.split()[1]) for line in status.read_text().splitlines()
                        if line.startswith("voluntary_ctxt_switches"))

        # It may still be on its way to sleep.
        before = wake_ups()
        for _ in range(100):
            time.sleep(0.05)
            if wake_ups() == before:
                break
            before = wake_ups()
        time.sleep(1.0)
        self.assertEqual(wake_ups(), before)
        driver.send_signal(signal.SIGTERM)
        self.assertEqual(driver.wait(TIMEOUT), 0)
        self.assertNotIn(NO_DISPLAY, driver.stderr.read())

    def test_it_answers_commands_and_keeps_the_device_list(self):
        driver = self.start()
        self.await_line(driver, NO_DISPLAY)
        self.assertEqual(json.loads(self.perform("status").stdout), {"devices": [], "enabled": True})
        self.assertEqual(json.loads(self.perform("disable").stdout), {"devices": [], "enabled": False})
        self.assertEqual(json.loads(self.perform("states").stdout), {"displays": {}, "refused": {}, "slowDoubleClick": {}})
        self.assertEqual(plistlib.loads(self.perform("states", "plist").stdout.encode()), {"displays": {}, "refused": {}, "slowDoubleClick": {}})
        self.assertIn("property list", self.perform("states", "yaml").stdout)
        utilities = self.folder / "Library/Preferences/KelvoTouchDisplay/Utilities.plist"
        stored = plistlib.loads(utilities.read_bytes())
        self.assertEqual((stored["CurrentDeviceType"], stored["DriverEnable"]), ([], False))

    def test_a_second_driver_is_told_that_one_runs(self):
        self.await_line(self.start(), NO_DISPLAY)
        second = subprocess.run([DRIVER], env=self.environment, stderr=subprocess.PIPE, text=True, timeout=TIMEOUT)
        self.assertEqual(second.returncode, 1)
        self.assertIn("another driver is running", second.stderr)

    def test_the_service_manager_hears_that_it_is_ready_and_waits_for_nothing_without_a_display(self):
        path = str(self.folder / "notify")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(path)
            manager.settimeout(TIMEOUT)
            driver = self.start(NOTIFY_SOCKET=path, WATCHDOG_USEC="200000")
            self.assertEqual(manager.recv(4096).decode(), "READY=1\nWATCHDOG_USEC=0")
            self.await_line(driver, NO_DISPLAY)
            driver.send_signal(signal.SIGTERM)
            # Had it told that it is alive meanwhile, that would come first.
            self.assertEqual(manager.recv(4096).decode(), "STOPPING=1")

    def test_a_session_with_a_service_manager_starts_the_unit_in_its_environment(self):
        tools = self.folder / "tools"
        tools.mkdir()
        calls = self.folder / "calls"
        systemctl = tools / "systemctl"
        systemctl.write_text(f'#!/bin/sh\necho "$@" >>"{calls}"\n')
        systemctl.chmod(0o755)
        subprocess.run(["sh", STARTER], env=dict(self.environment, PATH=f"{tools}:{os.environ['PATH']}"), check=True,
                       timeout=TIMEOUT)
        self.assertEqual(calls.read_text().splitlines(), [
            "--user import-environment DISPLAY KDE_SESSION_VERSION SWAYSOCK WAYLAND_DISPLAY XDG_CURRENT_DESKTOP "
            "XDG_SESSION_TYPE XAUTHORITY",
            "--user start kelvo-touch-driver.service"])

    def test_a_session_without_one_runs_the_driver_itself(self):
        tools = self.folder / "tools"
        tools.mkdir()
        systemctl = tools / "systemctl"
        systemctl.write_text("#!/bin/sh\nexit 1\n")
        systemctl.chmod(0o755)
        run = self.folder / "kelvo-touch-driver"
        run.write_text("#!/bin/sh\necho the driver runs\n")
        run.chmod(0o755)
        starter = self.folder / "start"
        lines = pathlib.Path(STARTER).read_text().splitlines()
        self.assertTrue(lines[-1].endswith('/bin/kelvo-touch-driver"'), lines[-1])
        starter.write_text("\n".join([*lines[:-1], f'exec "{run}"']) + "\n")
        ran = subprocess.run(["sh", str(starter)], env=dict(self.environment, PATH=f"{tools}:{os.environ['PATH']}"),
                             stdout=subprocess.PIPE, text=True, check=True, timeout=TIMEOUT)
        self.assertEqual(ran.stdout, "the driver runs\n")

    def test_the_unit_is_killed_when_it_hangs_and_goes_with_the_session(self):
        lines = pathlib.Path(UNIT).read_text().splitlines()
        for line in ("PartOf=graphical-session.target", "Type=notify", "Restart=on-failure", "WatchdogSec=10",
                     "WatchdogSignal=SIGKILL"):
            self.assertIn(line, lines)


unittest.main(argv=sys.argv[:1])
