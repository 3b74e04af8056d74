"""What a finger sets in the settings window is what it feels."""

import plistlib
import time
import unittest

import desk
from fixtures import AsPointer, connected_displays, LEFT, MODES, PLACE, RIGHT, TURNS

TITLE, FELT_TITLE = "Kelvo Touch Display", "What is felt"
TOUCH_TAB = 1
LONG_PRESS, HOW_LONG = "Press and hold to right-click", "How long to hold"
SPEED, SIZE = "Double-click speed", "Double-click size"
TRIED, COUNTED = "Double-click here to try it", "The last double-click counted"
LOOK_UP, PAGES = "Look up a word", "Move between pages"
NOBODY = "No touchscreen is connected"
# What of a slider's length its handle keeps for itself.
HANDLE_PIXELS = 15
# Far enough that no toolkit's library takes the second click for a switch that bounces.
APART = 0.15
MILLIMETRES_IN_A_POINT = 25.4 / 96


def tries_of(rate, inside, outside):
    """Pairs of taps on both sides of speed and size: how far apart, how much later at least and at most, and whether
    they count. Each that does comes after one that does not, whose word it changes."""
    quick, slow = (APART, rate - 0.03), (rate + 0.03, None)
    return ((outside, *quick, False), (inside, *quick, True), (0, *slow, False), (0, *quick, True))


