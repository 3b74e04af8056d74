"""A program that asks the system service for displays as a driver does, and tries what it was given. Takes lines of
JSON on standard input: ["displays"], ["open", ID], ["read", INDEX], ["write", INDEX, TYPE, CODE, VALUE], of which 0 is
the display and 1 to 4 are its virtual devices, and ["leave"], by which it leaves the bus until it is asked again.
Answers each by a line of JSON: what was found, or the name of the error."""

import fcntl
import json
import os
import struct
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME, PATH = "com.kelvo.TouchDisplay.Devices", "/com/kelvo/TouchDisplay/Devices"
EVENT = "llHHi"
SYNC = struct.pack(EVENT, 0, 0, 0, 0, 0)
PATIENCE_MILLISECONDS = 60000


class Holder:
    def __init__(self):
        self.bus = None
        self.files = []

    def connect(self):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        address = os.environ.get("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/run/dbus/system_bus_socket")
        return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def leave(self):
        if self.bus:
            self.bus.close_sync(None)
        self.bus = None
        for file in self.files:
            os.close(file)
        self.files = []

    def call(self, method, *arguments):
        self.bus = self.bus or self.connect()
        return self.bus.call_with_unix_fd_list_sync(NAME, PATH, NAME, method, *arguments, None,
                                                    Gio.DBusCallFlags.NONE, PATIENCE_MILLISECONDS, None, None)

    def displays(self):
        answer, _ = self.call("Displays", None)
        return answer.unpack()[0]

    def open(self, number):
        answer, files = self.call("Open", GLib.Variant("(u)", (number,)))
        display, nodes = answer.unpack()
        self.files = [files.get(index) for index in (display, *nodes)]
        return len(self.files)

    def read(self, index):
        """What can be read now, in bytes."""
        file = self.files[index]
        fcntl.fcntl(file, fcntl.F_SETFL, fcntl.fcntl(file, fcntl.F_GETFL) | os.O_NONBLOCK)
        try:
            return len(os.read(file, 4096))
        except BlockingIOError:
            return 0

    def write(self, index, kind, code, value):
        return os.write(self.files[index], struct.pack(EVENT, 0, 0, kind, code, value) + SYNC)


def main():
    holder = Holder()
    print(json.dumps("ready"), flush=True)
    for line in sys.stdin:
        verb, *arguments = json.loads(line)
        try:
            answer = {"found": getattr(holder, verb)(*arguments)}
        except OSError as error:
            answer = {"error": error.strerror}
        except GLib.Error as error:
            answer = {"error": Gio.DBusError.get_remote_error(error) or error.message}
        print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main()
