#!/usr/bin/python3
"""A driver for one touch display that moves no pointer, but does everything that the settings need."""
import os, pathlib, plistlib, signal, sys
import dbus, dbus.lowlevel, dbus.mainloop.glib, dbus.service
from gi.repository import GLib

NAME, PATH = "com.kelvo.TouchDisplay.{}", "/com/kelvo/TouchDisplay/MessagePort"
INTERFACE = "com.kelvo.TouchDisplay.MessagePort"
PANE = NAME.format("PreferenceMessagePort")
FOLDER = pathlib.Path.home() / "Library/Preferences/KelvoTouchDisplay"
DEFAULTS = {"DoubleClickRange": 32, "DoubleClickRate": 0.5, "RotateMode": False, "DriverVersion": "1.0"}
UTILITIES = {"SelectedMenuItem": 0, "IsShowStatuMenu": True, "DriverEnable": True, "CurrentDeviceType": [],
             "VerboseLog": False}

def merge(file, items, defaults={}):
    """Merge items into a file and replace it atomically; a damaged file raises an error and stays as it is."""
    FOLDER.mkdir(parents=True, exist_ok=True)
    path, new = FOLDER / file, FOLDER / f".{file}.new"
    contents = plistlib.loads(path.read_bytes()) if path.exists() else dict(defaults)
    new.write_bytes(plistlib.dumps({**contents, **items}, sort_keys=False))
    os.replace(new, path)

def process_of(name):
    try:
        return bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                 "GetConnectionUnixProcessID", "s", (name,))
    except dbus.DBusException:  # nobody owns the name
        return None

class Driver(dbus.service.Object):
    @dbus.service.method(INTERFACE, in_signature="iay", out_signature="ay", byte_arrays=True, sender_keyword="sender")
    def Send(self, message_id, data, sender):
        is_panes = process_of(sender) == process_of(PANE)  # ask while the sender is still connected
        GLib.idle_add(self.apply, int(message_id), bytes(data), is_panes)  # answer first: the sender waits one second
        return dbus.ByteArray(b"")

    def apply(self, message_id, data, is_panes):
        try:
            change = plistlib.loads(data)
            if message_id in (0, 1, 2, 3, 5, 6) and change.pop("DeviceName", None) == display:
                merge(f"Settings_{display}.plist", change)  # a real driver also configures the device here
                if not is_panes:
                    tell_pane(True)  # the pane shows outdated settings
        except Exception as error:  # the driver survives whatever a peer sends
            print(f"message {message_id} ignored: {error!r}", file=sys.stderr)

def connect(is_connected):
    merge("Utilities.plist", {"CurrentDeviceType": [display] if is_connected else []}, UTILITIES)  # the file first
    tell_pane(is_connected)

def tell_pane(is_connected):
    call = dbus.lowlevel.MethodCallMessage(PANE, PATH, INTERFACE, "Send")
    call.set_auto_start(False)
    call.append(7, plistlib.dumps({"IsConnected": is_connected}), signature="iay")
    bus.send_message(call)  # a pane that is not running does not need to know

os.umask(0o077)  # only the user can read the files
display = sys.argv[1]
bus = dbus.SessionBus(mainloop=dbus.mainloop.glib.DBusGMainLoop())
owner = dbus.service.BusName(NAME.format("TouchDisplayDriverMessagePort"), bus, do_not_queue=True)
driver, loop = Driver(bus, PATH), GLib.MainLoop()
for number in (signal.SIGINT, signal.SIGTERM):
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, number, loop.quit)
merge(f"Settings_{display}.plist", {}, DEFAULTS)
connect(True)
loop.run()
connect(False)
bus.flush()
