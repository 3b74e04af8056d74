#include "peers/touchctl/Commands.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/Journal.h"
#include "linux/TerminationSignals.h"
#include "peers/JsonLine.h"
#include "peers/touchctl/Completion.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/Doctor.h"
#include "peers/touchctl/GestureRows.h"
#include "peers/touchctl/MessageWatch.h"
#include "peers/touchctl/Settings.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace kelvo::touchctl {

namespace {

using platform::CFMessagePortStatus;
using platform::NSMutableArray;
using platform::NSMutableDictionary;

/// Whoever receives a message takes no more.
constexpr std::size_t kLongestMessage = 1'048'576;

constexpr char kStartTheDriver[] = "no driver runs; start the driver of the display, then try again";
constexpr char kNoBus[] = "there is no session bus; run this in the session of the display's user, or set "
                          "DBUS_SESSION_BUS_ADDRESS to that session's";

void print(const std::string& text) { std::cout << text << '\n'; }

/// A line that somebody waits for.
void printNow(const std::string& line) {
    std::cout << line << std::endl;
    if (!std::cout) throw Failure(Status::Failure, "the output cannot be written; see where it goes");
}

// Sending

/// A display to be changed: as in the pane, it is connected and its driver switched on.
void chooseDisplay(const std::string& name) {
    const Display display = displayNamed(name);
    if (!display.isConnected) {
        if (!hasSessionBus()) throw Failure(Status::NoDriver, kNoBus);
        if (answerOfPort(kTouchDisplayDriverPortName) == PortAnswer::NotRunning) {
            throw Failure(Status::NoDriver, kStartTheDriver);
        }
        throw Failure(Status::NoDevice,
                      "\"" + withVisibleControlCharacters(name) + "\" is not connected; connect it, then try again");
    }
    if (!isDriverSwitchedOn()) {
        throw Failure(Status::NoDriver, "the driver is switched off; switch it on, then try again");
    }
    setModelType(name);
}

/// The pane's own sending tells nobody what became of it.
void checkArrival(const ReportingPorts& ports) {
    if (!ports.failure()) return;
    switch (*ports.failure()) {
    case CFMessagePortStatus::IsInvalid:
        throw Failure(Status::NoDriver, kStartTheDriver);
    case CFMessagePortStatus::SendTimeout:
    case CFMessagePortStatus::ReceiveTimeout:
        throw Failure(Status::NoDriver, "the driver does not answer; end it, start it again, then try again");
    case CFMessagePortStatus::TransportError:
    case CFMessagePortStatus::Success:
        break;
    }
    if (!hasSessionBus()) throw Failure(Status::NoDriver, kNoBus);
    throw Failure(Status::NoDriver, "the driver refused the message; see that it is one for this version");
}

/// Whether the settings file holds what was sent.
bool isStored(const NSMutableDictionary& payload) {
    const auto stored = NSMutableDictionary::dictionaryWithContentsOfFile(getSettingsFilePath(gModelType));
    const std::vector<std::string> sent = payload.allKeys();
    return std::all_of(sent.begin(), sent.end(), [&](const std::string& key) {
        return key == keys::deviceName || stored.objectForKey(key).isEqual(payload.objectForKey(key));
    });
}

/// A driver answers before it stores, and the next command begins with what is stored.
void awaitStoring(const NSMutableDictionary& payload) {
    constexpr int kLooks = 100;
    constexpr double kSecondsBetweenLooks = 0.02;
    for (int i = 0; i < kLooks; ++i) {
        if (isStored(payload)) return;
        platform::CFRunLoop::getCurrent().runUntil([] { return false; }, kSecondsBetweenLooks);
    }
    std::cerr << "kelvo-touchctl: note: the driver took the change but has not stored it in the display's settings\n";
}

void send(const Message& message, const ReportingPorts& ports) {
    platform::Value payload = message.payload;
    const auto data = Helpers::NSDate::dataWithContentsOfDictionary(payload);
    if (!data || data->size() > kLongestMessage) {
        throw Failure(Status::Failure, "the settings do not fit into a message; make the gesture list shorter");
    }
    resetDeviceParameter(message.payload, message.id);
    checkArrival(ports);
}

// Showing

NSMutableDictionary existingSettingsOf(const std::string& name) {
    auto settings = settingsOf(name);
    if (!settings) {
        throw Failure(Status::Failure,
                      "\"" + withVisibleControlCharacters(name) +
                          "\" has no settings yet; the driver makes them when the display is connected");
    }
    return settings;
}

void printSettings(const Display& display, const NSMutableDictionary& settings) {
    print(withVisibleControlCharacters(display.name) + (display.isConnected ? " (connected)" : " (not connected)"));
    for (const Key& key : settingKeys()) {
        if (!key.shown) continue;
        print("  " + std::string(key.name) + " " +
              withVisibleControlCharacters(key.shown(settings).value_or("(not set)")));
    }
    const NSMutableArray list = settings.objectForKey(keys::gestureArray).array();
    for (std::size_t i = 0; i < list.count(); ++i) {
        const auto record = list.objectAtIndex(i).dictionary();
        const std::int64_t index = record.objectForKey(keys::selectedIndex).longLongValue();
        const auto action =
            record.objectForKey(keys::descriptor).array().objectAtIndex(static_cast<std::size_t>(index)).string();
        const auto name = record.objectForKey(keys::name).string();
        print(withVisibleControlCharacters("  gesture " + name.value_or("(not set)") +
                                           (record.objectForKey(keys::isEnable).boolValue() ? " on " : " off ") +
                                           action.value_or("(not set)")));
    }
    const auto version = settings.objectForKey(keys::driverVersion).stringValue();
    print("  driver-version " + withVisibleControlCharacters(version.value_or("(not set)")));
}

Status list(const Invocation& invocation) {
    auto all = NSMutableArray::arrayWithObjects();
    for (const Display& display : knownDisplays()) {
        all.addObject(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{display.name, "name"}, {display.isConnected, "connected"}}));
        if (invocation.json) continue;
        print(withVisibleControlCharacters(display.name) + (display.isConnected ? "\tconnected" : "\tnot connected"));
    }
    if (invocation.json) print(jsonLine(all));
    return Status::Success;
}

