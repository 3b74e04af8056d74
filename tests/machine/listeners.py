"""Which devices the screen listens to, asked on a connection that stays open: to start a program for each question
would keep a small computer from what the answer is waited for."""

import ctypes


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
