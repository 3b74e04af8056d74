#include "peers/driver/DriverSimulator.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "peers/JsonLine.h"
#include "peers/MessageNames.h"
#include "platform/Log.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

/// With the names that the settings files add, a file name on Linux ends at 255 bytes.
constexpr std::size_t kLongestName = 200;

/// A display's name becomes part of a file's name, and of lines that are shown.
void checkName(const std::string& name) {
    const auto isUnfit = [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20; };
    if (name.empty() || name.size() > kLongestName || std::any_of(name.begin(), name.end(), isUnfit)) {
        throw std::runtime_error("a display's name has 1 to 200 bytes, none of them \"/\" or a control character");
    }
}

NSMutableDictionary withoutDeviceName(const NSMutableDictionary& payload) {
    auto items = NSMutableDictionary::dictionary();
    for (const std::string& key : payload.allKeys()) {
        if (key != keys::deviceName) items.setObjectForKey(payload.objectForKey(key), key);
    }
    return items;
}

} // namespace

DriverSimulator::DriverSimulator(std::function<void(const std::string&)> printLine)
    : printLine_(std::move(printLine)) {}

bool DriverSimulator::start() {
    port_ = platform::CFMessagePorts::current().createLocal(
        kTouchDisplayDriverPortName, [this](platform::CFMessagePort&, std::int32_t messageId,
                                            std::span<const std::uint8_t> data) { receive(messageId, data); });
    if (!port_) return false;
    source_ = port_->createRunLoopSource();
    platform::CFRunLoop::getCurrent().addSource(*source_);

    const NSMutableDictionary utilities = readUtilitiesDictionary();
    const Value enabled = utilities.objectForKey(keys::driverEnable);
    isDriverEnabled_ = !enabled || enabled.boolValue();
    if (utilities.objectForKey(keys::currentDeviceType).array().count() > 0) {
        tellOfDisconnection();
    } else {
        saveState();
    }
    return true;
}

void DriverSimulator::stop() {
    if (std::exchange(devices_, {}).empty()) return;
    tellOfDisconnection();
}

void DriverSimulator::connect(const std::string& name) {
    checkName(name);
    if (isConnected(name)) throw std::runtime_error("\"" + name + "\" is connected already; see \"status\"");
    if (!readSettingItemsFromPlist(getSettingsFilePath(name))) {
        throw std::runtime_error("the settings file " + getSettingsFilePath(name) +
                                 " cannot be read or made; repair or remove it");
    }
    devices_.push_back(name);
    tellPane(kMessageIDForDeviceIsConnected,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{true, keys::isConnected}}));
}

void DriverSimulator::disconnect(const std::string& name) {
    if (!isConnected(name)) throw std::runtime_error("\"" + name + "\" is not connected; see \"status\"");
    std::erase(devices_, name);
    tellOfDisconnection();
}

void DriverSimulator::setDriverEnabled(bool enabled) {
    isDriverEnabled_ = enabled;
    tellPane(COMMAND_DRIVER_DISABLE,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{enabled, keys::driverEnable}}));
}

void DriverSimulator::showTab(std::int64_t index) {
    tellPane(kMessageIDForSelectedMenuItem,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{index, keys::selectedMenuItem}}));
}

std::string DriverSimulator::status() const {
    return jsonLine(
        NSMutableDictionary::dictionaryWithObjectsAndKeys({{deviceList(), "devices"}, {isDriverEnabled_, "enabled"}}));
}

void DriverSimulator::receive(std::int32_t messageId, std::span<const std::uint8_t> data) {
    const NSMutableDictionary payload = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data);
    auto line = NSMutableDictionary::dictionaryWithObjectsAndKeys({{messageId, "id"}});
    const std::string_view name = nameOfMessage(kTouchDisplayDriverPortName, messageId);
    if (!name.empty()) line.setObjectForKey(name, "name");
    line.setObjectForKey(payload, "payload");
    // Stored first, so that whoever reads the line finds the file as it says.
    if (!name.empty()) store(payload);
    printLine_(jsonLine(line));
}

/// Only a display that is connected has settings to change; any other name would make a file of its own.
void DriverSimulator::store(const NSMutableDictionary& payload) const {
    const auto name = payload.objectForKey(keys::deviceName).string();
    if (!name || !isConnected(*name)) return;
    if (!saveSettingItemsToPlist(withoutDeviceName(payload), getSettingsFilePath(name))) {
        platform::NSLog("%@ cannot be read or written; repair or remove it", getSettingsFilePath(name));
    }
}

bool DriverSimulator::isConnected(const std::string& name) const {
    return std::find(devices_.begin(), devices_.end(), name) != devices_.end();
}

void DriverSimulator::saveState() const {
    const auto state = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{deviceList(), keys::currentDeviceType}, {isDriverEnabled_, keys::driverEnable}});
    if (!saveSettingItemsToPlist(state, getUilitiesFilePath())) {
        throw std::runtime_error(getUilitiesFilePath() + " cannot be read or written; repair or remove it");
    }
}

void DriverSimulator::tellOfDisconnection() const {
    tellPane(kMessageIDForDeviceIsConnected,
             NSMutableDictionary::dictionaryWithObjectsAndKeys({{false, keys::isConnected}}));
}

/// The pane takes the state from the file when it hears of a change, so the file comes first.
void DriverSimulator::tellPane(std::int32_t messageId, const NSMutableDictionary& payload) const {
    saveState();
    sendToPort(kPreferencePortName, payload, messageId);
}

NSMutableArray DriverSimulator::deviceList() const {
    auto list = NSMutableArray::arrayWithObjects();
    for (const std::string& name : devices_) list.addObject(name);
    return list;
}

} // namespace kelvo
