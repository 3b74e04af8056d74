#include "peers/touchctl/Commands.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/Journal.h"
#include "linux/TerminationSignals.h"
#include "peers/JsonLine.h"
#include "peers/touchctl/Actions.h"
#include "peers/touchctl/Completion.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/Doctor.h"
#include "peers/touchctl/DriverControl.h"
#include "peers/touchctl/DriverPresence.h"
#include "peers/touchctl/FileAccess.h"
#include "peers/touchctl/GestureRows.h"
#include "peers/touchctl/GestureRules.h"
#include "peers/touchctl/MessageWatch.h"
#include "peers/touchctl/Settings.h"
#include "platform/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <vector>

#include <unistd.h>

namespace kelvo::touchctl {

namespace {

using platform::CFMessagePortStatus;
using platform::NSMutableArray;
using platform::NSMutableDictionary;

void print(const std::string& text) { std::cout << text << '\n'; }

/// Prints a line that somebody is waiting for.
void printNow(const std::string& line) {
    std::cout << line << std::endl;
    if (!std::cout) throw Failure(Status::Failure, "cannot write to standard output; check where it is redirected");
}

// Sending

/// A display to change: as in the pane, it must be connected and the driver switched on.
void chooseDisplay(const std::string& name) {
    const Display display = displayNamed(name);
    if (!display.isConnected) {
        if (!hasSessionBus()) throw Failure(Status::NoDriver, kNoBus);
        if (answerOfPort(kTouchDisplayDriverPortName) == PortAnswer::NotRunning) {
            throw Failure(Status::NoDriver, kStartTheDriver);
        }
        throw Failure(Status::NoDevice,
                      "\"" + withVisibleControlCharacters(name) + "\" is not connected; connect it and try again");
    }
    if (!isDriverSwitchedOn()) {
        throw Failure(Status::NoDriver,
                      "the driver is switched off; switch it on with \"kelvo-touchctl driver on\" and try again");
    }
    setModelType(name);
}

/// The send functions of the pane do not report their result.
void checkArrival(const ReportingPorts& ports) {
    if (!ports.failure()) return;
    if (!hasSessionBus()) throw Failure(Status::NoDriver, kNoBus);
    switch (*ports.failure()) {
    case CFMessagePortStatus::IsInvalid:
        throw Failure(Status::NoDriver, kStartTheDriver);
    case CFMessagePortStatus::SendTimeout:
    case CFMessagePortStatus::ReceiveTimeout:
        throw Failure(Status::NoDriver, kDriverDoesNotAnswer);
    case CFMessagePortStatus::TransportError:
    case CFMessagePortStatus::Success:
        break;
    }
    throw Failure(Status::NoDriver, "the driver refused the message; make sure that its version matches");
}

/// Whether the settings file holds what was sent.
bool isStored(const NSMutableDictionary& payload) {
    const auto stored = NSMutableDictionary::dictionaryWithContentsOfFile(getSettingsFilePath(gModelType));
    const std::vector<std::string> sent = payload.allKeys();
    return std::all_of(sent.begin(), sent.end(), [&](const std::string& key) {
        return key == keys::deviceName || stored.objectForKey(key).isEqual(payload.objectForKey(key));
    });
}

/// A driver answers before it saves, and the next command starts from what is saved.
void awaitStoring(const NSMutableDictionary& payload) {
    constexpr int kLooks = 100;
    constexpr double kSecondsBetweenLooks = 0.02;
    for (int i = 0; i < kLooks; ++i) {
        if (isStored(payload)) return;
        platform::CFRunLoop::getCurrent().runUntil([] { return false; }, kSecondsBetweenLooks);
    }
    std::cerr << "kelvo-touchctl: note: the driver accepted the change but has not saved it yet\n";
}

/// Receivers decode messages with the same rules as here.
void checkThatItFits(const Message& message) {
    platform::Value payload = message.payload;
    const auto data = Helpers::NSDate::dataWithContentsOfDictionary(payload);
    if (data && Helpers::NSMutableDictionary::dictionaryWithContentsOfData(*data)) return;
    throw Failure(Status::Failure, "the settings are too large for one message (at most 1 MiB, nested 64 levels deep); "
                                   "shorten the gesture list");
}

/// A list that the window could not have produced is a mistake, unless it is sent on purpose.
void checkGestures(const Message& message, const NSMutableDictionary& stored) {
    const auto oddities = odditiesOf(message.payload.objectForKey(keys::gestureArray).array(),
                                     stored.objectForKey(keys::gestureArray).array());
    if (oddities.empty()) return;
    throw Failure(Status::Failure, withVisibleControlCharacters(oddities.front()) +
                                       "; correct the list, or send it anyway with --force");
}

void send(const Message& message, const ReportingPorts& ports) {
    resetDeviceParameter(message.payload, message.id);
    checkArrival(ports);
}

/// With one display, the driver makes an open window read the settings again. With several displays it cannot, because
/// that would take the window back to the list of displays.
void noteWindowThatMayUndo(const std::string& name) {
    const std::vector<Display> displays = knownDisplays();
    if (std::count_if(displays.begin(), displays.end(), [](const Display& each) { return each.isConnected; }) < 2)
        return;
    if (!isPerhapsShown(name) || answerOfPort(kPreferencePortName) == PortAnswer::NotRunning) return;
    std::cerr
        << "kelvo-touchctl: note: an open settings window may undo this change; switch it to another page and back\n";
}

// Showing

NSMutableDictionary existingSettingsOf(const std::string& name) {
    auto settings = settingsOf(name);
    if (!settings) {
        throw Failure(Status::Failure,
                      "\"" + withVisibleControlCharacters(name) +
                          "\" has no settings yet; the driver creates them when the display is connected");
    }
    return settings;
}

Shown shownDriverVersion(const NSMutableDictionary& settings) {
    const auto version = settings.objectForKey(keys::driverVersion).stringValue();
    return version ? Shown{Shown::State::Fit, *version} : Shown();
}

/// In the syntax of "gesture".
std::string shownGesture(const NSMutableDictionary& record) {
    const std::int64_t index = record.objectForKey(keys::selectedIndex).longLongValue();
    const auto action =
        record.objectForKey(keys::descriptor).array().objectAtIndex(static_cast<std::size_t>(index)).string();
    return record.objectForKey(keys::name).string().value_or(Shown().text()) +
           (record.objectForKey(keys::isEnable).boolValue() ? " on " : " off ") + action.value_or(Shown().text());
}

void printSettings(const Display& display, const NSMutableDictionary& settings) {
    print(withVisibleControlCharacters(display.name) + (display.isConnected ? " (connected)" : " (not connected)"));
    for (const Key& key : settingKeys()) {
        if (!key.shown) continue;
        print("  " + std::string(key.name) + " " + withVisibleControlCharacters(key.shown(settings).text()));
    }
    const NSMutableArray list = settings.objectForKey(keys::gestureArray).array();
    for (const platform::Value& element : list.objects()) {
        print("  gesture " + withVisibleControlCharacters(shownGesture(element.dictionary())));
    }
    print("  " + std::string(kDriverVersionKey) + " " +
          withVisibleControlCharacters(shownDriverVersion(settings).text()));
}

Status list(const Invocation& invocation) {
    auto all = NSMutableArray::arrayWithObjects();
    for (const Display& display : knownDisplays()) {
        all.addObject(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{display.name, "name"}, {display.isConnected, "connected"}}));
        if (invocation.has(kJsonOption)) continue;
        print(withVisibleControlCharacters(display.name) + (display.isConnected ? "\tconnected" : "\tnot connected"));
    }
    if (invocation.has(kJsonOption)) print(jsonLine(all));
    return Status::Success;
}

