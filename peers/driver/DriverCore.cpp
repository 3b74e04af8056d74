#include "peers/driver/DriverCore.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BusMessagePorts.h"
#include "peers/JsonLine.h"
#include "peers/MessageNames.h"
#include "peers/driver/DisplayNames.h"
#include "peers/driver/SystemGestures.h"
#include "peers/driver/TouchSettings.h"
#include "platform/Log.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using Words = ControlCommand::Words;

NSMutableDictionary withoutDeviceName(const NSMutableDictionary& payload) {
    auto items = NSMutableDictionary::dictionary();
    for (const std::string& key : payload.allKeys()) {
        if (key != keys::deviceName) items.setObjectForKey(payload.objectForKey(key), key);
    }
    return items;
}

NSMutableDictionary connection(bool isConnected) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{isConnected, keys::isConnected}});
}

/// A driver also works without them.
void makeSystemGestureFiles() {
    try {
        createSystemGestureFiles();
    } catch (const std::runtime_error& error) {
        platform::NSLog("%@", std::string_view(error.what()));
    }
}

} // namespace

DriverCore::DriverCore(Displays& displays, std::function<void(const std::string&)> printLine,
                       std::vector<ControlCommand> ownCommands)
    : displays_(displays),
      printLine_(std::move(printLine)),
      commands_(commonCommands()),
      processes_(platform::CFRunLoop::getCurrent()) {
    std::move(ownCommands.begin(), ownCommands.end(), std::back_inserter(commands_));
}

bool DriverCore::start() {
    channel_ = ControlChannel::open(platform::CFRunLoop::getCurrent(),
                                    {[this](const Words& words) { return perform(words); },
                                     [this](const std::string& name) { beginWatch(name); },
                                     [this](const std::string& name) { displays_.setWatched(name, false); }});
    if (!channel_) return false;
    port_ = platform::CFMessagePorts::current().createLocal(
        kTouchDisplayDriverPortName,
        [this](platform::CFMessagePort& port, std::int32_t messageId, std::span<const std::uint8_t> data) {
            receive(messageId, data, port.sender());
        });
    if (!port_) return false;
    source_ = port_->createRunLoopSource();
    platform::CFRunLoop::getCurrent().addSource(*source_);

    makeSystemGestureFiles();
    const NSMutableDictionary utilities = readUtilitiesDictionary();
    // A value without a text form has a type that cannot be read as a boolean, so it counts as missing.
    const Value enabled = utilities.objectForKey(keys::driverEnable);
    isDriverEnabled_ = !enabled.stringValue() || enabled.boolValue();
    displays_.setDriverEnabled(isDriverEnabled_);
    if (utilities.objectForKey(keys::currentDeviceType).array().count() > 0) {
        tellOfDisconnection();
    } else {
        saveState();
    }
    return true;
}

void DriverCore::stop() {
    const auto gone = std::exchange(connected_, {});
    if (gone.empty()) return;
    for (const Display& display : gone) {
        channel_->refuseWatching(display.name);
        displays_.forget(display.name);
    }
    tellOfDisconnection();
}

void DriverCore::connect(const std::string& name, std::optional<touch::Size> nativePixels) {
    checkDisplayName(name);
    if (isConnected(name)) throw std::runtime_error("\"" + name + "\" is already connected; see \"status\"");
    const NSMutableDictionary settings = readSettingItemsFromPlist(getSettingsFilePath(name));
    if (!settings) {
        throw std::runtime_error("the settings file " + getSettingsFilePath(name) +
                                 " cannot be read or created; repair or remove it");
    }
    followOtherFiles();
    connected_.push_back({name, settings});
    if (nativePixels) storeNativePixels(connected_.back(), *nativePixels);
    apply(connected_.back());
    tellPane(kMessageIDForDeviceIsConnected, connection(true));
}

void DriverCore::disconnect(const std::string& name) {
    (void)connectedDisplay(name);
    std::erase_if(connected_, [&](const Display& display) { return display.name == name; });
    channel_->refuseWatching(name);
    displays_.forget(name);
    tellOfDisconnection();
}

void DriverCore::setDriverEnabled(bool enabled) {
    isDriverEnabled_ = enabled;
    if (!enabled) {
        for (const Display& display : connected_) channel_->refuseWatching(display.name);
    }
    displays_.setDriverEnabled(enabled);
    tellPane(COMMAND_DRIVER_DISABLE,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{enabled, keys::driverEnable}}));
}

