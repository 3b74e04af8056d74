#include "peers/touchctl/TouchHardware.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kelvo::touchctl {

namespace {

using Screens = std::vector<TouchHardware::Screen>;

constexpr char kLogOfDriver[] = "journalctl --user -u kelvo-touch-driver.service";

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

/// A reason ends with its fix, after the last semicolon.
std::pair<std::string, std::string> reasonAndFix(const std::string& reason) {
    const std::size_t end = reason.rfind("; ");
    if (end == std::string::npos) return {reason, "see the log of the driver: " + std::string(kLogOfDriver)};
    return {reason.substr(0, end), reason.substr(end + 2)};
}

void reportUnit(Report& report, const TouchHardware::Unit& unit) {
    const std::string fix =
        "systemctl --user restart kelvo-touch-driver.service; for the reason, see " + std::string(kLogOfDriver);
    if (unit.result == "watchdog") {
        report.problem("the driver hung, and its watchdog stopped it", fix);
    } else if (unit.result != "success") {
        report.problem("the driver's unit failed (" + unit.result + ")", fix);
    } else if (unit.restarts > 0) {
        report.note("the driver failed and was restarted, " + std::to_string(unit.restarts) +
                    (unit.restarts == 1 ? " time" : " times") + " since its first start; for the reason, see " +
                    kLogOfDriver);
    }
}

void reportWhoseTheScreensAre(Report& report, const Screens& screens) {
    std::set<std::string> seats;
    for (const auto& screen : screens) {
        if (screen.isAtActiveSession || !seats.insert(screen.seat).second) continue;
        report.problem("this user's session is not the active one on " + screen.seat +
                           ", where a touch display is plugged in, so the driver cannot use the display now",
                       "log in at the computer itself, or switch to that session there");
    }
}

void reportWaysIn(Report& report, const TouchHardware& hardware) {
    if (!hardware.hasUinput) {
        report.problem("the kernel has no uinput, which the driver needs",
                       "sudo modprobe uinput; if that fails, use a kernel that was built with it");
    }
    if (hardware.service == TouchHardware::Service::Installed) {
        report.fine("the service that opens displays is installed");
    } else if (std::ranges::all_of(*hardware.screens, &TouchHardware::Screen::isPermitted)) {
        report.note("the service that opens displays is not installed; this user can open them without it");
    } else if (hardware.service == TouchHardware::Service::NoBus) {
        report.problem(
            "there is no system bus, or it does not answer, so the driver cannot get the display, which this user "
            "is not allowed to open",
            "sudo systemctl start dbus");
    } else {
        report.problem(
            "the service kelvo-touch-devices is missing, so the driver cannot get the display, which this user is "
            "not allowed to open",
            "reinstall the package kelvo-touch-driver");
    }
}

void reportGrab(Report& report, const Screens& screens) {
    std::vector<std::string> users;
    for (const auto& screen : screens) users.insert(users.end(), screen.users.begin(), screen.users.end());
    std::ranges::sort(users);
    users.erase(std::unique(users.begin(), users.end()), users.end());
    report.problem("another program has exclusive access to a touch display" +
                       (users.empty() ? "" : "; among the visible programs, these read it: " + joined(users)),
                   std::string("quit that program; sudo kelvo-touchctl doctor sees the programs of all users"));
}

void reportWhatTheDriverSays(Report& report, const TouchHardware& hardware) {
    for (const auto& [name, reason] : hardware.driver->refused) {
        const auto [what, fix] = reasonAndFix(reason);
        report.problem("a touch display is not used: " + what, fix);
    }
    const auto has = [&](const char* state) {
        return std::ranges::any_of(hardware.driver->displays, [&](const auto& each) { return each.second == state; });
    };
    if (has("held by another program")) reportGrab(report, *hardware.screens);
    for (const auto& [name, command] : hardware.driver->slowDoubleClick) {
        report.problem("a display is set to a slower double-click than the desktop, whose setting wins",
                       "make it faster, or slow down the desktop's double-click: " + command);
    }
    if (has("inactive")) report.note("a display that the driver knows currently belongs to another session");
}

void reportScreens(Report& report, const TouchHardware& hardware) {
    if (hardware.screens->empty()) {
        if (hardware.driver) {
            report.problem("no touch display is found",
                           "plug it in; if it is plugged in, check the kernel log: sudo dmesg");
        } else {
            report.note("no touch display is plugged in");
        }
        return;
    }
    const std::size_t count = hardware.screens->size();
    report.fine(count == 1 ? "a touch display is plugged in"
                           : std::to_string(count) + " touch displays are plugged in");
    if (hardware.hasOtherDriver) return;
    const int before = report.problems();
    reportWhoseTheScreensAre(report, *hardware.screens);
    reportWaysIn(report, hardware);
    // Most problems of the driver have already been reported.
    if (hardware.driver && report.problems() == before) reportWhatTheDriverSays(report, hardware);
}

} // namespace

void reportTouchHardware(Report& report, const TouchHardware& hardware) {
    report.section("Touch displays");
    if (hardware.screens) {
        reportScreens(report, hardware);
    } else {
        report.note("the system does not report which touch displays there are");
    }
    if (hardware.unit) reportUnit(report, *hardware.unit);
}

} // namespace kelvo::touchctl
