"""Runs a test program on a compositor of its own, with two outputs without hardware, side by side. The program may end
the compositor by its process, KELVO_TEST_COMPOSITOR, and command it by "swaymsg"."""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

PATIENCE_SECONDS = 60
NOBODY = 65534
CONFIGURATION = """
output HEADLESS-1 resolution 1280x800 position 0 0
output HEADLESS-2 resolution 640x480 position 1280 320
"""


def awaited(folder, pattern, process):
    """The first file of such a name, once it is there."""
    deadline = time.monotonic() + PATIENCE_SECONDS
    while not (found := sorted(folder.glob(pattern))):
        if process.poll() is not None or time.monotonic() > deadline:
            sys.exit(f"sway does not start: {(folder / 'log').read_text()}")
        time.sleep(0.01)
    return str(found[0])


with tempfile.TemporaryDirectory() as runtime:
    folder = pathlib.Path(runtime)
    (folder / "config").write_text(CONFIGURATION)
    command = ["sway", "--config", str(folder / "config")]
    if os.geteuid() == 0:
        # It refuses to run as root.
        os.chown(runtime, NOBODY, NOBODY)
        command = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", *command]
    environment = dict(os.environ, XDG_RUNTIME_DIR=runtime, WLR_BACKENDS="headless", WLR_HEADLESS_OUTPUTS="2",
                       WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman")
    for name in ("WAYLAND_DISPLAY", "DISPLAY", "SWAYSOCK"):
        environment.pop(name, None)
    with open(folder / "log", "wb") as log:
        compositor = subprocess.Popen(command, env=environment, stdout=log, stderr=log)
    try:
        environment["SWAYSOCK"] = awaited(folder, "sway-ipc.*.sock", compositor)
        environment["WAYLAND_DISPLAY"] = awaited(folder, "wayland-[0-9]", compositor)
        environment["KELVO_TEST_COMPOSITOR"] = str(compositor.pid)
        status = subprocess.run(sys.argv[1:], env=environment, check=False).returncode
    finally:
        compositor.kill()
        compositor.wait()
sys.exit(status)