class InTheWindow(AsPointer):
    settings = {**AsPointer.settings, "DoubleClickRate": 0.5}

    @classmethod
    def setUpClass(cls):
        desk.write_preferences("Utilities.plist", {"SelectedMenuItem": TOUCH_TAB, "DriverEnable": True})
        super().setUpClass()
        cls.window = cls.enterClassContext(desk.Program("kelvo-touch-display"))
        cls.eyes = cls.enterClassContext(desk.Eyes(cls.window))

    def setUp(self):
        super().setUp()
        # Where on the glass a place of the screen is.
        self.glass_of = TURNS[0]
        self.turn_to_window()

    def turn_to_window(self):
        self.eyes.look(LONG_PRESS)
        desk.show(TITLE)

    def turn_to_felt(self):
        desk.show(FELT_TITLE)
        self.begin_anew()

    def touch(self, name, role=""):
        self.panel.tap(self.glass_of(*self.eyes.place_of(name, role)))

    def wait_stored(self, holds, what):
        """The driver has been told, and has written it down."""
        path = desk.PREFERENCES / f"Settings_{self.model.name}.plist"
        desk.wait_for(lambda: holds(plistlib.loads(path.read_bytes())), what)

    def switch(self, name, is_on):
        if self.is_on(name) != is_on:
            self.touch(name, "check box")
        desk.wait_for(lambda: self.is_on(name) == is_on, f"\"{name}\" to be {is_on}")

    def is_on(self, name):
        return self.eyes.look(name, "check box")["checked"]

    def slide(self, name, part):
        """Draws a slider's handle to this part of its length; gives the value there."""
        def look():
            return self.eyes.look(name, "slider")

        def at(here):
            return ((x + HANDLE_PIXELS / 2 + here * (width - HANDLE_PIXELS)) / desk.WIDTH,
                    (y + height / 2) / desk.HEIGHT)

        def is_there():
            return abs((look()["value"][0] - least) / (most - least) - part) < 0.05

        x, y, width, height = look()["place"]
        value, least, most = look()["value"]
        self.panel.drag(at((value - least) / (most - least)), at(part))
        desk.wait_for(is_there, lambda: f"\"{name}\" to be at {part}, not {look()}")
        return look()["value"][0]

    def test_a_press_that_rests_is_the_right_button_after_the_time_of_the_slider_and_the_left_one_without_the_box(self):
        self.switch(LONG_PRESS, True)
        seconds = self.slide(HOW_LONG, 0.3) / 10
        self.assertGreater(seconds, 0.8)
        self.wait_stored(lambda settings: settings["RightClick"] == {
            "RightClickIsEnable": True, "RightClickTimeIntelval": seconds}, f"{seconds} s to be stored")
        self.turn_to_felt()
        landed = time.monotonic()
        self.panel.move({0: PLACE})
        self.wait_event("press")
        self.assertGreaterEqual(self.clicks()[0]["time"] / 1000, landed + seconds)
        self.assert_clicked(RIGHT)
        self.turn_to_window()
        self.switch(LONG_PRESS, False)
        self.wait_stored(lambda settings: not settings["RightClick"]["RightClickIsEnable"], "it to be off")
        self.turn_to_felt()
        self.panel.move({0: PLACE})
        time.sleep(seconds + 0.5)
        self.assert_clicked(LEFT)

    def assert_clicked(self, button):
        self.panel.lift()
        self.wait_event("release")
        self.assertEqual([(each["event"], each["button"]) for each in self.clicks()],
                         [("press", button), ("release", button)])
        self.assert_place(self.clicks()[0], PLACE)
        self.assertEqual(self.touches(), [])

    def test_two_taps_are_a_double_click_within_the_speed_and_the_size_of_the_sliders_alone(self):
        rate = 1 - self.slide(SPEED, 0.78) / 100
        for part in (1, 0):
            points = self.slide(SIZE, part)
            self.wait_stored(lambda settings: (round(settings["DoubleClickRate"], 2), settings["DoubleClickRange"]) == (
                round(rate, 2), points), f"{rate} s and {points} points to be stored")
            radius = points / 2 * MILLIMETRES_IN_A_POINT
            # The window judges by the circle that it draws.
            drawn = points / 2 * self.model.size_mm[0] / desk.WIDTH
            for way, least, most, counts in tries_of(rate, 0.85 * radius, 1.1 * drawn):
                with self.subTest("in the window", points=points, way=way, least=least):
                    self.try_in_window(way, least, most, counts)
            self.turn_to_felt()
            for way, least, most, counts in tries_of(rate, 0.85 * radius, 1.2 * radius):
                with self.subTest("in another toolkit", points=points, way=way, least=least):
                    self.tap_twice(PLACE, self.beside(PLACE, way), least, most)
                    self.wait_event("release", 2)
                    self.assertEqual("double press" in self.names(), counts)
                    # The next one's first tap is no third one.
                    time.sleep(1)
            self.turn_to_window()

    def try_in_window(self, way, least, most, counts):
        """One that is to count again as long as the machine is too slow: the window goes by its own clock."""
        place = self.eyes.place_of(TRIED)
        for _ in range(5 if counts else 1):
            self.tap_twice(place, self.beside(place, way), least, most)
            # By the time that the window does this it has done what came before.
            self.switch(LONG_PRESS, not self.is_on(LONG_PRESS))
            if (self.eyes.look(TRIED)["description"] == COUNTED) == counts:
                return
        self.fail(f"it is not true that it counts: {counts}")

    def beside(self, place, way):
        return place[0] + way / self.model.size_mm[0], place[1]

    def test_a_gesture_is_off_with_its_box_and_made_by_other_fingers_with_its_other_action(self):
        self.addCleanup(self.set, "gestures", "default")
        self.touch("Gestures", "page tab")
        self.switch(LOOK_UP, False)
        self.choose(PAGES, "Swipe with three fingers")
        # The one that wants the same fingers gives way.
        self.eyes.look("Swipe left or right with four fingers", "combo box")
        self.wait_stored(lambda settings: {
            "LookUp": (0, False), "SwipeBetweenPages": (1, True), "FullScreenApps": (1, True)}.items() <= {
                record["Name"]: (record["SelectedIndex"], record["IsEnable"])
                for record in settings["GestureArray"]}.items(), "the choice")
        self.turn_to_felt()
        three = {number: (0.4 + number / 40, 0.5) for number in range(3)}
        self.panel.move(three)
        self.panel.lift()
        self.panel.glide(three, {number: (x - 0.15, y) for number, (x, y) in three.items()}, 0.5)
        self.panel.lift()
        self.wait_event("key release", 2)
        # The tap of three before it gave no key.
        self.assertEqual([(each["event"], each["key"]) for each in self.events() if each["event"].startswith("key")],
                         [("key press", "Alt_L"), ("key press", "Right"),
                          ("key release", "Right"), ("key release", "Alt_L")])
        desk.show(TITLE)
        self.touch("Touch", "page tab")

    def choose(self, pop_up, choice):
        self.touch(pop_up, "combo box")
        # Its choices have places before, but not those where they are shown.
        desk.wait_for(lambda: self.eyes.look(pop_up, "combo box")["open"], f"the menu of \"{pop_up}\"")
        self.touch(choice, "list item")

    def test_the_rotation_of_the_page_turns_where_fingers_land_and_back(self):
        self.addCleanup(self.set, "finger", "pointer")
        self.addCleanup(self.set, "rotation", 0)
        self.choose("Page:", "Rotation")
        for degrees, back in ((90, 270), (0, 0)):
            self.touch(f"{degrees}°", "radio button")
            self.touch("Rotate", "push button")
            self.wait_stored(lambda settings: settings["RotateMode"] == degrees // 90, f"{degrees}°")
            self.glass_of = TURNS[back]
            self.assert_lands(PLACE, TURNS[degrees](*PLACE))
        self.choose("Page:", "Touch and gestures")

    def assert_lands(self, place, felt_at):
        """In both modes; then goes back to the window."""
        self.turn_to_felt()
        for mode, event in reversed(MODES):
            with self.subTest(mode=mode):
                self.set("finger", mode)
                self.begin_anew()
                self.panel.tap(place)
                self.wait_event(event)
                self.assert_place((self.clicks() or self.touches())[0], felt_at)
        desk.show(TITLE)

    def test_the_picture_of_the_page_is_where_fingers_land_and_beside_it_they_do_not(self):
        self.addCleanup(self.set, "finger", "pointer")
        self.addCleanup(self.set, "calibration", "auto")
        self.choose("Page:", "Calibration")
        self.touch("Manual", "radio button")
        for side, pixels in (("Width", desk.WIDTH // 2), ("Height", desk.HEIGHT // 2)):
            self.touch(side, "text")
            desk.run("xdotool", "key", "ctrl+a")
            desk.run("xdotool", "type", pixels)
        self.touch("Apply", "push button")
        self.wait_stored(lambda settings: settings.get("AutoCalibration") is False, "the picture's size")
        # Its quarter of the glass is all of the screen.
        self.glass_of = lambda x, y: (0.25 + x / 2, 0.25 + y / 2)
        self.assert_lands((0.3, 0.7), (0.1, 0.9))
        self.turn_to_felt()
        self.panel.tap((0.2, 0.7))
        self.panel.tap((0.7, 0.3))
        self.wait_event("release")
        self.assertEqual([each["event"] for each in self.clicks()], ["press", "release"])
        self.assert_place(self.clicks()[0], (0.9, 0.1))
        desk.show(TITLE)
        self.touch("Automatic", "radio button")
        self.touch("Apply", "push button")
        self.wait_stored(lambda settings: settings["AutoCalibration"] is True, "the whole glass")
        self.glass_of = TURNS[0]
        self.assert_lands(PLACE, PLACE)
        self.choose("Page:", "Touch and gestures")

    def test_it_follows_the_display_that_is_unplugged_and_plugged_again(self):
        self.panel.unplug()
        self.eyes.look(NOBODY)
        desk.wait_for(lambda: connected_displays() == [], "the driver to miss the display")
        self.plug()
        self.wait_driver()
        self.turn_to_window()
        self.switch(LONG_PRESS, True)
        self.wait_stored(lambda settings: settings["RightClick"]["RightClickIsEnable"], "it to be stored")
        self.switch(LONG_PRESS, False)


if __name__ == "__main__":
    unittest.main()
