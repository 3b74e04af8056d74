"""The status-bar utility as a process: its port, its icon and its menu, seen from the bus."""

import os
import plistlib
import signal
import subprocess
import sys
import unittest

import dbus
import dbus.bus
import dbus.service

from peers import NAME_PREFIX, Lines, Peer, World, wait_until

PROGRAM, SIMULATOR = sys.argv[1:3]
del sys.argv[1:3]

UTILITY = "StatusBarMessagePort"
PANE = "PreferenceMessagePort"
DRIVER = "TouchDisplayDriverMessagePort"

NO_TRAY = "no system tray; the menu cannot be shown"

TABS = ["Calibration", "Touch and gestures", "Rotation", "Version"]
ENABLE_DRIVER = "Enable driver"
GESTURES = "What gestures do"
START_DRIVER = "Changes have no effect. Start the driver or log in again."

MENU = "com.canonical.dbusmenu"
WATCHER = "org.kde.StatusNotifierWatcher"


class Tray(dbus.service.Object):
    """A desktop's tray: knows the icons that are shown in it, by their names on the bus."""

    def __init__(self, world):
        self.world = world
        self.bus = dbus.bus.BusConnection(world.address)
        self.bus.set_exit_on_disconnect(False)
        self.bus_name = dbus.service.BusName(WATCHER, self.bus)
        self.names = []
        super().__init__(self.bus, "/StatusNotifierWatcher")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.leave()

    def leave(self):
        self.bus.close()

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierItem(self, name):
        self.names.append(str(name))

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, name):
        return {"IsStatusNotifierHostRegistered": True}[name]

    # The toolkit reads only properties that are announced, which the binding cannot do.
    @dbus.service.method(dbus.INTROSPECTABLE_IFACE, out_signature="s")
    def Introspect(self):
        return f"""<node><interface name="{WATCHER}">
            <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
            <property name="IsStatusNotifierHostRegistered" type="b" access="read"/></interface></node>"""

    def icons(self):
        return [name for name in self.names if self.world.bus.name_has_owner(name)]


class Menu:
    """The menu of the one icon in a tray."""

    def __init__(self, world, tray):
        wait_until(tray.icons, "the icon")
        [name] = tray.icons()
        icon = world.bus.get_object(name, "/StatusNotifierItem", introspect=False)
        path = icon.Get("org.kde.StatusNotifierItem", "Menu", dbus_interface=dbus.PROPERTIES_IFACE)
        self.proxy = world.bus.get_object(name, path, introspect=False)

    def call(self, method, signature, *arguments):
        """Calls the menu while this process goes on answering messages."""
        answers = []
        self.proxy.get_dbus_method(method, MENU)(
            *arguments, signature=signature, reply_handler=lambda *values: answers.append(values),
            error_handler=lambda error: answers.append(error))
        wait_until(lambda: answers, method)
        if isinstance(answers[0], Exception):
            raise answers[0]
        return answers[0]

    def items(self):
        """Number, title and whether it can be chosen, of each line that is no separator."""
        _, (_, _, children) = self.call("GetLayout", "iias", 0, -1, [])
        return [(int(number), str(properties.get("label", "")), bool(properties.get("enabled", True)))
                for number, properties, _ in children
                if properties.get("type") != "separator" and properties.get("visible", True)]

    def is_ticked(self, title):
        _, (_, _, children) = self.call("GetLayout", "iias", 0, -1, [])
        [switch] = [properties for _, properties, _ in children if properties.get("label") == title]
        return switch["toggle-type"] == "checkmark" and switch["toggle-state"] == 1

    def titles(self):
        return [title for _, title, _ in self.items()]

    def open(self):
        self.call("AboutToShow", "i", 0)

    def wait_for_line(self, title):
        def is_told():
            titles = self.titles()
            # A machine that is slow for half a second gets another chance.
            if any(title.endswith("not responding") for title in titles):
                self.open()
            return title in titles

        self.open()
        wait_until(is_told, title)

    def choose(self, title):
        [number] = [number for number, each, _ in self.items() if each == title]
        self.call("Event", "isvu", number, "clicked", dbus.String(""), dbus.UInt32(0))