/// Shows all connected displays whose settings can be read; if some cannot, the command fails in the end.
Status showAll(bool asJson) {
    std::string faults;
    auto line = NSMutableDictionary::dictionary();
    for (const Display& display : knownDisplays()) {
        if (!display.isConnected) continue;
        try {
            const auto settings = settingsOf(display.name);
            line.setObjectForKey(settings ? settings : NSMutableDictionary::dictionary(), display.name);
            if (!asJson) printSettings(display, settings);
        } catch (const Failure& failure) {
            faults += (faults.empty() ? "" : "; ") + std::string(failure.what());
            // Values that JSON cannot represent become null, which property lists do not have.
            line.setObjectForKey(std::numeric_limits<double>::quiet_NaN(), display.name);
        }
    }
    if (asJson) print(jsonLine(line));
    if (!faults.empty()) throw Failure(Status::Failure, faults);
    return Status::Success;
}

Status show(const Invocation& invocation) {
    if (invocation.words.empty()) return showAll(invocation.has(kJsonOption));
    const Display display = displayNamed(invocation.words[0]);
    const auto settings = existingSettingsOf(display.name);
    if (invocation.has(kJsonOption)) {
        print(jsonLine(settings));
    } else {
        printSettings(display, settings);
    }
    return Status::Success;
}

