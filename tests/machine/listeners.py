"""Which devices the screen listens to, asked on a connection that stays open: to start a program for each question
would keep a small computer from what the answer is waited for."""

import ctypes
import json
import socket
import struct


class XServer:
    """By XInput, on whose devices the X server keeps what udev told it."""

    class Device(ctypes.Structure):
        _fields_ = [("number", ctypes.c_int), ("name", ctypes.c_char_p), ("use", ctypes.c_int),
                    ("attachment", ctypes.c_int), ("is_enabled", ctypes.c_int), ("class_count", ctypes.c_int),
                    ("classes", ctypes.c_void_p)]

    ALL = 0

    def __init__(self, name):
        xlib, self.xinput = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXi.so.6")
        xlib.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(xlib.XOpenDisplay(name.encode()))
        if not self.display:
            raise ConnectionError(f"no X server at {name}")
        self.xinput.XIQueryDevice.restype = ctypes.POINTER(self.Device)
        self.xinput.XIQueryVersion(self.display, ctypes.byref(ctypes.c_int(2)), ctypes.byref(ctypes.c_int(2)))

    def names(self):
        count = ctypes.c_int()
        devices = self.xinput.XIQueryDevice(self.display, self.ALL, ctypes.byref(count))
        found = [devices[index].name.decode() for index in range(count.value) if devices[index].is_enabled]
        self.xinput.XIFreeDeviceInfo(devices)
        return found


class Sway:
    """By the compositor's own socket."""

    MAGIC, HEADER = b"i3-ipc", struct.Struct("=II")
    RUN_COMMAND, GET_INPUTS = 0, 100

    def __init__(self, path):
        self.stream = socket.socket(socket.AF_UNIX)
        try:
            self.stream.connect(path)
        except OSError:
            self.stream.close()
            raise

    def names(self):
        return [each["name"] for each in self.ask(self.GET_INPUTS)]

    def do(self, command):
        """One of its own commands."""
        (answer,) = self.ask(self.RUN_COMMAND, command)
        if not answer["success"]:
            raise ValueError(answer["error"])

    def ask(self, kind, words=""):
        payload = words.encode()
        self.stream.sendall(self.MAGIC + self.HEADER.pack(len(payload), kind) + payload)
        length, _ = self.HEADER.unpack(self.read(len(self.MAGIC) + self.HEADER.size)[len(self.MAGIC):])
        return json.loads(self.read(length))

    def read(self, length):
        return self.stream.recv(length, socket.MSG_WAITALL)
