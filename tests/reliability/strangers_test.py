"""Who may talk to the pane: a process of another user reaches neither its bus nor its files, and what a message or a
file says is never taken for a format, a command or, but for the model name in the settings path, a path."""

import os
import pathlib
import socket
import struct
import subprocess
import sys
import unittest

import dbus

from pane import DRIVER, PANE, PaneCase
from peers import Lines, wait_until
from scale import skip

PaneCase.program, SIMULATOR, QUIET_DAEMON = sys.argv[1:4]
del sys.argv[1:4]

STRANGER = 65534
# What would show if it were expanded, run or followed.
NAMES = ("%n%s%@%d%f%%", "$(touch kelvo-was-run)", "`touch kelvo-was-run`", "; touch kelvo-was-run #", "<b>&amp;<b>",
         "-rf", "~", "*", "..")
TRACE = pathlib.Path("kelvo-was-run")


def hello():
    """The first message of every client, which the bus answers with the client's name."""
    fields = b""
    for code, kind, text in ((1, "o", "/org/freedesktop/DBus"), (2, "s", "org.freedesktop.DBus"), (3, "s", "Hello"),
                             (6, "s", "org.freedesktop.DBus")):
        fields += b"\0" * (-len(fields) % 8) + bytes((code, 1, ord(kind), 0)) + struct.pack("<I", len(text))
        fields += text.encode() + b"\0"
    header = b"l\1\0\1" + struct.pack("<III", 0, 1, len(fields)) + fields
    return header + b"\0" * (-len(header) % 8)


def welcome_of(socket_path, *words):
    """How far a client comes with these words of a handshake: "rejected", "closed" or "answered"."""
    with socket.socket(socket.AF_UNIX) as connection:
        connection.settimeout(30)
        connection.connect(socket_path)
        connection.sendall(b"\0")
        stream = connection.makefile("rb")
        answer = b""
        for word in words:
            connection.sendall(word.encode() + b"\r\n")
            answer = stream.readline()
        if not answer.startswith(b"OK "):
            return "rejected"
        try:
            connection.sendall(b"BEGIN\r\n" + hello())
            return "answered" if stream.read(1) else "closed"
        except ConnectionError:
            return "closed"


def claim_to_be(uid):
    return "AUTH EXTERNAL " + str(uid).encode().hex()