void DriverCore::storeNativePixels(const std::string& name, touch::Size pixels) {
    storeNativePixels(connectedDisplay(name), pixels);
}

void DriverCore::showTab(std::int64_t index) {
    tellPane(kMessageIDForSelectedMenuItem,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{index, keys::selectedMenuItem}}));
}

bool DriverCore::isConnected(const std::string& name) const {
    return std::any_of(connected_.begin(), connected_.end(),
                       [&](const Display& display) { return display.name == name; });
}

std::string DriverCore::status() const {
    auto line =
        NSMutableDictionary::dictionaryWithObjectsAndKeys({{deviceList(), "devices"}, {isDriverEnabled_, "enabled"}});
    auto inactive = NSMutableArray::arrayWithObjects();
    for (const Display& display : connected_) {
        if (!displays_.isActive(display.name)) inactive.addObject(display.name);
    }
    if (inactive.count() > 0) line.setObjectForKey(inactive, "inactive");
    return jsonLine(line);
}

void DriverCore::sendFrame(const std::string& name, const ContactFrame& frame) { channel_->sendFrame(name, frame); }

void DriverCore::followOtherFiles() {
    followActions();
    auto dates = settingsContextDates();
    if (contextDates_ == dates) return;
    contextDates_ = std::move(dates);
    context_ = currentSettingsContext();
    for (const Display& display : connected_) apply(display);
}

void DriverCore::followActions() {
    auto dates = actionFileDates(session_);
    if (actionDates_ == dates) return;
    actionDates_ = std::move(dates);
    const ActionsInForce actions(session_);
    for (const std::string& complaint : actions.complaints()) platform::NSLog("%@", complaint);
    displays_.setActions(actions);
}

// The control channel

std::vector<ControlCommand> DriverCore::commonCommands() {
    return {
        {"status", 0, 0, [this](const Words&) { return status(); }},
        {"enable", 0, 0,
         [this](const Words&) {
             setDriverEnabled(true);
             return status();
         }},
        {"disable", 0, 0,
         [this](const Words&) {
             setDriverEnabled(false);
             return status();
         }},
        {"finger", 2, 2,
         [this](const Words& words) {
             Display& display = connectedDisplay(words[0]);
             if (words[1] != "touch" && words[1] != "pointer") {
                 throw std::runtime_error(R"(one finger must be "touch" or "pointer")");
             }
             change(display, NSMutableDictionary::dictionaryWithObjectsAndKeys({{words[1], keys::fingerMode}}));
             return status();
         }},
        {"record", 1, 2,
         [this](const Words& words) {
             const Display& display = connectedDisplay(words[0]);
             if (words.size() == 1) {
                 displays_.endRecording(display.name);
             } else {
                 displays_.beginRecording(display.name, words[1]);
             }
             return status();
         }},
    };
}

CommandResult DriverCore::perform(const Words& words) {
    try {
        const std::string name = words.empty() ? "" : words[0];
        const auto command = std::find_if(commands_.begin(), commands_.end(),
                                          [&](const ControlCommand& each) { return each.name == name; });
        if (command == commands_.end()) {
            throw std::runtime_error("unknown command \"" + name + "\"; see --help");
        }
        const Words rest(words.begin() + 1, words.end());
        if (rest.size() < command->least || rest.size() > command->most) {
            throw std::runtime_error("wrong number of arguments for \"" + name + "\"; see --help");
        }
        return {true, command->perform(rest)};
    } catch (const std::exception& error) {
        return {false, error.what()};
    }
}

void DriverCore::beginWatch(const std::string& name) {
    (void)connectedDisplay(name);
    if (!isDriverEnabled_) throw std::runtime_error("the driver is switched off; switch it on");
    displays_.setWatched(name, true);
}

// The message port

void DriverCore::receive(std::int32_t messageId, std::span<const std::uint8_t> data, const std::string& sender) {
    const NSMutableDictionary payload = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data);
    const std::string_view name = nameOfMessage(kTouchDisplayDriverPortName, messageId);
    // Saved first, so that the file matches the printed line.
    const bool isTaken = !name.empty() && takeSettings(payload);
    if (printLine_) {
        auto line = NSMutableDictionary::dictionaryWithObjectsAndKeys({{messageId, "id"}});
        if (!name.empty()) line.setObjectForKey(name, "name");
        line.setObjectForKey(payload, "payload");
        printLine_(jsonLine(line));
    }
    if (isTaken) tellPaneUnlessItKnows(sender);
}