Shown shownValue(const std::string& name, const NSMutableDictionary& settings) {
    if (name == kDriverVersionKey) return shownDriverVersion(settings);
    for (const Key& key : settingKeys()) {
        if (key.name == name && key.shown) return key.shown(settings);
    }
    std::string names;
    for (const std::string& each : namesOfValues()) names += (names.empty() ? "" : ", ") + each;
    throw Failure(Status::Usage, "unknown key \"" + name + "\"; the keys are " + names);
}

Status get(const Words& words) {
    const Shown shown = shownValue(words[1], existingSettingsOf(displayNamed(words[0]).name));
    if (shown.state != Shown::State::Fit) {
        throw Failure(Status::Failure, words[1] +
                                           (shown.state == Shown::State::NotSet ? " is not set" : " is invalid") +
                                           " in the settings of this display");
    }
    print(withVisibleControlCharacters(shown.words));
    return Status::Success;
}

// Changing

Status set(const Invocation& invocation, const ReportingPorts& ports) {
    const Words& words = invocation.words;
    const Key& key = settingKey(words[1]);
    chooseDisplay(words[0]);
    const auto stored = settingsToChange(words[0]);
    if (key.driverCommand) {
        performAtDriver(key.driverCommand(words));
        return Status::Success;
    }
    const Message message = key.messageOf(Words(words.begin() + 2, words.end()), stored);
    if (!invocation.has(kForceOption)) checkGestures(message, stored);
    checkThatItFits(message);
    send(message, ports);
    awaitStoring(message.payload);
    noteWindowThatMayUndo(words[0]);
    return Status::Success;
}

Status gesture(const Words& words, const ReportingPorts& ports) {
    chooseDisplay(words[0]);
    gSettings = gestureListOf(settingsToChange(words[0]));
    checkThatItFits({kMessageIDForGestureArray, payloads::gestureArray()});
    changeGesture(words[1], Words(words.begin() + 2, words.end()));
    checkArrival(ports);
    awaitStoring(payloads::gestureArray());
    noteWindowThatMayUndo(words[0]);
    return Status::Success;
}

/// The settings in the messages, without the name of the display.
NSMutableDictionary settingsIn(const std::vector<Message>& messages) {
    auto settings = NSMutableDictionary::dictionary();
    for (const Message& message : messages) {
        for (const auto& [key, value] : message.payload.entries()) {
            if (key != keys::deviceName) settings.setObjectForKey(value, key);
        }
    }
    return settings;
}

Status importProfile(const Invocation& invocation, const ReportingPorts& ports) {
    const Words& words = invocation.words;
    chooseDisplay(words[0]);
    const auto stored = settingsToChange(words[0]);
    const std::vector<Message> messages = messagesOfProfile(profileIn(words.size() > 1 ? words[1] : "-"));
    for (const Message& message : messages) {
        if (!invocation.has(kForceOption)) checkGestures(message, stored);
        checkThatItFits(message);
    }
    for (const Message& message : messages) send(message, ports);
    const auto sent = settingsIn(messages);
    awaitStoring(sent);
    noteWindowThatMayUndo(words[0]);
    for (const auto& [key, value] : sent.entries()) {
        if (!stored.objectForKey(key).isEqual(value)) print(key);
    }
    return Status::Success;
}

Status exportProfile(const Words& words) {
    const auto settings = existingSettingsOf(displayNamed(words[0]).name);
    NSMutableDictionary profile;
    try {
        profile = profileOf(settings);
    } catch (const Failure& failure) {
        throw Failure(Status::Failure, "the settings of this display are invalid: " + std::string(failure.what()) +
                                           "; set them again with \"set\"");
    }
    const auto data = platform::PropertyLists::current().createXMLData(profile);
    if (!data) throw Failure(Status::Failure, "the settings of this display cannot be written as a property list");
    writeToOutput(words.size() < 2 ? "-" : words[1], *data);
    return Status::Success;
}

Status switchDriver(const Words& words) {
    if (words[0] != "on" && words[0] != "off") {
        throw Failure(Status::Usage, "driver takes on or off, not \"" + words[0] + "\"");
    }
    performAtDriver({words[0] == "on" ? "enable" : "disable"});
    return Status::Success;
}

/// Becomes the calibration tool, whose exit status is that of the command.
Status calibrate(const Invocation& invocation) {
    chooseDisplay(invocation.words[0]);
    const std::string application = platform::NSFileManager::defaultManager().localLibraryDirectory() +
                                    calibrationToolFullPath().substr(std::string_view("/Library").size());
    std::string program = application + "/CalibrationTool";
    std::string precise(kPreciseOption);
    std::string end = "--";
    std::string display = invocation.words[0];
    std::vector<char*> arguments{program.data()};
    if (invocation.has(kPreciseOption)) arguments.push_back(precise.data());
    arguments.insert(arguments.end(), {end.data(), display.data(), nullptr});
    execv(program.c_str(), arguments.data());
    throw Failure(Status::Failure, "cannot start the calibration tool " + shownPath(application) + " (" +
                                       std::string(std::strerror(errno)) + "); reinstall kelvo-touch-display");
}

