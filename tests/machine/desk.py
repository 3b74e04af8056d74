"""The desk of the user who sits at the machine: a session on the seat with a screen in it, and programs there."""

import contextlib
import functools
import json
import os
import pathlib
import plistlib
import subprocess
import threading
import time

from listeners import Sway, XServer
from nodes import has_udev_seen_all

# How long anything may take in an emulated computer on a machine that has other things to do.
PATIENCE_SECONDS = 90
# How long the last lines of a program that has ended are waited for.
END_SECONDS = 5
NAME, NUMBER = "user", 4242
HOME = pathlib.Path("/home") / NAME
PREFERENCES = HOME / "Library/Preferences/KelvoTouchDisplay"
RUNTIME = pathlib.Path(f"/run/user/{NUMBER}")
WIDTH, HEIGHT = 1024, 768
BOOT, *WORDS = pathlib.Path("/run/results/arguments").read_text(encoding="utf-8").splitlines()
IS_LONG = "--long" in WORDS
X_SOCKET, SWAY_SOCKET = pathlib.Path("/tmp/.X11-unix/X0"), RUNTIME / "sway"
# Where the screen is, and what toolkits need not find out about it.
X_SCREEN = {"DISPLAY": ":0", "XDG_SESSION_TYPE": "x11", "QT_QPA_PLATFORM": "xcb", "QT_XCB_GL_INTEGRATION": "none",
            "GDK_BACKEND": "x11"}
SWAY_SCREEN = {"WAYLAND_DISPLAY": "wayland-1", "XDG_SESSION_TYPE": "wayland",
               "QT_QPA_PLATFORM": "wayland", "GDK_BACKEND": "wayland", "SWAYSOCK": str(SWAY_SOCKET)}
SCREEN = SWAY_SCREEN if BOOT == "sway" else X_SCREEN
ENVIRONMENT = {
    "HOME": str(HOME), "USER": NAME, "LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin", "XDG_RUNTIME_DIR": str(RUNTIME),
    "DBUS_SESSION_BUS_ADDRESS": f"unix:path={RUNTIME}/bus", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
    "KELVO_LOG_STDERR": "1", "PYTHONPATH": "/run/tests/support", **SCREEN}


def wait_for(find, what):
    """What `find` gives as soon as it gives something; `what` it is or, where only the end tells, how to say so."""
    deadline = time.monotonic() + PATIENCE_SECONDS
    while not (found := find()):
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {what() if callable(what) else what}")
        time.sleep(0.05)
    return found


class Program(contextlib.AbstractContextManager):
    """A program of the user's, with the lines that it prints; what it says of itself goes to the journal."""

    def __init__(self, *command, user=NAME, environment=()):
        words = [str(word) for word in command]
        log = subprocess.Popen(["systemd-cat", "--identifier", pathlib.Path(words[0]).name], stdin=subprocess.PIPE)
        self.process = subprocess.Popen(words, user=user, group=user, extra_groups=[],
                                        env={**ENVIRONMENT, **dict(environment)}, cwd="/", stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=log.stdin, text=True)
        log.stdin.close()
        self.log = log
        self.lines = []
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(PATIENCE_SECONDS)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.process.stdin.close()
        # What it started and left behind may go on writing.
        self.reader.join(END_SECONDS)

    def wait_line(self, holds, what, start=0):
        """The first line from the given one on that is as it should be."""
        return wait_for(lambda: next((line for line in self.lines[start:] if holds(line)), None), what)

    def ask(self, question):
        """Sends a line and gives the line that answers it."""
        known = len(self.lines)
        self.process.stdin.write(question + "\n")
        self.process.stdin.flush()
        wait_for(lambda: len(self.lines) > known or self.process.poll() is not None, f"an answer to {question}")
        return self.lines[known]


def run(*command):
    """What a command of the user's prints."""
    return subprocess.run([str(word) for word in command], user=NAME, group=NAME, extra_groups=[], env=ENVIRONMENT,
                          cwd=HOME, check=True, stdout=subprocess.PIPE, text=True, timeout=PATIENCE_SECONDS).stdout


def as_root(*command):
    """What a command of the administrator's prints."""
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, text=True,
                          timeout=PATIENCE_SECONDS).stdout


def start_session(name, terminal, kind, *command):
    """A session of logind's on the seat, as a display manager makes one."""
    subprocess.run(
        ["systemd-run", "--quiet", "--collect", "--no-block", f"--unit=session-on-tty{terminal}",
         "--service-type=simple", "--property=PAMName=machine", f"--property=User={name}",
         f"--property=TTYPath=/dev/tty{terminal}",
         "--property=TTYReset=yes", "--property=StandardInput=tty-force", "--property=StandardOutput=journal",
         "--property=StandardError=journal",
         f"--property=Environment=XDG_SESSION_TYPE={kind} XDG_SESSION_CLASS=user XDG_SEAT=seat0 XDG_VTNR={terminal}",
         *command], check=True)


def told_by_logind(path):
    """What it tells whoever asks by its library: the values of a session or a seat."""
    with contextlib.suppress(FileNotFoundError):
        return dict(line.split("=", 1) for line in path.read_text(encoding="utf-8").splitlines() if "=" in line)
    return {}


