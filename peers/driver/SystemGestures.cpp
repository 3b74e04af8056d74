#include "peers/driver/SystemGestures.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "peers/JsonLine.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace kelvo {

namespace {

using platform::NSFileManager;
using platform::NSMutableDictionary;

/// A switch of the system: the file that holds it, and its key there.
struct Switch {
    std::string_view name;
    std::string (*path)();
    std::string_view key;
};

constexpr std::array kSwitches{
    Switch{"AppExpose", getDockPreferenceFilePath, systemKeys::appExpose},
    Switch{"ShowDesktop", getDockPreferenceFilePath, systemKeys::showDesktop},
    Switch{"MissionControl", getDockPreferenceFilePath, systemKeys::missionControl},
    Switch{"Launchpad", getDockPreferenceFilePath, systemKeys::launchpad},
    Switch{"SwipeBetweenPages", getGlobalPreferenceFilePath, systemKeys::swipeNavigateWithScrolls},
};

std::string namesOfSwitches() {
    std::string names;
    for (const Switch& each : kSwitches) names.append(names.empty() ? "" : ", ").append(each.name);
    return names;
}

const Switch& switchNamed(const std::string& name) {
    const auto found =
        std::find_if(kSwitches.begin(), kSwitches.end(), [&](const Switch& each) { return each.name == name; });
    if (found == kSwitches.end()) {
        throw std::runtime_error("there is no system gesture \"" + name + "\"; the system gestures are " +
                                 namesOfSwitches());
    }
    return *found;
}

bool isOn(const std::string& state) {
    if (state != "on" && state != "off") throw std::runtime_error(R"(a system gesture can be switched "on" or "off")");
    return state == "on";
}

void save(const NSMutableDictionary& items, const std::string& path) {
    NSFileManager::defaultManager().createDirectoryAtPath(path.substr(0, path.rfind('/')));
    if (!saveSettingItemsToPlist(items, path)) {
        throw std::runtime_error("the file " + path + " cannot be read or written; repair or remove it");
    }
}

NSMutableDictionary allSwitchesOnIn(const std::string& path) {
    auto items = NSMutableDictionary::dictionary();
    for (const Switch& each : kSwitches) {
        if (each.path() == path) items.setObjectForKey(true, each.key);
    }
    return items;
}

} // namespace

std::string systemGestureStates() {
    auto states = NSMutableDictionary::dictionary();
    for (const Switch& each : kSwitches) {
        const auto file = NSMutableDictionary::dictionaryWithContentsOfFile(each.path());
        states.setObjectForKey(file.objectForKey(each.key).boolValue(), each.name);
    }
    return jsonLine(states);
}

void setSystemGesture(const std::string& name, const std::string& state) {
    const Switch& chosen = switchNamed(name);
    save(NSMutableDictionary::dictionaryWithObjectsAndKeys({{isOn(state), chosen.key}}), chosen.path());
}

NSMutableDictionary newDockPreferences() { return allSwitchesOnIn(getDockPreferenceFilePath()); }

NSMutableDictionary newGlobalPreferences() { return allSwitchesOnIn(getGlobalPreferenceFilePath()); }

void createSystemGestureFiles() {
    for (const std::string& path : {getDockPreferenceFilePath(), getGlobalPreferenceFilePath()}) {
        if (!NSFileManager::defaultManager().fileExistsAtPath(path)) save(allSwitchesOnIn(path), path);
    }
}

} // namespace kelvo