class OtherUser(PaneCase):
    def setUp(self):
        if os.geteuid():
            skip("only root can become another user")
        super().setUp()

    def as_stranger(self, act):
        """Does something in a process of another user; gives what it returned or raised, as text."""
        reading, writing = os.pipe()
        child = os.fork()
        if child == 0:
            try:
                os.setgroups([])
                os.setresgid(STRANGER, STRANGER, STRANGER)
                os.setresuid(STRANGER, STRANGER, STRANGER)
                result = str(act())
            except BaseException as error:  # To be told to the parent, whatever it is.
                result = f"{type(error).__name__}"
            os.write(writing, result.encode())
            os._exit(0)
        os.close(writing)
        with os.fdopen(reading) as stream:
            result = stream.read()
        os.waitpid(child, 0)
        return result

    def let_everybody_in(self):
        """Takes away what else would keep a stranger out: the modes of the folders and of the socket."""
        self.world.folder.chmod(0o755)
        (self.world.folder / "bus").chmod(0o777)

    def check_only_its_user_is_answered(self, path):
        path = str(path)
        # The same words from the bus's own user are answered.
        self.assertEqual(welcome_of(path, claim_to_be(0)), "answered")
        for words in ((claim_to_be(STRANGER),), (claim_to_be(0),), ("AUTH EXTERNAL", "DATA"), ("AUTH ANONYMOUS",),
                      ("AUTH DBUS_COOKIE_SHA1 " + str(0).encode().hex(), "DATA 00")):
            with self.subTest(words=words):
                self.assertIn(self.as_stranger(lambda said=words: welcome_of(path, *said)), ("rejected", "closed"))

    def test_is_refused_by_the_bus_though_it_may_connect(self):
        self.world.set_utilities("Desk")
        self.start_pane()
        self.let_everybody_in()
        self.check_only_its_user_is_answered(self.world.folder / "bus")
        self.wait_handled()

    def test_cannot_send_with_a_client_that_is_meant_for_it(self):
        self.world.set_utilities("Desk")
        self.start_pane()
        self.let_everybody_in()
        command = ["dbus-send", f"--bus={self.world.address}", f"--dest=com.kelvo.TouchDisplay.{PANE}",
                   "--print-reply", "/com/kelvo/TouchDisplay/MessagePort", "com.kelvo.TouchDisplay.MessagePort.Send",
                   "int32:9", "array:byte:0"]
        # The same command is answered for the bus's own user.
        self.assertEqual(subprocess.run(command, capture_output=True, check=False).returncode, 0)

        stranger = ["setpriv", f"--reuid={STRANGER}", f"--regid={STRANGER}", "--clear-groups"]
        result = subprocess.run([*stranger, *command], capture_output=True, check=False)

        self.assertNotEqual(result.returncode, 0)
        # Who may listen does so until he is stopped.
        monitor = ["dbus-monitor", "--address", self.world.address]
        stopped = 124
        for listener, seconds, is_heard in (([], "1", True), (stranger, "30", False)):
            result = subprocess.run(["timeout", seconds, *listener, *monitor], capture_output=True, check=False)
            self.assertEqual(result.returncode == stopped, is_heard)
        self.wait_handled()

    def test_is_refused_by_a_bus_that_this_product_starts(self):
        path = self.world.folder / "own-bus"
        daemon = subprocess.Popen([QUIET_DAEMON, "--session", "--nofork", "--print-address=1",
                                   f"--address=unix:path={path}"], stdout=subprocess.PIPE)
        try:
            self.assertTrue(daemon.stdout.readline())
            self.world.folder.chmod(0o755)
            path.chmod(0o777)
            self.check_only_its_user_is_answered(path)
        finally:
            daemon.kill()
            daemon.wait()
            daemon.stdout.close()

    def test_can_neither_read_nor_write_the_files(self):
        self.world.set_utilities("Desk")
        self.file.unlink()
        simulator = self.world.start(SIMULATOR, "run", "--connect", "Desk")
        self.assertIn("Desk", simulator.stdout.readline())
        self.start_pane()
        self.show_tab(1)
        self.let_everybody_in()
        self.world.home.chmod(0o755)
        files = [entry for entry in (self.world.home / "Library").rglob("*") if entry.is_file()]
        self.assertGreaterEqual(len(files), 3)
        for file in files:
            with self.subTest(file=file.name):
                self.assertTrue(self.as_stranger(lambda path=file: os.stat(path).st_size).isdigit())
                self.assertEqual(self.as_stranger(lambda path=file: open(path, "rb").close()), "PermissionError")
                self.assertEqual(self.as_stranger(lambda path=file: open(path, "ab").close()), "PermissionError")
                self.assertEqual(self.as_stranger(lambda path=file: os.rename(path, f"{path}2")), "PermissionError")
        self.assertEqual(self.as_stranger(lambda: (self.file.parent / "New.plist").touch()), "PermissionError")