def session_of(name):
    """The number of a user's session on the seat; none while it is not there yet."""
    for path in pathlib.Path("/run/systemd/sessions").glob("*[0-9]"):
        session = told_by_logind(path)
        if session.get("USER") == name and session.get("SEAT") == "seat0":
            return path.name
    return None


def activate(name):
    """Brings a user's session to the front."""
    session = wait_for(lambda: session_of(name), f"the session of {name}")
    as_root("loginctl", "activate", session)
    seat = pathlib.Path("/run/systemd/seats/seat0")
    wait_for(lambda: told_by_logind(seat).get("ACTIVE") == session, f"the session of {name} to be active")


def start_screen():
    """The user's session, with what draws its screen, where it is not there yet."""
    if session_of(NAME):
        return
    (start_sway if BOOT == "sway" else start_x)()
    run("systemctl", "--user", "import-environment", *SCREEN)


def start_x():
    start_session(NAME, 1, "x11", "/usr/lib/xorg/Xorg", ":0", "vt1", "-keeptty", "-nolisten", "tcp", "-noreset", "-ac",
                  "-logfile", "/dev/null", "-logverbose", "0", "-s", "0")
    wait_for((RUNTIME / "bus").exists, "the user's bus")
    wait_for(X_SOCKET.exists, "the X server's socket")
    wait_for(is_screen_there, "the X server")
    # A window that is shown before it is there is never active.
    Program("openbox", "--sm-disable", "--startup", "echo ready").wait_line("ready".__eq__, "the window manager")


def start_sway():
    """Without a graphics processor, and with no device yet that it could listen to."""
    start_session(NAME, 1, "wayland", "/usr/bin/env", "WLR_RENDERER=pixman", "WLR_NO_HARDWARE_CURSORS=1",
                  "WLR_LIBINPUT_NO_DEVICES=1", f"SWAYSOCK={SWAY_SOCKET}", "/usr/bin/sway", "--config",
                  "/run/tests/machine/sway.conf")
    wait_for((RUNTIME / "bus").exists, "the user's bus")
    wait_for((RUNTIME / SCREEN["WAYLAND_DISPLAY"]).exists, "the compositor's socket")
    wait_for(is_screen_there, "the compositor")


@functools.cache
def screen():
    return Sway(str(SWAY_SOCKET)) if BOOT == "sway" else XServer(SCREEN["DISPLAY"])


def is_screen_there():
    with contextlib.suppress(ConnectionError, FileNotFoundError):
        screen()
        return True
    return False


def listened():
    """The names of the devices that the screen listens to."""
    return screen().names()


def settle_devices():
    """The screen has heard of every device that came or went until now."""
    wait_for(has_udev_seen_all, "udev to look at every device")
    # It hears of one for each time that it looks around.
    for _ in range(20):
        listened()


def turn_output(degrees):
    """Has the desktop turn the picture clockwise on the only output there is."""
    if BOOT == "sway":
        screen().do(f"output * transform {degrees}")
        return
    output = next(line.split()[0] for line in run("xrandr").splitlines() if " connected" in line)
    run("xrandr", "--output", output, "--rotate", {0: "normal", 90: "right", 180: "inverted", 270: "left"}[degrees])


def process_of(unit):
    """The process of a unit of the user's or the system's, by the kernel's word; 0 while there is none."""
    for folder in (f"user.slice/user-{NUMBER}.slice/user@{NUMBER}.service/app.slice/{unit}", f"system.slice/{unit}"):
        with contextlib.suppress(OSError):
            if words := (pathlib.Path("/sys/fs/cgroup") / folder / "cgroup.procs").read_text(encoding="ascii").split():
                return int(words[0])
    return 0


class Eyes(Program):
    """Finds the widgets of a program by what it tells assistive technology."""

    def __init__(self, program):
        super().__init__("/usr/bin/python3", "-B", "/run/tests/machine/eyes.py", program.process.pid)

    def look(self, name, role=""):
        """What a widget tells of itself, once it is on the screen."""
        answer = json.loads(self.ask(json.dumps([role, name])))
        if "error" in answer:
            raise AssertionError(answer["error"])
        return answer["found"]

    def place_of(self, name, role=""):
        """The middle of the widget, as a place on the glass that the screen fills."""
        x, y, width, height = self.look(name, role)["place"]
        return (x + width / 2) / WIDTH, (y + height / 2) / HEIGHT


def show(title):
    """Brings the user's window of that title to the front."""
    run("xdotool", "search", "--onlyvisible", "--name", title, "windowactivate", "--sync")


def write_preferences(name, contents):
    """A file of the product's in the user's home."""
    PREFERENCES.mkdir(parents=True, exist_ok=True)
    (PREFERENCES / name).write_bytes(plistlib.dumps(contents))
    for path in (PREFERENCES / name, *PREFERENCES.parents):
        if path != HOME and HOME in path.parents:
            os.chown(path, NUMBER, NUMBER)
    os.chown(PREFERENCES, NUMBER, NUMBER)