/// Only connected displays have settings to change; any other name would create a new file.
bool DriverCore::takeSettings(const NSMutableDictionary& payload) {
    Display* display = displayNamed(payload.objectForKey(keys::deviceName).string().value_or(""));
    if (!display) return false;
    change(*display, withoutDeviceName(payload));
    return true;
}

void DriverCore::storeNativePixels(Display& display, touch::Size pixels) {
    if (nativePixelsOf(display.settings) == pixels) return;
    change(display, NSMutableDictionary::dictionaryWithObjectsAndKeys(
                        {{static_cast<std::int64_t>(pixels.width), keys::nativeWidth},
                         {static_cast<std::int64_t>(pixels.height), keys::nativeHeight}}));
}

/// The display applies the change whether or not it can be saved.
void DriverCore::change(Display& display, const NSMutableDictionary& items) {
    followOtherFiles();
    for (const std::string& key : items.allKeys()) display.settings.setObjectForKey(items.objectForKey(key), key);
    apply(display);
    const std::string path = getSettingsFilePath(display.name);
    if (!saveSettingItemsToPlist(items, path)) {
        platform::NSLog("%@ cannot be read or written; repair or remove it", path);
    }
}

void DriverCore::apply(const Display& display) const {
    displays_.setSettings(display.name, touchSettingsOf(display.name, display.settings, context_));
}

/// With its next message, an open pane would undo what another program sent, because it keeps the list of gestures that
/// it has read. It knows its own changes, which are all messages from its process. A change that was on its way while
/// the pane was being told counts as new, because the pane may then read an older file.
void DriverCore::tellPaneUnlessItKnows(const std::string& sender) {
    const bool mayHaveCrossed = isTellingOfSettings_;
    processes_.ask({sender, std::string(kBusNamePrefix) + kPreferencePortName},
                   [this, mayHaveCrossed](const std::vector<std::optional<std::uint32_t>>& processes) {
                       if (processes[1] && (mayHaveCrossed || processes[0] != processes[1])) tellPaneOfSettings();
                   });
}

/// If there is only one display, the pane reads the settings again when it hears of a display; with several, it would
/// ask again which one is meant.
void DriverCore::tellPaneOfSettings() {
    mustTellOfSettingsAgain_ = true;
    if (isTellingOfSettings_) return;
    isTellingOfSettings_ = true;
    while (std::exchange(mustTellOfSettingsAgain_, false) && connected_.size() == 1) {
        sendToPort(kPreferencePortName, connection(true), kMessageIDForDeviceIsConnected);
    }
    isTellingOfSettings_ = false;
}

// The files

DriverCore::Display* DriverCore::displayNamed(const std::string& name) {
    const auto found = std::find_if(connected_.begin(), connected_.end(),
                                    [&](const Display& display) { return display.name == name; });
    return found == connected_.end() ? nullptr : &*found;
}

DriverCore::Display& DriverCore::connectedDisplay(const std::string& name) {
    Display* display = displayNamed(name);
    if (!display) throw std::runtime_error("\"" + name + "\" is not connected; see \"status\"");
    return *display;
}

void DriverCore::saveState() const {
    const auto state = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{deviceList(), keys::currentDeviceType}, {isDriverEnabled_, keys::driverEnable}});
    if (!saveSettingItemsToPlist(state, getUilitiesFilePath())) {
        throw std::runtime_error(getUilitiesFilePath() + " cannot be read or written; repair or remove it");
    }
}

void DriverCore::tellOfDisconnection() const { tellPane(kMessageIDForDeviceIsConnected, connection(false)); }

/// The pane reads the state from the file when it hears of a change, so the file is written first.
void DriverCore::tellPane(std::int32_t messageId, const NSMutableDictionary& payload) const {
    saveState();
    sendToPort(kPreferencePortName, payload, messageId);
}

NSMutableArray DriverCore::deviceList() const {
    auto list = NSMutableArray::arrayWithObjects();
    for (const Display& display : connected_) list.addObject(display.name);
    return list;
}

} // namespace kelvo