class Texts(PaneCase):
    def tearDown(self):
        self.assertFalse(TRACE.exists())
        self.end_pane()

    def test_of_files_are_shown_and_stored_as_they_stand(self):
        TRACE.unlink(missing_ok=True)
        self.world.set_utilities()
        self.start_pane()
        for name in NAMES:
            with self.subTest(name=name):
                self.world.set_utilities(name, SelectedMenuItem=1)
                self.wait_handled()
                self.wait_handled()
                self.assertIn("kMessageIDForDeviceIsConnected  " + name, self.log.read())
                self.assertEqual(self.world.plist("Utilities.plist")["SelectDeviceName"], name)
                self.assertIn("GestureArray", self.world.plist(f"Settings_{name}.plist"))
        self.assertEqual(set(self.names()), {"Utilities.plist", *(f"Settings_{name}.plist" for name in NAMES)})

    def test_of_messages_are_printed_as_they_stand(self):
        simulator = self.world.start(SIMULATOR, "run", "--connect", "Desk")
        output = Lines(simulator.stdout)
        wait_until(output.read, "the simulator's first line")
        self.start_pane()
        for name in (*NAMES, "../../../evil"):
            self.world.send(DRIVER, 3, {"RotateMode": name, "DeviceName": name})
            wait_until(lambda said=name: f'"DeviceName": "{said}"' in output.read()[-1], "the line of the message")
        self.world.send(PANE, 8, {name: name for name in NAMES})
        self.wait_handled()
        self.assertEqual(self.names(), ["Settings_Desk.plist", "Utilities.plist"])

    def test_of_settings_files_are_shown_as_they_stand(self):
        self.world.set_utilities("Desk", SelectedMenuItem=3)
        self.world.set_plist("Settings_Desk.plist", {name: name for name in NAMES} | {"DriverVersion": NAMES[0]})
        before = self.world.plist("Settings_Desk.plist")
        self.start_pane()
        self.check_saves(1)
        contents = self.world.plist("Settings_Desk.plist")
        self.assertEqual({key: contents[key] for key in before}, before)


class Calls(PaneCase):
    def test_of_a_wrong_shape_are_refused_and_change_nothing(self):
        self.world.set_utilities("Desk")
        self.start_pane()
        self.check_saves(1)
        before = self.file.read_bytes()
        name, path = f"com.kelvo.TouchDisplay.{PANE}", "/com/kelvo/TouchDisplay/MessagePort"
        interface = "com.kelvo.TouchDisplay.MessagePort"
        for at, member, signature, values in (
                (path, "Send", "s", ("%n%s%@",)), (path, "Send", "", ()), (path, "Send", "ia{sv}", (8, {})),
                (path, "Send", "iayi", (8, b"", 1)), (path, "Send", "xay", (8, b"")), (path, "Quit", "", ()),
                ("/", "Send", "iay", (8, b""))):
            with self.subTest(at=at, member=member, signature=signature):
                with self.assertRaises(dbus.DBusException):
                    self.world.bus.call_blocking(name, at, interface, member, signature, values, timeout=60)
        self.wait_handled()
        self.assertEqual(self.file.read_bytes(), before)


class ModelNameWithSlash(PaneCase):
    """The model name is part of the settings path as it stands, so that a "/" in it makes a nested path. It never gives
    one outside by itself, since "Settings_" and what stands before the first "/" must be a folder that exists."""

    def start_with(self, name):
        self.world.set_utilities(name, SelectedMenuItem=1)
        self.start_pane()
        self.wait_handled()

    def test_leads_nowhere_without_a_folder_of_that_name(self):
        for name in ("a/b", "../../../evil", "/etc/evil", "x/../../../../../evil"):
            with self.subTest(name=name):
                self.world.set_utilities(name, SelectedMenuItem=1)
                before = self.everything()
                if not hasattr(self, "process"):
                    self.start_pane()
                self.wait_handled()
                self.assertEqual(self.everything(), before)

    def test_leads_into_a_folder_of_that_name(self):
        (self.world.preferences / "Settings_a").mkdir(parents=True)
        self.start_with("a/b")
        self.assertEqual(list(self.world.plist("Settings_a/b.plist")), ["GestureArray"])

    def test_leads_out_of_the_folder_where_one_of_that_name_stands(self):
        (self.world.preferences / "Settings_a").mkdir(parents=True)
        self.start_with("a/../../nested")
        self.assertEqual(list(self.world.plist("../nested.plist")), ["GestureArray"])

    def everything(self):
        return sorted(str(entry.relative_to(self.world.folder)) for entry in self.world.folder.rglob("*"))


if __name__ == "__main__":
    unittest.main()