class Utility:
    """A running utility that has said what it did with its icon."""

    def __init__(self, world, *arguments):
        self.world = world
        self.process = world.start(PROGRAM, *arguments)
        self.log = Lines(self.process.stderr)
        wait_until(lambda: set(self.log.read()) & {"icon shown", "icon hidden", NO_TRAY}, "the utility's first line")

    def wait_for_line(self, line, count=1):
        wait_until(lambda: self.log.read().count(line) >= count, f"{line!r} in the log")

    def wait_for_end(self):
        wait_until(lambda: self.log.read() is not None and self.process.poll() is not None, "the utility's end")
        self.log.read()
        return self.process.returncode


class StatusBarTest(unittest.TestCase):
    QT_PLATFORM = "offscreen"

    def setUp(self):
        self.world = self.enterContext(World())
        # The toolkit's platform libraries leak at exit.
        self.world.environment.update(QT_QPA_PLATFORM=self.QT_PLATFORM, ASAN_OPTIONS="detect_leaks=0",
                                      XDG_RUNTIME_DIR=str(self.world.folder))


class WithoutTray(StatusBarTest):
    def test_owns_its_port_alone_for_its_life_and_ends_by_a_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number=number):
                utility = Utility(self.world)
                names = {str(name) for name in self.world.bus.list_names() if str(name).startswith(NAME_PREFIX)}
                self.assertEqual(names, {NAME_PREFIX + UTILITY})

                utility.process.send_signal(number)

                self.assertEqual(utility.wait_for_end(), 0)
                self.assertFalse(self.world.has_owner(UTILITY))

    def test_says_once_that_there_is_no_tray_and_answers_its_port(self):
        utility = Utility(self.world)
        for message_id, payload in ((100, b""), (10, {"IsShowStatuMenu": True}), (10, {"IsShowStatuMenu": False})):
            self.assertEqual(self.world.send(UTILITY, message_id, payload), b"")

        utility.wait_for_line("icon hidden")
        self.assertEqual(utility.log.lines, [NO_TRAY, "message 10 { IsShowStatuMenu = 1; }",
                                             "message 10 { IsShowStatuMenu = 0; }", "icon hidden"])

    def test_answers_with_nothing_whatever_it_is_sent(self):
        utility = Utility(self.world)
        for message_id, payload in ((0, {}), (-1, b""), (8, {"SelectedMenuItem": 1}), (2**31 - 1, b"\xff" * 1000)):
            with self.subTest(message_id=message_id):
                self.assertEqual(self.world.send(UTILITY, message_id, payload), b"")
        self.world.send(UTILITY, 10, b"not a property list")

        utility.wait_for_line("icon hidden")
        self.assertEqual(utility.log.lines, [NO_TRAY, "message 10 (null)", "icon hidden"])

    def test_starts_without_icon_with_a_session_that_wants_none(self):
        self.world.set_utilities(IsShowStatuMenu=False)
        utility = Utility(self.world, "--session-start")

        self.assertEqual(utility.log.lines, ["icon hidden"])
        self.assertTrue(self.world.has_owner(UTILITY))

    def test_started_again_asks_the_first_to_show_its_icon(self):
        self.world.set_utilities(IsShowStatuMenu=False)
        utility = Utility(self.world, "--session-start")

        self.assertEqual(self.world.run(PROGRAM), (0, "", ""))

        utility.wait_for_line(NO_TRAY)

    def test_started_again_with_the_session_leaves_the_first_as_the_file_says(self):
        with Peer(self.world, UTILITY) as first:
            self.world.set_utilities(IsShowStatuMenu=False)
            self.assertEqual(self.world.run(PROGRAM, "--session-start")[0], 0)
            self.assertEqual(first.received, [])

            self.world.set_utilities(IsShowStatuMenu=True)
            self.assertEqual(self.world.run(PROGRAM, "--session-start")[0], 0)
            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in first.received],
                             [(100, {"HasPlace": False})])

    def test_started_again_while_the_first_hangs_says_so(self):
        utility = Utility(self.world)
        utility.process.send_signal(signal.SIGSTOP)

        for arguments, is_shown in (((), True), (("--session-start",), True), (("--session-start",), False)):
            with self.subTest(arguments=arguments, is_shown=is_shown):
                self.world.set_utilities(IsShowStatuMenu=is_shown)
                status, _, errors = self.world.run(PROGRAM, *arguments)
                self.assertEqual(status, 1)
                self.assertIn("does not answer", errors)

    def test_killed_and_started_anew_has_its_port_back(self):
        utility = Utility(self.world)
        utility.process.kill()
        utility.wait_for_end()
        wait_until(lambda: not self.world.has_owner(UTILITY), "the port to be free")

        again = Utility(self.world)

        self.world.send(UTILITY, 10, {"IsShowStatuMenu": False})
        again.wait_for_line("icon hidden")

    def test_finds_a_bus_that_went_away_and_came_back(self):
        utility = Utility(self.world)

        self.world.stop_bus()
        self.world.start_bus()
        wait_until(lambda: self.world.has_owner(UTILITY), "the port on the new bus")
        self.world.send(UTILITY, 10, {"IsShowStatuMenu": False})

        utility.wait_for_line("icon hidden")

    def test_says_what_is_wrong_and_how_to_mend_it(self):
        status, _, errors = self.world.run(PROGRAM, "--dance")
        self.assertEqual(status, 2)
        self.assertIn("--help", errors)

    def test_without_a_bus_fails_whoever_starts_it_and_whatever_the_file_says(self):
        self.world.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.world.folder}/nowhere"
        for arguments, is_shown in (((), True), (("--session-start",), True), (("--session-start",), False)):
            with self.subTest(arguments=arguments, is_shown=is_shown):
                self.world.set_utilities(IsShowStatuMenu=is_shown)
                status, _, errors = self.world.run(PROGRAM, *arguments)
                self.assertEqual(status, 1)
                self.assertIn("DBUS_SESSION_BUS_ADDRESS", errors)

    def test_prints_its_help_and_version(self):
        self.assertIn("--session-start", self.world.run(PROGRAM, "--help")[1])
        self.assertRegex(self.world.run(PROGRAM, "--version")[1], r"^KelvoTouchDisplaySettingUtility \d+\.\d+\.\d+\n$")


