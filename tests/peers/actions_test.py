"""What gestures do on each desktop, as the command line shows and changes it, and the table of it in the user guide."""

import json
import pathlib
import plistlib
import shutil
import subprocess
import sys
import unittest

from peers import World

PROGRAM, SOURCE = sys.argv[1:3]
del sys.argv[1:3]

FAILURE, USAGE, _, NO_DEVICE = range(1, 5)
FILES = pathlib.Path(SOURCE) / "peers/actions/files"
GESTURES = ["SecondaryClick", "LookUp", "Scroll", "ZoomInOrOut", "SmartZoom", "Rotate", "SwipeBetweenPages",
            "FullScreenApps", "NotificationCenter", "MissionControl", "AppExposé", "Launchpad", "ShowDesktop"]


class ActionsTest(unittest.TestCase):
    def setUp(self):
        self.world = self.enterContext(World())
        self.shipped = self.world.folder / "Library/Application Support/KelvoTouchDisplay/Actions"
        shutil.copytree(FILES, self.shipped)
        for name in ("XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE", "WAYLAND_DISPLAY", "KDE_SESSION_VERSION"):
            self.world.environment.pop(name, None)
        self.on("GNOME", "wayland")
        self.own = self.world.preferences / "Actions.plist"

    def on(self, desktop, kind, version=""):
        self.world.environment.update(XDG_CURRENT_DESKTOP=desktop, XDG_SESSION_TYPE=kind, KDE_SESSION_VERSION=version)

    def run_with(self, *words):
        return subprocess.run([PROGRAM, "actions", *words], env=self.world.environment, text=True, timeout=60,
                              capture_output=True)

    def succeed(self, *words):
        done = self.run_with(*words)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.args)
        return done.stdout

    def refuse(self, status, reason, *words):
        done = self.run_with(*words)
        self.assertEqual((done.returncode, done.stdout), (status, ""), done.args)
        self.assertIn(reason, done.stderr)
        self.assertEqual(done.stderr.count("\n"), 1)

    def rows(self, *words):
        return {row["gesture"]: row for row in json.loads(self.succeed(*words, "--json"))["gestures"]}

    def store(self, name, gestures):
        self.world.preferences.mkdir(parents=True, exist_ok=True)
        for file, contents in (("Utilities.plist", {"CurrentDeviceType": [name], "DriverEnable": True}),
                               (f"Settings_{name}.plist", {"GestureArray": gestures})):
            (self.world.preferences / file).write_bytes(plistlib.dumps(contents))

    def write_own(self, contents):
        self.world.preferences.mkdir(parents=True, exist_ok=True)
        self.own.write_bytes(contents if isinstance(contents, bytes) else plistlib.dumps(contents))

    # Showing

    def test_each_gesture_has_a_line_with_fingers_and_file(self):
        lines = self.succeed().splitlines()
        self.assertEqual(lines[0], "any display on GNOME (Wayland)")
        self.assertEqual([line.split()[0] for line in lines[1:]], GESTURES)
        control = next(line for line in lines if "MissionControl" in line)
        self.assertRegex(control, r"^  MissionControl +on +SwipeUpWith\w+Fingers +Overview \(3 fingers on a touchpad\) "
                                  r"\[.*/Actions/GNOME\.plist\]$")

    def test_a_gesture_is_on_as_the_settings_of_the_display_say(self):
        record = {"Name": "MissionControl", "Descriptor": ["SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"],
                  "SelectedIndex": 1, "IsEnable": True}
        self.store("Desk", [record, {"Name": "LookUp", "Descriptor": ["TapWithThreeFingers"], "SelectedIndex": 0,
                                     "IsEnable": False}])
        rows = self.rows("Desk")
        self.assertEqual((rows["MissionControl"]["on"], rows["MissionControl"]["fingers"]),
                         (True, "SwipeUpWithFourFingers"))
        self.assertEqual((rows["LookUp"]["on"], rows["LookUp"]["fingers"]), (False, "TapWithThreeFingers"))
        self.assertEqual((rows["Rotate"]["on"], rows["Rotate"]["fingers"]), (False, ""))
        self.assertEqual((rows["Scroll"]["on"], rows["Scroll"]["fingers"]), (True, "ScrollWithTwoFingers"))
        self.assertTrue(self.succeed().startswith("Desk on GNOME (Wayland)\n"))

    def test_a_display_that_is_not_known_is_said(self):
        self.refuse(NO_DEVICE, '"Nowhere"', "Nowhere")

    def test_what_a_desktop_has_not_is_said(self):
        self.on("sway", "wayland")
        self.assertEqual(self.rows()["MissionControl"]["action"]["Text"], "Nothing")

    def test_an_unknown_desktop_is_named(self):
        self.on("Own:Window:Manager", "x11")
        self.assertTrue(self.succeed().startswith("any display on Own, an unknown desktop (X11)\n"))

    def test_a_file_that_counts_for_nothing_is_told_on_standard_error(self):
        self.write_own(b"<plist")
        done = self.run_with()
        self.assertEqual(done.returncode, 0)
        self.assertIn("Actions.plist cannot be read", done.stderr)
        self.assertIn("Overview", done.stdout)

    # Changing

    def test_an_action_that_is_set_counts_on_this_desktop_alone(self):
        self.succeed("set", "MissionControl", "keys", "Control+Alt+Up")
        row = self.rows()["MissionControl"]["action"]
        self.assertEqual((row["Kind"], row["Keys"]), ("Chord", ["Control", "Alt", "Up"]))
        self.assertTrue(row["File"].endswith("Actions.plist"))
        self.on("KDE", "wayland", "6")
        self.assertEqual(self.rows()["MissionControl"]["action"]["Fingers"], 4)

    def test_each_kind_can_be_set(self):
        for words, stored in ((("nothing",), {"Kind": "Nothing"}),
                              (("right-click",), {"Kind": "RightClick"}),
                              (("fingers",), {"Kind": "Fingers"}),
                              (("fingers", "4"), {"Kind": "Fingers", "Fingers": 4}),
                              (("keys", "Super"), {"Kind": "Chord", "Keys": ["Super"]}),
                              (("call", "a.b", "/c", "d.e", "F", "text", "int32:-3", "boolean:true", "double:0.5",
                                "string:int32:1"),
                               {"Kind": "Call", "Service": "a.b", "Path": "/c", "Interface": "d.e", "Method": "F",
                                "Arguments": ["text", -3, True, 0.5, "int32:1"]})):
            with self.subTest(words):
                self.assertEqual(self.succeed("set", "ShowDesktop", *words), "")
                self.assertEqual(plistlib.loads(self.own.read_bytes()), {"GNOME": {"ShowDesktop": stored}})

    def test_one_way_can_be_set_and_the_other_stays(self):
        self.succeed("set", "FullScreenApps", "left", "keys", "F1")
        row = self.rows()["FullScreenApps"]
        self.assertEqual((row["left"]["Kind"], row["right"]["Kind"]), ("Chord", "Fingers"))
        self.succeed("set", "FullScreenApps", "nothing")
        self.succeed("set", "FullScreenApps", "right", "keys", "F2")
        row = self.rows()["FullScreenApps"]
        self.assertEqual((row["left"]["Kind"], row["right"]["Keys"]), ("Nothing", ["F2"]))

    def test_what_is_set_wins_over_what_was_written_by_hand(self):
        self.write_own({"GNOME": {"Wayland": {"ShowDesktop": {"Kind": "Nothing"}}, "Other": 1}, "KDE": {"X": 2},
                        "ShowDesktop": {"Kind": "Nothing"}})
        self.succeed("set", "ShowDesktop", "keys", "F3")
        self.assertEqual(self.rows_despite_notes()["ShowDesktop"]["action"]["Keys"], ["F3"])
        kept = plistlib.loads(self.own.read_bytes())
        self.assertEqual((kept["GNOME"]["Other"], kept["KDE"]), (1, {"X": 2}))

    def rows_despite_notes(self):
        return {row["gesture"]: row for row in json.loads(self.run_with("--json").stdout)["gestures"]}

    def test_what_cannot_be_is_refused_with_the_reason(self):
        for reason, words in (("no gesture", ("Jump", "nothing")),
                              ("no gesture", ("ScrollDirection", "nothing")),
                              ("takes a GESTURE", ()),
                              ("must be nothing, right-click", ("ShowDesktop",)),
                              ("not \"dance\"", ("ShowDesktop", "dance")),
                              ("a tap", ("LookUp", "fingers", "3")),
                              ("two fingers only", ("Scroll", "fingers", "3")),
                              ("as long as the fingers move", ("Rotate", "keys", "F1")),
                              ("three or four fingers", ("ShowDesktop", "fingers", "5")),
                              ("is not of type int32", ("ShowDesktop", "fingers", "many")),
                              ("takes a keyboard shortcut", ("ShowDesktop", "keys")),
                              ("there is no key \"Q\"", ("ShowDesktop", "keys", "Super+Q")),
                              ("there is no key \"\"", ("ShowDesktop", "keys", "Super+")),
                              ("occurs twice", ("ShowDesktop", "keys", "F1+F1")),
                              ("at most four", ("ShowDesktop", "keys", "F1+F2+F3+F4+F5")),
                              ("unexpected argument", ("ShowDesktop", "nothing", "else")),
                              ("left and right", ("ShowDesktop", "left", "nothing")),
                              ("call takes", ("ShowDesktop", "call", "a.b")),
                              ("not a bus name", ("ShowDesktop", "call", "a", "/", "c.d", "E")),
                              ("not an object path", ("ShowDesktop", "call", "a.b", "c", "c.d", "E")),
                              ("not an interface", ("ShowDesktop", "call", "a.b", "/", "c", "E")),
                              ("not a method", ("ShowDesktop", "call", "a.b", "/", "c.d", "E.F")),
                              ("true or false", ("ShowDesktop", "call", "a.b", "/", "c.d", "E", "boolean:maybe"))):
            with self.subTest(words):
                self.refuse(USAGE, reason, "set", *words)
        self.assertFalse(self.own.exists())
        self.refuse(USAGE, "one DEVICE", "a", "b")
        self.refuse(USAGE, "--json", "set", "ShowDesktop", "nothing", "--json")
        self.refuse(USAGE, "reset takes", "reset", "ShowDesktop", "Rotate")

    def test_a_damaged_file_is_not_overwritten(self):
        self.write_own(b"<plist")
        self.refuse(FAILURE, "repair or remove it", "set", "ShowDesktop", "nothing")
        self.refuse(FAILURE, "repair or remove it", "reset")
        self.assertEqual(self.own.read_bytes(), b"<plist")

    def test_reset_brings_back_what_a_gesture_did_or_all_of_them(self):
        self.write_own({"Rotate": {"Kind": "Nothing"}, "KDE": {"Rotate": {"Kind": "Nothing"}},
                        "GNOME": {"X11": {"Rotate": {"Kind": "Nothing"}}, "ShowDesktop": {"Kind": "Nothing"}}})
        self.succeed("reset", "ShowDesktop")
        self.assertEqual(self.rows()["ShowDesktop"]["action"]["Kind"], "Chord")
        self.assertEqual(self.rows()["Rotate"]["action"]["Kind"], "Nothing")
        self.succeed("reset")
        self.assertEqual(self.rows()["Rotate"]["action"]["Kind"], "Fingers")
        self.assertEqual(plistlib.loads(self.own.read_bytes()),
                         {"KDE": {"Rotate": {"Kind": "Nothing"}}, "GNOME": {"X11": {}}})

    def test_what_can_follow_is_offered(self):
        def after(*words):
            return subprocess.run([PROGRAM, "complete", "--", *words], env=self.world.environment, text=True,
                                  timeout=60, capture_output=True, check=True).stdout.splitlines()
        self.assertIn("actions", after())
        self.assertEqual(after("actions"), ["set", "reset"])
        self.assertEqual(after("actions", "set"), GESTURES)
        self.assertEqual(after("actions", "reset"), GESTURES)
        kinds = ["nothing", "right-click", "fingers", "keys", "call"]
        self.assertEqual(after("actions", "set", "ShowDesktop"), kinds)
        self.assertEqual(after("actions", "set", "FullScreenApps"), ["left", "right", *kinds])
        self.assertEqual(after("actions", "set", "FullScreenApps", "left"), kinds)
        self.assertEqual(after("actions", "set", "ShowDesktop", "keys"), [])

    # The user guide

    def test_the_user_guide_has_the_table_of_the_program(self):
        guide = (pathlib.Path(SOURCE) / "docs/USER-GUIDE.md").read_text(encoding="utf-8")
        made = subprocess.run([sys.executable, pathlib.Path(SOURCE) / "scripts/action-table", PROGRAM, FILES],
                              text=True, check=True, capture_output=True, timeout=120).stdout
        self.assertIn(made, guide, "run scripts/action-table and put what it prints into the guide")


if __name__ == "__main__":
    unittest.main()
