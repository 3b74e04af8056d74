#include "peers/touchctl/Doctor.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BundleDirectory.h"
#include "linux/Journal.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/FileAccess.h"
#include "peers/touchctl/Report.h"
#include "peers/touchctl/Services.h"
#include "peers/touchctl/Settings.h"
#include "peers/touchctl/TouchHardware.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/SystemVersion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <iomanip>
#include <ostream>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo::touchctl {

namespace {

using platform::NSFileManager;
using platform::NSMutableDictionary;
using platform::Value;

/// A file of the product: its path, its name in the report, and its name in a fix, which does not reveal the name of a
/// display.
struct ProductFile {
    std::string path;
    std::string title;
    std::string place;
};

constexpr char kRestartTheDriver[] = "restart the driver";

/// When the driver starts, it creates a missing file and lists the displays.
std::string removalOf(const ProductFile& file) { return "rm " + file.place + ", then " + kRestartTheDriver; }

std::string hexadecimal(std::int32_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << number;
    return text.str();
}

void reportVersions(Report& report, const std::string& panePath) {
    report.section("Versions");
    report.fine("kelvo-touchctl " KELVO_VERSION);
    const std::int32_t version = platform::Gestalt(platform::gestaltSystemVersion);
    if (version >= 0x1060) {
        report.fine("gestures of system version " + hexadecimal(version));
    } else {
        report.problem("system version " + hexadecimal(version) + " has no gestures",
                       "unset KELVO_SYSTEM_VERSION, or set it to 0x1068, 0x1074 or 0x1090");
    }
    try {
        (void)BundleDirectory::open(panePath);
        report.fine("the settings pane is installed");
    } catch (const std::exception&) {
        report.problem("the settings pane that belongs to this program is missing or damaged",
                       "reinstall Kelvo Touch Display");
    }
    const std::string utility = NSFileManager::defaultManager().localLibraryDirectory() +
                                utilitiesAppInStatusBarFullPath().substr(std::string("/Library").size());
    if (NSFileManager::defaultManager().fileExistsAtPath(utility)) {
        report.fine("the status-bar utility is installed");
    } else {
        report.note("the status-bar utility is not installed in the machine's Library folder");
    }
}

bool reportBus(Report& report) {
    report.section("Bus");
    if (hasSessionBus()) {
        report.fine("the session bus answers");
        return true;
    }
    report.problem("there is no session bus, or it does not answer",
                   "run this in the session of the display's user, or set DBUS_SESSION_BUS_ADDRESS to the bus of that "
                   "session (usually unix:path=/run/user/$(id -u)/bus)");
    return false;
}

PortAnswer reportDriver(Report& report) {
    const PortAnswer answer = answerOfPort(kTouchDisplayDriverPortName);
    switch (answer) {
    case PortAnswer::Answering:
        report.fine("the driver answers");
        break;
    case PortAnswer::NotRunning:
        report.problem("no driver is running, so changes have no effect", "start the driver");
        break;
    case PortAnswer::NotAnswering:
        report.problem("the driver is running but does not answer, so changes have no effect", kRestartTheDriver);
        break;
    }
    return answer;
}

void reportOtherPort(Report& report, const char* port, const std::string& owner) {
    switch (answerOfPort(port)) {
    case PortAnswer::Answering:
        report.fine(owner + " answers");
        break;
    case PortAnswer::NotRunning:
        report.note(owner + " is not running");
        break;
    case PortAnswer::NotAnswering:
        report.problem(owner + " is running but does not answer", "restart it");
        break;
    }
}

/// Checks the owner and mode of a file, which determine what any process can do with it. True if there was nothing
/// to report.
bool reportPermissions(Report& report, const ProductFile& file) {
    const int before = report.problems();
    struct stat status {};
    if (::stat(file.path.c_str(), &status) != 0) return true;
    if (status.st_uid != ::geteuid()) {
        report.problem(file.title + " belongs to another user", "sudo chown \"$(id -un)\" " + file.place);
        return false;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    const unsigned needed = isFolder ? S_IRWXU : S_IRUSR | S_IWUSR;
    if ((status.st_mode & needed) != needed) {
        report.problem(file.title + " is not readable and writable by its owner",
                       std::string("chmod u+rw") + (isFolder ? "x " : " ") + file.place);
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        report.problem(file.title + " can be changed by other users", "chmod go-w " + file.place);
    }
    return report.problems() == before;
}

/// Checks the owner, mode and contents of a file; nil if there is nothing to check.
NSMutableDictionary reportFile(Report& report, const ProductFile& file) {
    const bool isOwnersAlone = reportPermissions(report, file);
    const StoredFile stored = storedFileAt(file.path);
    switch (stored.state) {
    case StoredFile::State::Readable:
        break;
    case StoredFile::State::Missing:
        report.note(file.title + " does not exist yet; the pane or the driver creates it");
        break;
    case StoredFile::State::Unreadable:
        // The owner and mode have already been reported.
        if (isOwnersAlone) {
            report.problem(file.title + " " + stored.complaint(), "check what is there: ls -ld " + file.place);
        }
        break;
    case StoredFile::State::TooLarge:
    case StoredFile::State::Damaged:
        report.problem(file.title + " " + stored.complaint(), "repair it, or remove it: " + removalOf(file));
        break;
    }
    return stored.contents;
}

/// Whether the name can be part of a file name.
bool isNameOfDisplay(const Value& value) {
    return value.text() && !value.text()->empty() && value.text()->find('/') == std::string::npos;
}

void reportUtilities(Report& report, const NSMutableDictionary& utilities, const ProductFile& file) {
    struct Kind {
        std::string_view key;
        Value::Kind kind;
        const char* text;
    };
    constexpr std::array kKinds{
        Kind{keys::currentDeviceType, Value::Kind::Array, "a list of names"},
        Kind{keys::driverEnable, Value::Kind::Boolean, "true or false"},
        Kind{keys::isShowStatuMenu, Value::Kind::Boolean, "true or false"},
        Kind{keys::selectDeviceName, Value::Kind::String, "a string"},
        Kind{keys::selectedMenuItem, Value::Kind::Integer, "a whole number"},
        Kind{keys::verboseLog, Value::Kind::Boolean, "true or false"},
    };
    const int before = report.problems();
    const std::string fix = "remove the file; the driver creates it again: " + removalOf(file);
    for (const Kind& each : kKinds) {
        const Value value = utilities.objectForKey(each.key);
        if (value && value.kind() != each.kind) {
            report.problem(std::string(each.key) + " in " + file.title + " must be " + each.text, fix);
        }
    }
    const auto names = utilities.objectForKey(keys::currentDeviceType).array();
    if (!std::ranges::all_of(names.objects(), isNameOfDisplay)) {
        report.problem(std::string(keys::currentDeviceType) + " in " + file.title +
                           " contains something that is not a display name",
                       fix);
    }
    if (report.problems() == before) report.fine(file.title);
    if (utilities.objectForKey(keys::driverEnable).boolValue()) return;
    report.problem("the driver is switched off", "kelvo-touchctl driver on");
}

void reportDisplay(Report& report, const Display& display, std::size_t number) {
    const std::string title = "display " + std::to_string(number) + (display.isConnected ? "" : " (not connected)");
    const ProductFile file{getSettingsFilePath(display.name), "the settings file of " + title,
                           "\"$HOME/Library/Preferences/KelvoTouchDisplay/Settings_NAME.plist\", where NAME is on "
                           "line " +
                               std::to_string(number) + " of kelvo-touchctl list"};
    const auto settings = reportFile(report, file);
    if (!settings) return;
    const std::vector<std::string> faults = faultsIn(settings);
    for (const std::string& fault : faults) {
        report.problem(std::string(title).append(": ").append(fault), "set it again with kelvo-touchctl set");
    }
    const auto version = settings.objectForKey(keys::driverVersion).string();
    if (faults.empty()) {
        report.fine(title + (version ? ", driver version " + withVisibleControlCharacters(*version) : ""));
    }
}

/// Whether the settings folder exists and its files can be checked.
bool reportFolder(Report& report, const ProductFile& folder) {
    struct stat status {};
    const auto reason = reasonAgainstListing(folder.path);
    if (::stat(folder.path.c_str(), &status) != 0) {
        if (reason) {
            report.problem(folder.title + " cannot be read (" + *reason + ")",
                           "check which parent folder denies access: namei -l " + folder.place);
        } else {
            report.note(folder.title + " does not exist yet; the pane or the driver creates it");
        }
        return false;
    }
    if (!S_ISDIR(status.st_mode)) {
        report.problem(shownPath(folder.path) + " is not a folder", "remove it: " + removalOf(folder));
        return false;
    }
    const auto writingReason = reasonAgainstWriting(folder.path);
    if (reportPermissions(report, folder)) {
        const std::string fix = "check what is there: ls -ld " + folder.place;
        if (reason) {
            report.problem(folder.title + " cannot be read (" + *reason + ")", fix);
        } else if (writingReason) {
            report.problem(folder.title + " cannot be written to (" + *writingReason + ")", fix);
        }
    }
    return !reason;
}

void reportDisplays(Report& report, PortAnswer driver) {
    std::size_t connected = 0;
    std::size_t number = 0;
    for (const Display& display : knownDisplays()) {
        if (display.isConnected) ++connected;
        reportDisplay(report, display, ++number);
    }
    if (connected > 0) return;
    if (driver == PortAnswer::Answering) {
        report.problem("the driver answers, but no display is listed as connected",
                       std::string("connect the display; if it is connected, ") + kRestartTheDriver);
    } else {
        report.note("no display is connected");
    }
}

void reportFiles(Report& report, PortAnswer driver) {
    report.section("Files and permissions");
    const ProductFile folder{getPreferenceFolderPath(), "the settings folder",
                             "\"$HOME/Library/Preferences/KelvoTouchDisplay\""};
    const ProductFile utilitiesFile{getUilitiesFilePath(), "Utilities.plist",
                                    "\"$HOME/Library/Preferences/KelvoTouchDisplay/Utilities.plist\""};
    const int before = report.problems();
    if (reportFolder(report, folder)) {
        const auto utilities = reportFile(report, utilitiesFile);
        if (utilities) reportUtilities(report, utilities, utilitiesFile);
        if (!utilities && storedFileAt(utilitiesFile.path).state != StoredFile::State::Missing) return;
    } else if (report.problems() > before) {
        return;
    }
    reportDisplays(report, driver);
}

} // namespace

Status writeReport(std::ostream& out, const std::string& panePath) {
    Report report(out);
    reportVersions(report, panePath);
    PortAnswer driver = PortAnswer::NotRunning;
    if (reportBus(report)) {
        report.section("Ports");
        driver = reportDriver(report);
        reportOtherPort(report, kPreferencePortName, "the settings pane");
        reportOtherPort(report, kStatusBarPortName, "the status-bar utility");
    }
    reportTouchHardware(report, touchHardware(driver));
    reportFiles(report, driver);
    const int problems = report.problems();
    out << '\n'
        << (problems == 0 ? "No problems found."
                          : std::to_string(problems) + (problems == 1 ? " problem" : " problems") + " found.")
        << '\n';
    return problems == 0 ? Status::Success : Status::Findings;
}

} // namespace kelvo::touchctl
