"""A message bus and peers for tests, which share no code with the program: plain D-Bus and Python's own plistlib."""

import contextlib
import os
import pathlib
import plistlib
import select
import shutil
import signal
import subprocess
import tempfile
import time

import dbus
import dbus.bus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME_PREFIX = "com.kelvo.TouchDisplay."
PATH = "/com/kelvo/TouchDisplay/MessagePort"
INTERFACE = "com.kelvo.TouchDisplay.MessagePort"

# How long anything that must happen may take on the slowest machine.
PATIENCE_SECONDS = 30

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)


def wait_until(condition, what):
    """Runs the main loop until the condition holds; a condition that never does is an AssertionError."""
    deadline = time.monotonic() + PATIENCE_SECONDS
    context = GLib.MainContext.default()
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what}")
        if not context.iteration(False):
            time.sleep(0.005)


class World(contextlib.AbstractContextManager):
    """A private bus and a private home, with the processes started in them.

    The bus starts what the machine's own would, or only the `services` that are named.
    """

    def __init__(self, services=None):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kelvo-test-"))
        self.bus_kind = "--session" if services is None else f"--config-file={self.offer(services)}"
        self.home = self.folder / "home"
        self.home.mkdir()
        self.preferences = self.home / "Library/Preferences/KelvoTouchDisplay"
        self.processes = []
        self.start_bus()
        self.environment = dict(
            os.environ, HOME=str(self.home), DBUS_SESSION_BUS_ADDRESS=self.address,
            KELVO_LOCAL_LIBRARY=str(self.folder / "Library"), KELVO_LOG_STDERR="1")

    def offer(self, services):
        """Writes the configuration of a bus that starts these."""
        offered = self.folder / "services"
        offered.mkdir()
        for service in services:
            (offered / f"{service}.service").symlink_to(f"/usr/share/dbus-1/services/{service}.service")
        configuration = self.folder / "bus.conf"
        configuration.write_text(f"""<busconfig>
            <type>session</type>
            <listen>unix:path={self.folder}/bus</listen>
            <servicedir>{offered}</servicedir>
            <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
        </busconfig>""", encoding="utf-8")
        return configuration

    def start_bus(self):
        self.bus_process = subprocess.Popen(
            ["dbus-daemon", self.bus_kind, "--nofork", "--print-address=1", f"--address=unix:path={self.folder}/bus"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        # Without the daemon's own identity, which a daemon started anew would not have.
        self.address = self.bus_process.stdout.readline().strip().split(",guid=")[0]
        self.bus = dbus.bus.BusConnection(self.address)
        self.bus.set_exit_on_disconnect(False)

    def stop_bus(self):
        self.bus.close()
        self.bus_process.kill()
        self.bus_process.wait(PATIENCE_SECONDS)
        self.bus_process.stdout.close()
        (self.folder / "bus").unlink(missing_ok=True)

    def __exit__(self, *_):
        for process in self.processes:
            if process.poll() is None:
                process.send_signal(signal.SIGCONT)
                process.terminate()
                process.wait(PATIENCE_SECONDS)
            for stream in (process.stdout, process.stderr):
                if stream:
                    stream.close()
        self.stop_bus()
        shutil.rmtree(self.folder)

    def start(self, *command):
        process = subprocess.Popen([str(word) for word in command], env=self.environment, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.processes.append(process)
        return process

    def run(self, *command):
        """Runs a command to its end, while this process goes on answering messages."""
        return self.run_together([command])[0]

    def run_together(self, commands):
        """Runs commands side by side, which do not touch one another's files."""
        processes = [self.start(*command) for command in commands]
        wait_until(lambda: all(process.poll() is not None for process in processes), commands)
        return [(process.returncode, process.stdout.read(), process.stderr.read()) for process in processes]

    def set_plist(self, name, contents):
        """Writes a file of the product's, or of the folder above: "../NAME"."""
        self.preferences.mkdir(parents=True, exist_ok=True)
        with open(self.preferences / name, "wb") as file:
            plistlib.dump(contents, file, sort_keys=False)

    def set_utilities(self, *displays, **others):
        """Writes what the driver and the pane share: these are connected, the driver is on, the first tab is shown."""
        self.set_plist("Utilities.plist", {
            "SelectedMenuItem": 0, "IsShowStatuMenu": True, "DriverEnable": True, "CurrentDeviceType": list(displays),
            "VerboseLog": False, **others})

    def plist(self, name):
        with open(self.preferences / name, "rb") as file:
            return plistlib.load(file)

    def has_owner(self, port):
        return self.bus.name_has_owner(NAME_PREFIX + port)

    def let_run(self, port):
        """Returns once the main loop of the port's owner has run, which also runs while that waits."""
        owner = self.bus.get_object(NAME_PREFIX + port, PATH, introspect=False)
        for _ in range(2):
            owner.Ping(dbus_interface="org.freedesktop.DBus.Peer")

    def send(self, port, message_id, payload):
        """Sends to a port and gives the reply's bytes."""
        data = payload if isinstance(payload, bytes) else plistlib.dumps(payload, sort_keys=False)
        proxy = self.bus.get_object(NAME_PREFIX + port, PATH, introspect=False)
        return bytes(proxy.Send(dbus.Int32(message_id), dbus.ByteArray(data), dbus_interface=INTERFACE,
                                signature="iay"))


class Peer(dbus.service.Object):
    """Owns a message port, on a connection of its own, and keeps what arrives there.

    `heard`, if given, is called with each message's id and data before it is answered.
    """

    def __init__(self, world, port, heard=None):
        self.bus = dbus.bus.BusConnection(world.address)
        self.bus.set_exit_on_disconnect(False)
        self.bus_name = dbus.service.BusName(NAME_PREFIX + port, self.bus, do_not_queue=True)
        super().__init__(self.bus, PATH)
        self.received = []
        self.heard = heard

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.remove_from_connection()
        del self.bus_name
        self.bus.close()

    @dbus.service.method(INTERFACE, in_signature="iay", out_signature="ay", byte_arrays=True)
    def Send(self, message_id, data):
        self.received.append((int(message_id), bytes(data)))
        if self.heard:
            self.heard(*self.received[-1])
        return dbus.ByteArray(b"")


class LatePeer(Peer):
    """Answers each message only when it is told to, and from then on at once if told to go on."""

    def __init__(self, world, port):
        super().__init__(world, port)
        self.unanswered = []
        self.is_late = True

    @dbus.service.method(INTERFACE, in_signature="iay", out_signature="ay", byte_arrays=True,
                         async_callbacks=("answer", "refuse"))
    def Send(self, message_id, data, answer, refuse):  # pylint: disable=arguments-differ,unused-argument
        self.received.append((int(message_id), bytes(data)))
        self.unanswered.append(answer)
        if not self.is_late:
            self.answer_and_go_on()

    def answer_and_go_on(self):
        """Answers what waits, and all that comes until it is late again."""
        self.is_late = False
        while self.unanswered:
            self.unanswered.pop(0)(dbus.ByteArray(b""))


class Lines:
    """The lines that come out of a process's stream, as they come."""

    def __init__(self, stream):
        self.stream = stream
        self.lines = []
        self.rest = ""

    def read(self):
        readable, _, _ = select.select([self.stream], [], [], 0)
        if readable:
            self.rest += os.read(self.stream.fileno(), 65536).decode()
            *complete, self.rest = self.rest.split("\n")
            self.lines += complete
        return self.lines
