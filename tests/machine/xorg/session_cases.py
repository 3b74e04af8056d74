"""Who gets a display, what can be done with what is handed out, and what is left of it when another session is in
front."""

import contextlib
import json
import pathlib
import pwd
import unittest

from evdev import ecodes

import desk
from fixtures import AsPointer, DRIVER, start_driver
from nodes import Reader, virtual_nodes

OTHER = "other"
ERROR = "com.kelvo.TouchDisplay.Devices.Error."
DISPLAY, TOUCH_SCREEN, POINTER, TOUCHPAD, KEYBOARD = range(5)
PROXY = f"{desk.RUNTIME}/system-bus-for-a-sandbox"


class Holder(desk.Program):
    """A program that asks for displays as a driver does."""

    def __init__(self, user=desk.NAME, **variables):
        runtime = f"/run/user/{pwd.getpwnam(user).pw_uid}"
        desk.wait_for(pathlib.Path(runtime, "bus").exists, f"the bus of {user}")
        # Of the user's manager, as the driver is: what belongs to no session is nobody's to polkit.
        super().__init__("systemd-run", "--user", "--quiet", "--pipe", "--collect",
                         *(f"--setenv={name}={value}" for name, value in variables.items()),
                         "/usr/bin/python3", "-B", "/run/tests/machine/holder.py", user=user,
                         environment={"XDG_RUNTIME_DIR": runtime, "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus"})
        self.wait_line(lambda line: "ready" in line, "the program that asks for displays")

    def __exit__(self, *details):
        # It ends when it is asked no more.
        self.process.stdin.close()
        self.process.wait(desk.PATIENCE_SECONDS)
        super().__exit__(*details)

    def do(self, *question):
        """What is found, or the name of the error."""
        answer = json.loads(self.ask(json.dumps(question)))
        return answer.get("found", answer.get("error"))

    def open_only(self):
        ((number, _),) = self.do("displays")
        return self.do("open", number)


class Sessions(AsPointer):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        desk.start_session(OTHER, 2, "tty", "/bin/sleep", "infinity")
        cls.addClassCleanup(desk.as_root, "systemctl", "stop", "session-on-tty2.service")
        desk.wait_for(lambda: desk.session_of(OTHER), "the other's session")
        desk.activate(desk.NAME)
        # To start one takes long.
        cls.holder = cls.enterClassContext(Holder())
        cls.other = cls.enterClassContext(Holder(user=OTHER))

    def setUp(self):
        super().setUp()
        self.addCleanup(self.wait_driver)
        self.addCleanup(start_driver)
        self.addCleanup(desk.activate, desk.NAME)
        for each in (self.holder, self.other):
            self.addCleanup(each.do, "leave")

    def wait_open(self, holder):
        """The display and its four virtual devices, once nobody has it any longer."""
        desk.wait_for(lambda: holder.open_only() == 5, "the display")

    def test_while_the_driver_has_it_nobody_else_gets_it(self):
        self.assertEqual(self.holder.open_only(), ERROR + "Busy")
        self.assertEqual(self.other.open_only(), ERROR + "NotActive")
        self.assert_driven()

    def test_a_sandbox_does_not_reach_the_service(self):
        with desk.Program("xdg-dbus-proxy", "unix:path=/run/dbus/system_bus_socket", PROXY, "--filter"):
            desk.wait_for(pathlib.Path(PROXY).exists, "the proxy")
            with Holder(DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={PROXY}") as caged:
                self.assertIn(caged.do("displays"), ("org.freedesktop.DBus.Error.ServiceUnknown",
                                                     "org.freedesktop.DBus.Error.AccessDenied"))

    def test_another_session_in_front_has_it_and_the_driver_gets_it_back(self):
        self.assert_driven()
        desk.activate(OTHER)
        self.wait_open(self.other)
        self.other.do("leave")
        desk.activate(desk.NAME)
        self.wait_driver()
        self.wait_driven()
        self.assert_driven()

    def test_what_was_handed_out_writes_only_what_its_device_has(self):
        desk.run("systemctl", "--user", "stop", DRIVER)
        self.wait_open(self.holder)
        with contextlib.ExitStack() as stack:
            readers = [stack.enter_context(Reader(node)) for node in virtual_nodes()]
            self.assertEqual(len(readers), 4)
            for index in (TOUCH_SCREEN, POINTER, TOUCHPAD, KEYBOARD):
                for key in (ecodes.KEY_Q, ecodes.KEY_ENTER + 1000, ecodes.KEY_POWER, ecodes.KEY_SYSRQ):
                    self.holder.do("write", index, ecodes.EV_KEY, key, 1)
            self.holder.do("write", KEYBOARD, ecodes.EV_KEY, ecodes.KEY_F12, 1)
            self.holder.do("write", KEYBOARD, ecodes.EV_KEY, ecodes.KEY_F12, 0)
            heard = lambda: [event for reader in readers for frame in reader.read() for event in frame]  # noqa: E731
            desk.wait_for(lambda: (ecodes.KEY_F12, 0) in heard(), "a key that the keyboard has")
            self.assertEqual(heard(), [(ecodes.KEY_F12, 1), (ecodes.KEY_F12, 0)])

    def test_what_was_handed_out_is_dead_once_another_session_is_in_front(self):
        desk.run("systemctl", "--user", "stop", DRIVER)
        self.wait_open(self.holder)
        self.panel.tap((0.5, 0.5))
        desk.wait_for(lambda: self.holder.do("read", DISPLAY), "the display's reports")
        self.assertEqual(self.holder.do("write", POINTER, ecodes.EV_KEY, ecodes.BTN_LEFT, 1), 48)

        desk.activate(OTHER)
        desk.wait_for(lambda: self.holder.do("read", DISPLAY) == "No such device", "the display to be taken back")
        self.assert_nothing_down()
        self.panel.tap((0.5, 0.5))
        self.assertEqual(self.holder.do("read", DISPLAY), "No such device")
        with contextlib.ExitStack() as stack:
            readers = [stack.enter_context(Reader(node)) for node in virtual_nodes()]
            for index in (TOUCH_SCREEN, POINTER, TOUCHPAD, KEYBOARD):
                for key in (ecodes.KEY_Q, ecodes.KEY_F12, ecodes.BTN_LEFT):
                    self.assertEqual(self.holder.do("write", index, ecodes.EV_KEY, key, 1), "No such device")
            self.assertEqual([reader.read() for reader in readers], [[] for _ in readers])
        self.assertEqual(self.holder.open_only(), ERROR + "NotActive")

        desk.activate(desk.NAME)
        self.wait_open(self.holder)
        self.panel.tap((0.5, 0.5))
        desk.wait_for(lambda: self.holder.do("read", DISPLAY), "the display's reports")


if __name__ == "__main__":
    unittest.main()