class InATray(StatusBarTest):
    QT_PLATFORM = "xcb"

    def setUp(self):
        super().setUp()
        # A desktop of no particular kind.
        self.world.environment.update(XDG_CURRENT_DESKTOP="", QT_QPA_PLATFORMTHEME="")
        self.tray = self.enterContext(Tray(self.world))

    def test_a_tray_that_comes_late_gets_the_icon_that_was_wanted(self):
        self.tray.leave()
        utility = Utility(self.world)
        self.assertEqual(utility.log.lines, [NO_TRAY])

        with Tray(self.world) as tray:
            wait_until(tray.icons, "the icon")

        utility.wait_for_line("icon shown")
        self.assertEqual(utility.log.lines, [NO_TRAY, "icon shown"])

    def test_a_tray_that_comes_back_gets_the_icon_back(self):
        Utility(self.world)
        wait_until(self.tray.icons, "the icon")
        self.tray.leave()

        with Tray(self.world) as tray:
            wait_until(tray.icons, "the icon in the new tray")

    def test_a_launch_shows_the_icon_whatever_the_file_says(self):
        self.world.set_utilities(IsShowStatuMenu=False)
        utility = Utility(self.world)

        wait_until(self.tray.icons, "the icon")
        self.assertEqual(utility.log.read(), ["icon shown"])

    def test_message_ten_takes_the_icon_away_and_another_start_brings_it_back(self):
        utility = Utility(self.world)
        wait_until(self.tray.icons, "the icon")

        self.world.send(UTILITY, 10, {"IsShowStatuMenu": False})
        wait_until(lambda: not self.tray.icons(), "the icon's end")
        self.assertEqual(self.world.run(PROGRAM)[0], 0)
        wait_until(self.tray.icons, "the icon again")

        utility.wait_for_line("icon shown", 2)
        self.assertEqual(utility.log.lines,
                         ["icon shown", "message 10 { IsShowStatuMenu = 0; }", "icon hidden", "icon shown"])

    def test_the_menu_has_the_tabs_the_driver_and_an_end(self):
        Utility(self.world)
        menu = Menu(self.world, self.tray)

        menu.wait_for_line("Driver: on, not running")

        self.assertEqual([(title, can_choose) for _, title, can_choose in menu.items()],
                         [(title, True) for title in TABS] +
                         [("Driver: on, not running", True), (START_DRIVER, True), (ENABLE_DRIVER, False),
                          (GESTURES, True), ("Calibrate touchscreen", True), ("Quit", True)])

    def test_what_gestures_do_is_shown_in_a_window(self):
        Utility(self.world)
        Menu(self.world, self.tray).choose(GESTURES)
        wait_until(lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--name", GESTURES],
                                          capture_output=True, timeout=60).stdout.split(), "the window")

    def test_the_driver_is_switched_off_and_on_in_the_menu(self):
        self.world.start(SIMULATOR, "run", "--connect", "Desk")
        Utility(self.world)
        menu = Menu(self.world, self.tray)
        menu.wait_for_line("Driver: on, responding")
        self.assertTrue(menu.is_ticked(ENABLE_DRIVER))

        with Peer(self.world, PANE) as pane:
            for is_on in (False, True):
                menu.choose(ENABLE_DRIVER)
                menu.wait_for_line(f"Driver: {'on' if is_on else 'off'}, responding")
                self.assertEqual(menu.is_ticked(ENABLE_DRIVER), is_on)
                self.assertIs(self.world.plist("Utilities.plist")["DriverEnable"], is_on)
            self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                             [(4, {"DriverEnable": False}), (4, {"DriverEnable": True})])

    def test_the_driver_stays_as_it_is_where_it_takes_no_commands(self):
        Utility(self.world)
        menu = Menu(self.world, self.tray)
        with Peer(self.world, DRIVER):
            menu.wait_for_line("Driver: on, responding")
            menu.choose(ENABLE_DRIVER)
            wait_until(lambda: menu.is_ticked(ENABLE_DRIVER), "the tick to come back")
            menu.wait_for_line("Driver: on, responding")

    def test_the_icon_says_that_the_driver_is_missing_until_it_comes_though_nobody_opens_the_menu(self):
        Utility(self.world)
        wait_until(self.tray.icons, "the icon")
        wait_until(lambda: self.tool_tip().endswith(START_DRIVER), "the advice")
        marked = self.pictures()

        with Peer(self.world, DRIVER) as driver:
            wait_until(lambda: self.tool_tip() == "Kelvo Touch Display", "the advice to go")
            self.assertNotEqual(self.pictures(), marked)
            self.assertEqual(driver.received, [])
        wait_until(lambda: self.tool_tip().endswith(START_DRIVER), "the advice again")
        self.assertEqual(self.pictures(), marked)

    def icon_property(self, name):
        """A property of the one icon, which is asked for while this process goes on answering."""
        [icon] = self.tray.icons()
        proxy = self.world.bus.get_object(icon, "/StatusNotifierItem", introspect=False)
        answers = []
        proxy.Get("org.kde.StatusNotifierItem", name, dbus_interface=dbus.PROPERTIES_IFACE,
                  reply_handler=answers.append, error_handler=answers.append)
        wait_until(lambda: answers, name)
        return answers[0]

    def tool_tip(self):
        """Where the toolkit puts what a tool tip says: its title."""
        return "".join(str(text) for text in self.icon_property("ToolTip")[2:])

    def pictures(self):
        return [bytes(picture[2]) for picture in self.icon_property("IconPixmap")]

    def test_the_menu_tells_how_the_driver_does_each_time_it_opens(self):
        self.world.set_utilities(DriverEnable=False)
        Utility(self.world)
        menu = Menu(self.world, self.tray)

        with Peer(self.world, DRIVER) as driver:
            menu.wait_for_line("Driver: off, responding")
            self.assertEqual(driver.received, [])
        self.world.set_utilities(DriverEnable=True)
        menu.wait_for_line("Driver: on, not running")

    def test_a_tab_is_shown_by_the_pane_that_runs(self):
        Utility(self.world)
        menu = Menu(self.world, self.tray)

        with Peer(self.world, PANE) as pane:
            for title in TABS:
                menu.choose(title)
            wait_until(lambda: len(pane.received) == len(TABS), "the messages")

        self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                         [(8, {"SelectedMenuItem": index}) for index in range(len(TABS))])

    def test_a_pane_that_does_not_run_is_started_and_shows_the_tab(self):
        self.world.set_utilities("Desk")
        Utility(self.world)
        menu = Menu(self.world, self.tray)

        self.addCleanup(self.end_pane)
        menu.choose("Rotation")

        wait_until(lambda: self.world.plist("Utilities.plist")["SelectedMenuItem"] == 2, "the tab")

    def end_pane(self):
        """Ends the pane that the utility has started, which is no child of this process."""
        wait_until(lambda: self.world.has_owner(PANE), "the pane that was started")
        pane = self.world.bus.call_blocking(
            dbus.BUS_DAEMON_NAME, dbus.BUS_DAEMON_PATH, dbus.BUS_DAEMON_IFACE, "GetConnectionUnixProcessID", "s",
            [NAME_PREFIX + PANE])
        os.kill(pane, signal.SIGTERM)
        wait_until(lambda: not os.path.exists(f"/proc/{pane}"), "the pane's end")

    def test_quit_switches_the_menu_off_until_somebody_asks_for_it(self):
        self.world.set_utilities(SelectDeviceName="Desk")
        before = self.world.plist("Utilities.plist")
        utility = Utility(self.world)
        Menu(self.world, self.tray).choose("Quit")
        self.assertEqual(utility.wait_for_end(), 0)

        self.assertEqual(self.world.plist("Utilities.plist"), {**before, "IsShowStatuMenu": False})
        self.assertEqual(Utility(self.world, "--session-start").log.lines, ["icon hidden"])

    def test_quit_has_a_pane_with_one_display_read_its_check_box_again_and_disturbs_no_choice_of_several(self):
        for displays, messages in (([], []), (["Desk"], [(7, {"IsConnected": True})]), (["Desk", "Wall"], [])):
            with self.subTest(displays=displays):
                self.world.set_utilities(*displays)
                utility = Utility(self.world)
                menu = Menu(self.world, self.tray)
                with Peer(self.world, PANE) as pane, Peer(self.world, DRIVER) as driver:
                    menu.choose("Quit")
                    self.assertEqual(utility.wait_for_end(), 0)
                    self.assertEqual([(message_id, plistlib.loads(data)) for message_id, data in pane.received],
                                     messages)
                    self.assertEqual(driver.received, [])

    def test_quit_leaves_a_damaged_file_and_says_so(self):
        self.world.preferences.mkdir(parents=True)
        file = self.world.preferences / "Utilities.plist"
        file.write_bytes(b"damaged")
        utility = Utility(self.world)
        Menu(self.world, self.tray).choose("Quit")
        self.assertEqual(utility.wait_for_end(), 0)

        self.assertEqual(file.read_bytes(), b"damaged")
        self.assertIn(f"{file} cannot be read or written; repair or remove it", utility.log.lines)

    def test_ended_by_the_session_leaves_the_menu_on(self):
        self.world.set_utilities()
        utility = Utility(self.world)
        utility.process.terminate()
        self.assertEqual(utility.wait_for_end(), 0)

        self.assertIs(self.world.plist("Utilities.plist")["IsShowStatuMenu"], True)


if __name__ == "__main__":
    unittest.main()