// Looking on

/// The driver runs in another folder than this command.
std::string wholePathOf(const std::string& file) {
    if (file.empty() || file == "-") {
        throw Failure(Status::Usage, "the driver creates the recording itself and needs a file name");
    }
    return std::filesystem::absolute(file).lexically_normal().string();
}

/// Waits until the user stops it. Any other end is a Failure.
void awaitEndOfRecording(platform::CFRunLoop& loop, const DriverPresence& driver, const bool& isEnded) {
    constexpr double kForever = std::numeric_limits<double>::infinity();
    loop.runUntil([&] { return isEnded || driver.state() != DriverPresence::State::Running; }, kForever);
    if (isEnded) return;
    if (driver.state() == DriverPresence::State::Ended) {
        throw Failure(Status::NoDriver, "the driver quit, which ended the recording; its last moments may be missing");
    }
    throw Failure(Status::Failure,
                  "lost the session bus; when it is back, stop the recording with \"kelvo-touchctl record DEVICE\"");
}

void endRecording(const std::string& name) {
    try {
        performAtDriver({"record", name});
    } catch (const Failure& failure) {
        throw Failure(failure.status(), "the recording is incomplete: " + std::string(failure.what()));
    }
}

Status record(PollRunLoop& loop, const Words& words) {
    chooseDisplay(words[0]);
    if (words.size() == 1) {
        performAtDriver({"record", words[0]});
        return Status::Success;
    }
    const std::string file = wholePathOf(words[1]);
    bool isEnded = false;
    const TerminationSignals signals(loop, [&] { isEnded = true; });
    const DriverPresence driver(loop);
    performAtDriver({"record", words[0], file});
    printNow("recording to " + withVisibleControlCharacters(file) + "; press Ctrl+C to stop");
    awaitEndOfRecording(loop, driver, isEnded);
    endRecording(words[0]);
    print(withVisibleControlCharacters(file) + " is complete");
    return Status::Success;
}

Status watch(PollRunLoop& loop) {
    // Becoming a monitor would wait longer than a person would.
    if (!hasSessionBus()) throw Failure(Status::NoDriver, kNoBus);
    bool isBusLost = false;
    std::optional<Failure> failure;
    const TerminationSignals signals(loop, [&] { loop.stop(); });
    const auto tell = [&](const std::string& line) {
        try {
            printNow(line);
        } catch (const Failure& caught) {
            failure = caught;
            loop.stop();
        }
    };
    const auto messages = MessageWatch::open(loop, tell, [&] {
        isBusLost = true;
        loop.stop();
    });
    if (!messages) throw Failure(Status::NoDriver, kNoBus);
    loop.run();
    if (failure) throw Failure(*failure);
    if (isBusLost) throw Failure(Status::Failure, "lost the session bus; run this again when it is back");
    return Status::Success;
}

Status complete(const Words& words) {
    for (const std::string& word : completionsAfter(words)) {
        // Each line is a word, so words with line breaks cannot be offered.
        if (word == withVisibleControlCharacters(word)) print(word);
    }
    return Status::Success;
}

} // namespace

Status perform(const Invocation& invocation, Services& services, const std::string& panePath) {
    switch (invocation.command->id) {
    case Command::Id::List:
        return list(invocation);
    case Command::Id::Show:
        return show(invocation);
    case Command::Id::Get:
        return get(invocation.words);
    case Command::Id::Set:
        return set(invocation, services.ports);
    case Command::Id::Gesture:
        return gesture(invocation.words, services.ports);
    case Command::Id::Export:
        return exportProfile(invocation.words);
    case Command::Id::Import:
        return importProfile(invocation, services.ports);
    case Command::Id::Driver:
        return switchDriver(invocation.words);
    case Command::Id::Record:
        return record(services.runLoop, invocation.words);
    case Command::Id::Actions:
        return actions(invocation, services.files);
    case Command::Id::Calibrate:
        return calibrate(invocation);
    case Command::Id::Watch:
        return watch(services.runLoop);
    case Command::Id::Doctor:
        return writeReport(std::cout, panePath);
    case Command::Id::Complete:
        break;
    }
    return complete(invocation.words);
}

} // namespace kelvo::touchctl
