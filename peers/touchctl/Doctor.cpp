#include "peers/touchctl/Doctor.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BundleDirectory.h"
#include "linux/Journal.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/Services.h"
#include "peers/touchctl/Settings.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/SystemVersion.h"

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

/// The lines of the report, as they are found out.
class Report {
public:
    explicit Report(std::ostream& out) : out_(out) {}

    void section(const char* title) { out_ << title << '\n'; }
    void fine(const std::string& text) { out_ << "  ok       " << text << '\n'; }
    void note(const std::string& text) { out_ << "  note     " << text << '\n'; }
    void problem(const std::string& text, const std::string& fix) {
        out_ << "  PROBLEM  " << text << "\n           fix: " << fix << '\n';
        ++problems_;
    }
    [[nodiscard]] int problems() const { return problems_; }

private:
    std::ostream& out_;
    int problems_ = 0;
};

/// A file of the product's: where it is, what the report calls it, and how a fix names it, which tells no display's
/// name.
struct ProductFile {
    std::string path;
    std::string title;
    std::string place;
};

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
        report.problem("the settings pane is missing or damaged beside this program",
                       "install Kelvo Touch Display again");
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
                   "run this in the session of the display's user, or set DBUS_SESSION_BUS_ADDRESS to that session's "
                   "(mostly unix:path=/run/user/$(id -u)/bus)");
    return false;
}

void reportDriver(Report& report) {
    switch (answerOfPort(kTouchDisplayDriverPortName)) {
    case PortAnswer::Answering:
        report.fine("the driver answers");
        break;
    case PortAnswer::NotRunning:
        report.problem("no driver runs: changes of settings have no effect",
                       "start the driver of the display (kelvo-touch-driver-sim run stands in for one)");
        break;
    case PortAnswer::NotAnswering:
        report.problem("the driver runs but does not answer: changes of settings have no effect",
                       "end the driver and start it again");
        break;
    }
}

void reportOtherPort(Report& report, const char* port, const std::string& owner) {
    switch (answerOfPort(port)) {
    case PortAnswer::Answering:
        report.fine(owner + " answers");
        break;
    case PortAnswer::NotRunning:
        report.note(owner + " does not run");
        break;
    case PortAnswer::NotAnswering:
        report.problem(owner + " runs but does not answer", "end it and start it again");
        break;
    }
}

/// What the bus and every process may do to a file is the system's to say, by its owner and mode.
void reportPermissions(Report& report, const ProductFile& file) {
    struct stat status {};
    if (::stat(file.path.c_str(), &status) != 0) return;
    if (status.st_uid != ::geteuid()) {
        report.problem(file.title + " belongs to another user", "sudo chown \"$(id -un)\" " + file.place);
        return;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    const unsigned needed = isFolder ? S_IRWXU : S_IRUSR | S_IWUSR;
    if ((status.st_mode & needed) != needed) {
        report.problem(file.title + " cannot be read and written by its owner",
                       std::string("chmod u+rw") + (isFolder ? "x " : " ") + file.place);
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        report.problem(file.title + " can be changed by other users", "chmod go-w " + file.place);
    }
}

/// What the file holds; nil when there is nothing to look at.
NSMutableDictionary reportContents(Report& report, const ProductFile& file, const char* meansMissing) {
    if (!NSFileManager::defaultManager().fileExistsAtPath(file.path)) {
        report.note(file.title + " is not there: " + meansMissing);
        return {};
    }
    auto contents = NSMutableDictionary::dictionaryWithContentsOfFile(file.path);
    if (!contents)
        report.problem(file.title + " cannot be read or is damaged", "repair it, or remove it: rm " + file.place);
    return contents;
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
        Kind{keys::selectDeviceName, Value::Kind::String, "a text"},
        Kind{keys::selectedMenuItem, Value::Kind::Integer, "a whole number"},
        Kind{keys::verboseLog, Value::Kind::Boolean, "true or false"},
    };
    const int before = report.problems();
    for (const Kind& each : kKinds) {
        const Value value = utilities.objectForKey(each.key);
        if (value && value.kind() != each.kind) {
            report.problem(std::string(each.key) + " in " + file.title + " is to be " + each.text,
                           "remove the file, which is made anew: rm " + file.place);
        }
    }
    if (report.problems() == before) report.fine(file.title);
    if (utilities.objectForKey(keys::driverEnable).boolValue()) return;
    report.problem("the driver is switched off", "switch the driver on");
}

void reportDisplay(Report& report, const Display& display, std::size_t number) {
    const std::string title = "display " + std::to_string(number) + (display.isConnected ? "" : " (not connected)");
    const ProductFile file{getSettingsFilePath(display.name), "the settings file of " + title,
                           "\"$HOME/Library/Preferences/KelvoTouchDisplay/Settings_NAME.plist\", where NAME stands on "
                           "line " +
                               std::to_string(number) + " of kelvo-touchctl list"};
    const auto settings = reportContents(report, file, "the pane or the driver makes it");
    reportPermissions(report, file);
    if (!settings) return;
    const std::vector<std::string> faults = faultsIn(settings);
    for (const std::string& fault : faults) {
        report.problem(std::string(title).append(": ").append(fault), "set it anew with kelvo-touchctl set");
    }
    const auto version = settings.objectForKey(keys::driverVersion).string();
    if (faults.empty()) {
        report.fine(title + (version ? ", driver version " + withVisibleControlCharacters(*version) : ""));
    }
}

void reportFiles(Report& report) {
    report.section("Files and permissions");
    const std::string folderPath = getPreferenceFolderPath();
    const ProductFile folder{folderPath, "the settings folder", "\"$HOME/Library/Preferences/KelvoTouchDisplay\""};
    const ProductFile utilitiesFile{getUilitiesFilePath(), "Utilities.plist",
                                    "\"$HOME/Library/Preferences/KelvoTouchDisplay/Utilities.plist\""};
    struct stat status {};
    if (::stat(folderPath.c_str(), &status) != 0) {
        report.note(shownPath(folderPath) + " is not there: the pane or the driver makes it when it first starts");
        return;
    }
    if (!S_ISDIR(status.st_mode)) {
        report.problem(shownPath(folderPath) + " is no folder", "remove it: rm " + folder.place);
        return;
    }
    reportPermissions(report, folder);
    reportPermissions(report, utilitiesFile);
    const auto utilities = reportContents(report, utilitiesFile, "the pane or the driver makes it");
    if (utilities) reportUtilities(report, utilities, utilitiesFile);
    if (!utilities && NSFileManager::defaultManager().fileExistsAtPath(utilitiesFile.path)) return;

    std::size_t connected = 0;
    std::size_t number = 0;
    for (const Display& display : knownDisplays()) {
        if (display.isConnected) ++connected;
        reportDisplay(report, display, ++number);
    }
    if (connected == 0) report.note("no display is connected");
}

} // namespace

Status writeReport(std::ostream& out, const std::string& panePath) {
    Report report(out);
    reportVersions(report, panePath);
    if (reportBus(report)) {
        report.section("Ports");
        reportDriver(report);
        reportOtherPort(report, kPreferencePortName, "the settings pane");
        reportOtherPort(report, kStatusBarPortName, "the status-bar utility");
    }
    reportFiles(report);
    const int problems = report.problems();
    out << '\n'
        << (problems == 0 ? "Nothing is to be mended."
                          : std::to_string(problems) + (problems == 1 ? " thing is" : " things are") + " to be mended.")
        << '\n';
    return problems == 0 ? Status::Success : Status::Findings;
}

} // namespace kelvo::touchctl
