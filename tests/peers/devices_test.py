"""The service that hands out touch displays, as a real process on a bus of its own, with a machine made of umockdev's
folders. Takes the service, and the folder that has its files."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import textwrap
import unittest
import xml.dom.minidom

SERVICE, FILES = sys.argv[1], pathlib.Path(sys.argv[2])
NAME = "com.kelvo.TouchDisplay.Devices"
PATH = "/com/kelvo/TouchDisplay/Devices"
TIMEOUT = 60

# An input device and its event node, as udev describes them.
PANEL = """\
P: /devices/usb/input/input5/event5
N: input/event5
E: DEVNAME=/dev/input/event5
E: SUBSYSTEM=input
E: ID_INPUT=1
E: ID_INPUT_TOUCHSCREEN=1
E: ID_SERIAL=Maker_Panel_1

P: /devices/usb/input/input5
E: SUBSYSTEM=input
A: name=Maker's Panel
A: phys=usb-1/input0
A: properties=2
A: capabilities/abs=260800000000003
"""

# Runs a command in a folder of its own for what the system keeps in /run, where udev's control file says that it runs.
IN_A_MACHINE = ["unshare", "--map-root-user", "--mount", "--propagation", "private", "sh", "-c",
                'mount -t tmpfs none /run && mkdir /run/udev && : >/run/udev/control && exec "$@"', "sh"]


class Bus:
    """A bus like the system's, with the policy of the service if it is asked for."""

    def __init__(self, folder, policy=""):
        config = folder / "bus.conf"
        config.write_text(textwrap.dedent(f"""\
            <busconfig>
              <type>system</type>
              <listen>unix:path={folder}/socket</listen>
              <auth>EXTERNAL</auth>
              <policy context="default">
                <allow user="*"/>
                <deny own="*"/>
                <allow send_type="method_call"/><allow send_type="signal"/>
                <allow send_requested_reply="true" send_type="method_return"/>
                <allow send_requested_reply="true" send_type="error"/>
                <allow receive_type="method_call"/><allow receive_type="method_return"/>
                <allow receive_type="error"/><allow receive_type="signal"/>
              </policy>
              {policy}
            </busconfig>
            """), encoding="utf-8")
        self.daemon = subprocess.Popen(["dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                                        f"--config-file={config}"], stdout=subprocess.PIPE, text=True)
        self.address = self.daemon.stdout.readline().strip()

    def end(self):
        self.daemon.kill()
        self.daemon.wait()
        self.daemon.stdout.close()

    def call(self, *words):
        return subprocess.run(["dbus-send", f"--bus={self.address}", "--print-reply", "--type=method_call",
                               f"--dest={NAME}", PATH, *words],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=TIMEOUT)


class Devices(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def start_bus(self, policy):
        bus = Bus(self.folder, policy)
        self.addCleanup(bus.end)
        return bus

    def start_service(self, bus, panel=PANEL):
        description = self.folder / "panel.umockdev"
        description.write_text(panel, encoding="utf-8")
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.address, KELVO_LOG_STDERR="1",
                           ASAN_OPTIONS="verify_asan_link_order=0")
        service = subprocess.Popen([*IN_A_MACHINE, "umockdev-run", f"--device={description}", "--", SERVICE],
                                   env=environment, stderr=subprocess.PIPE, text=True)

        def end():
            service.send_signal(signal.SIGTERM)
            service.communicate(timeout=TIMEOUT)
        self.addCleanup(end)
        while True:
            answer = bus.call(f"{NAME}.Displays")
            if "was not provided" not in answer.stdout and "ServiceUnknown" not in answer.stdout:
                return answer
            self.assertIsNone(service.poll(), "the service has ended")

    ANYBODY = f'<policy context="default"><allow own="{NAME}"/></policy>'

    def test_a_display_is_listed_by_the_kernels_name(self):
        answer = self.start_service(self.start_bus(self.ANYBODY))
        self.assertIn("uint32 1", answer.stdout)
        self.assertIn('"Maker\'s Panel"', answer.stdout)

    def test_a_mouse_is_not_listed(self):
        answer = self.start_service(self.start_bus(self.ANYBODY), PANEL.replace("A: properties=2", "A: properties=0"))
        self.assertEqual(answer.returncode, 0)
        self.assertNotIn("uint32", answer.stdout)

    def test_who_has_no_active_session_is_refused(self):
        bus = self.start_bus(self.ANYBODY)
        self.start_service(bus)
        answer = bus.call(f"{NAME}.Open", "uint32:1")
        self.assertIn(f"{NAME}.Error.NotActive", answer.stdout)

    def test_what_is_no_number_is_refused(self):
        bus = self.start_bus(self.ANYBODY)
        self.start_service(bus)
        self.assertIn("org.freedesktop.DBus.Error", bus.call(f"{NAME}.Open", "string:/dev/input/event0").stdout)
        self.assertEqual(bus.call(f"{NAME}.Displays").returncode, 0)

    def test_a_second_service_ends_and_says_why(self):
        bus = self.start_bus(self.ANYBODY)
        self.start_service(bus)
        second = subprocess.run([SERVICE], env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.address),
                                stderr=subprocess.PIPE, text=True, timeout=TIMEOUT)
        self.assertEqual(second.returncode, 1)
        self.assertIn("cannot take the name of the service on the system bus", second.stderr)

    def test_the_policy_lets_root_alone_have_the_name(self):
        bus = self.start_bus(f"<include>{FILES / (NAME + '.conf')}</include>")
        owned = subprocess.run(["dbus-send", f"--bus={bus.address}", "--print-reply", "--dest=org.freedesktop.DBus",
                                "/", "org.freedesktop.DBus.RequestName", f"string:{NAME}", "uint32:0"],
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=TIMEOUT)
        self.assertEqual("AccessDenied" not in owned.stdout, os.geteuid() == 0, owned.stdout)

    def test_polkit_knows_the_action_that_is_asked_for(self):
        actions = xml.dom.minidom.parse(str(FILES / "com.kelvo.TouchDisplay.policy")).getElementsByTagName("action")
        self.assertEqual([action.getAttribute("id") for action in actions], ["com.kelvo.TouchDisplay.open-display"])
        values = {name: actions[0].getElementsByTagName(name)[0].firstChild.data
                  for name in ("allow_any", "allow_inactive", "allow_active")}
        self.assertEqual(values, {"allow_any": "no", "allow_inactive": "no", "allow_active": "yes"})

    def test_the_seat_of_a_virtual_device_stands_in_its_phys(self):
        printed = subprocess.run([SERVICE, "--seat-of", "kelvo-touch/seat-desk/3/touchpad"], stdout=subprocess.PIPE,
                                 text=True, check=True)
        self.assertEqual(printed.stdout, "ID_SEAT=seat-desk\n")
        self.assertNotEqual(subprocess.run([SERVICE, "--seat-of", "usb-1/input0"],
                                           stderr=subprocess.DEVNULL).returncode, 0)


unittest.main(argv=sys.argv[:1])
