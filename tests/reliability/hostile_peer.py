"""A peer that misbehaves, as a process: hostile_peer.py MODE [NUMBER] on the session bus. As a driver it prints "ready"
and then a line for each message it gets."""

import os
import sys
import time

import dbus
import dbus.bus
import dbus.lowlevel
import dbus.mainloop.glib
from gi.repository import GLib

NAME_PREFIX = "com.kelvo.TouchDisplay."
DRIVER = NAME_PREFIX + "TouchDisplayDriverMessagePort"
PANE = NAME_PREFIX + "PreferenceMessagePort"
PATH = "/com/kelvo/TouchDisplay/MessagePort"
INTERFACE = "com.kelvo.TouchDisplay.MessagePort"


def connect():
    bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
    bus.set_exit_on_disconnect(False)
    return bus


def reply(call, signature, *values):
    answer = dbus.lowlevel.MethodReturnMessage(call)
    answer.append(*values, signature=signature)
    return answer


def answers(mode, number, call):
    """What this driver says to a message, and how many seconds later."""
    empty = reply(call, "ay", dbus.ByteArray(b""))
    return {
        "honest": [(0, empty)],
        "silent": [],
        "late": [(number, empty)],
        "wrong-signature": [(0, reply(call, "sa{sv}", "%n%s%@", {"a": dbus.Int32(1)}))],
        "no-values": [(0, dbus.lowlevel.MethodReturnMessage(call))],
        "error": [(0, dbus.lowlevel.ErrorMessage(call, "com.example.Failed", "%n%s%@ $(id) `id` ../../x"))],
        "absent": [(0, dbus.lowlevel.ErrorMessage(call, "org.freedesktop.DBus.Error.ServiceUnknown", "a lie"))],
        "huge": [(0, reply(call, "ay", dbus.ByteArray(b"\xff" * (int(number) << 20))))],
        "twice": [(0, empty), (0, empty), (0.5, empty)],
    }[mode]


def be_driver(mode, number):
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    loop = GLib.MainLoop()
    bus = connect()

    def send(answer):
        bus.send_message(answer)
        bus.flush()
        return False

    def on_message(_, message):
        if message.get_type() != dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL or message.get_member() != "Send":
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        print(f"{time.monotonic():.3f} {message.get_args_list()[0]}", flush=True)
        if mode == "vanish":
            os._exit(0)
        for seconds, answer in answers(mode, number, message):
            if seconds:
                GLib.timeout_add(int(seconds * 1000), send, answer)
            else:
                send(answer)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    bus.add_message_filter(on_message)
    bus.request_name(DRIVER)
    print("ready", flush=True)
    loop.run()


def come_and_go(count):
    """Has the driver's name for a moment, over and over; now and then the whole connection goes."""
    print("ready", flush=True)
    bus = connect()
    for number in range(count):
        bus.request_name(DRIVER)
        bus.flush()
        if number % 3:
            bus.release_name(DRIVER)
        else:
            bus.close()
            bus = connect()


def flood(message_id, count, size=0):
    """Sends so many messages to the pane as fast as the bus takes them, without waiting for an answer."""
    bus = connect()
    data = dbus.ByteArray(b"<plist><dict><key>IsConnected</key><true/></dict></plist>" + b" " * size)
    begin = time.monotonic()
    for number in range(count):
        message = dbus.lowlevel.MethodCallMessage(PANE, PATH, INTERFACE, "Send")
        message.append(dbus.Int32(message_id), data, signature="iay")
        message.set_no_reply(True)
        bus.send_message(message)
        if number % 64 == 0:
            bus.flush()
    bus.flush()
    # The answer to one more message comes when the pane has taken all of them.
    message = dbus.lowlevel.MethodCallMessage(PANE, PATH, INTERFACE, "Send")
    message.append(dbus.Int32(9), dbus.ByteArray(b""), signature="iay")
    bus.send_message_with_reply_and_block(message, 600)
    print(f"{time.monotonic() - begin:.1f}", flush=True)


def main():
    mode, *numbers = sys.argv[1:]
    if mode == "flood":
        flood(*map(int, numbers))
    elif mode == "come-and-go":
        come_and_go(int(numbers[0]))
    else:
        be_driver(mode, float(numbers[0]) if numbers else 0)


main()
