"""A window of another toolkit that fills the screen and says what it feels, each event as one line of JSON with its
place on the screen."""

import json

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

NAMES = {
    Gdk.EventType.TOUCH_BEGIN: "touch begin", Gdk.EventType.TOUCH_UPDATE: "touch update",
    Gdk.EventType.TOUCH_END: "touch end", Gdk.EventType.TOUCH_CANCEL: "touch cancel",
    Gdk.EventType.MOTION_NOTIFY: "motion", Gdk.EventType.BUTTON_PRESS: "press",
    Gdk.EventType._2BUTTON_PRESS: "double press", Gdk.EventType._3BUTTON_PRESS: "triple press",
    Gdk.EventType.BUTTON_RELEASE: "release", Gdk.EventType.SCROLL: "scroll",
    Gdk.EventType.KEY_PRESS: "key press", Gdk.EventType.KEY_RELEASE: "key release"}


def tell(_, event):
    name = NAMES.get(event.type)
    if name is None:
        return False
    line = {"event": name, "time": event.get_time()}
    found, x, y = event.get_root_coords()
    if found:
        line.update(x=x, y=y)
    if name.endswith("press") or name == "release":
        line["button"] = event.button.button
    if name.startswith("key"):
        line["key"] = Gdk.keyval_name(event.key.keyval)
    if name == "scroll":
        smooth, dx, dy = event.get_scroll_deltas()
        line.update({"dx": dx, "dy": dy} if smooth else {"direction": event.scroll.direction.value_nick})
    # What the server makes of a finger for programs that know none is not what this one feels.
    line["emulated"] = bool(event.get_pointer_emulated())
    print(json.dumps(line), flush=True)
    return True


def main():
    window = Gtk.Window(title="What is felt")
    window.fullscreen()
    window.add_events(Gdk.EventMask.ALL_EVENTS_MASK)
    window.connect("event", tell)
    window.connect("map-event", lambda *_: print(json.dumps({"event": "shown"}), flush=True))
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main()