Status showAll(bool asJson) {
    auto all = NSMutableDictionary::dictionary();
    for (const Display& display : knownDisplays()) {
        if (!display.isConnected) continue;
        const auto settings = settingsOf(display.name);
        if (asJson) {
            all.setObjectForKey(settings ? settings : NSMutableDictionary::dictionary(), display.name);
        } else {
            printSettings(display, settings);
        }
    }
    if (asJson) print(jsonLine(all));
    return Status::Success;
}

Status show(const Invocation& invocation) {
    if (invocation.words.empty()) return showAll(invocation.json);
    const Display display = displayNamed(invocation.words[0]);
    const auto settings = existingSettingsOf(display.name);
    if (invocation.json) {
        print(jsonLine(settings));
    } else {
        printSettings(display, settings);
    }
    return Status::Success;
}

// Changing

Status set(const Words& words, const ReportingPorts& ports) {
    const Key& key = settingKey(words[1]);
    chooseDisplay(words[0]);
    const Message message = key.messageOf(Words(words.begin() + 2, words.end()), settingsOf(words[0]));
    send(message, ports);
    awaitStoring(message.payload);
    return Status::Success;
}

Status gesture(const Words& words, const ReportingPorts& ports) {
    chooseDisplay(words[0]);
    gSettings = gestureListOf(settingsOf(words[0]));
    changeGesture(words[1], words[2]);
    checkArrival(ports);
    awaitStoring(payloads::gestureArray());
    return Status::Success;
}

Status importProfile(const Words& words, const ReportingPorts& ports) {
    chooseDisplay(words[0]);
    const auto profile = profileIn(words.size() > 1 ? words[1] : "-");
    auto sent = NSMutableDictionary::dictionary();
    for (const Message& message : messagesOfProfile(profile)) {
        send(message, ports);
        for (const std::string& key : message.payload.allKeys()) {
            sent.setObjectForKey(message.payload.objectForKey(key), key);
        }
    }
    awaitStoring(sent);
    return Status::Success;
}

Status exportProfile(const Words& words, platform::NSFileManager& files) {
    const auto settings = existingSettingsOf(displayNamed(words[0]).name);
    NSMutableDictionary profile;
    try {
        profile = profileOf(settings);
    } catch (const Failure& failure) {
        throw Failure(Status::Failure, "the settings of this display do not fit: " + std::string(failure.what()) +
                                           "; set them anew with \"set\"");
    }
    const auto data = platform::PropertyLists::current().createXMLData(profile);
    if (!data) throw Failure(Status::Failure, "the settings of this display cannot be written as a property list");
    if (words.size() < 2 || words[1] == "-") {
        std::cout.write(reinterpret_cast<const char*>(data->data()), static_cast<std::streamsize>(data->size()));
    } else if (!files.writeAtomically(words[1], *data)) {
        throw Failure(Status::Failure, words[1] + " cannot be written; name a file in a folder that you may write");
    }
    return Status::Success;
}

// Looking on

Status watch(PollRunLoop& loop) {
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
    if (isBusLost) throw Failure(Status::Failure, "the session bus went away; start again when it is back");
    return Status::Success;
}

Status complete(const Words& words) {
    for (const std::string& word : completionsAfter(words)) {
        // A line is a word, so a word of several lines cannot be offered.
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
    case Command::Id::Set:
        return set(invocation.words, services.ports);
    case Command::Id::Gesture:
        return gesture(invocation.words, services.ports);
    case Command::Id::Export:
        return exportProfile(invocation.words, services.files);
    case Command::Id::Import:
        return importProfile(invocation.words, services.ports);
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
