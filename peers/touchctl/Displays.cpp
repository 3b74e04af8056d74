#include "peers/touchctl/Displays.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/Journal.h"
#include "peers/touchctl/FileAccess.h"
#include "platform/Files.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace kelvo::touchctl {

namespace {

using platform::NSFileManager;
using platform::NSMutableDictionary;

constexpr std::string_view kSettingsPrefix = "Settings_";
constexpr std::string_view kSettingsSuffix = ".plist";
/// The file for no display, which the pane may create.
constexpr std::string_view kNoDisplay = "(null)";

/// The dictionary in a file; nil if there is no file.
NSMutableDictionary contentsOf(const std::string& path) {
    const StoredFile file = storedFileAt(path);
    const std::string complaint = file.complaint();
    if (complaint.empty()) return file.contents;
    const bool isForbidden = file.state == StoredFile::State::Unreadable;
    throw Failure(Status::Failure, shownPath(path) + " " + complaint +
                                       (isForbidden ? "; check its owner and permissions"
                                                    : "; repair it, or remove it and restart the driver"));
}

std::vector<std::string> connectedNames() {
    const auto list = contentsOf(getUilitiesFilePath()).objectForKey(keys::currentDeviceType).array();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < list.count(); ++i) {
        const auto name = list.objectAtIndex(i).string();
        if (name && !name->empty()) names.push_back(*name);
    }
    return names;
}

std::vector<std::string> namesWithSettings() {
    std::vector<std::string> names;
    const auto visit = [&](std::string_view file) {
        if (file.size() <= kSettingsPrefix.size() + kSettingsSuffix.size()) return true;
        if (!file.starts_with(kSettingsPrefix) || !file.ends_with(kSettingsSuffix)) return true;
        file.remove_prefix(kSettingsPrefix.size());
        file.remove_suffix(kSettingsSuffix.size());
        if (file != kNoDisplay) names.emplace_back(file);
        return true;
    };
    const std::string folder = getPreferenceFolderPath();
    if (const auto reason = reasonAgainstListing(folder)) {
        throw Failure(Status::Failure, "the folder " + shownPath(folder) + " cannot be read (" + *reason +
                                           "); check its owner and permissions");
    }
    (void)NSFileManager::defaultManager().visitDirectoryAtPath(folder, visit);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

std::vector<Display> knownDisplays() {
    std::vector<Display> displays;
    std::unordered_set<std::string> listed;
    for (const std::string& name : connectedNames()) {
        if (listed.insert(name).second) displays.push_back({name, true});
    }
    for (const std::string& name : namesWithSettings()) {
        if (listed.insert(name).second) displays.push_back({name, false});
    }
    return displays;
}

Display displayNamed(const std::string& name) {
    const std::vector<Display> displays = knownDisplays();
    const auto found =
        std::find_if(displays.begin(), displays.end(), [&](const Display& display) { return display.name == name; });
    if (found != displays.end()) return *found;
    std::string known;
    for (const Display& display : displays)
        known += (known.empty() ? "\"" : ", \"") + withVisibleControlCharacters(display.name) + "\"";
    throw Failure(Status::NoDevice, "there is no display \"" + withVisibleControlCharacters(name) + "\"; " +
                                        (known.empty() ? "no display is known yet: connect one and start its driver"
                                                       : "known displays: " + known));
}

bool isPerhapsShown(const std::string& name) {
    const auto chosen = contentsOf(getUilitiesFilePath()).objectForKey(keys::selectDeviceName).string();
    const std::vector<std::string> connected = connectedNames();
    const bool isChosen = chosen && std::find(connected.begin(), connected.end(), *chosen) != connected.end();
    return !isChosen || *chosen == name;
}

bool isDriverSwitchedOn() { return contentsOf(getUilitiesFilePath()).objectForKey(keys::driverEnable).boolValue(); }

NSMutableDictionary settingsOf(const std::string& name) { return contentsOf(getSettingsFilePath(name)); }

NSMutableDictionary settingsToChange(const std::string& name) {
    auto settings = settingsOf(name);
    const std::string folder = getPreferenceFolderPath();
    if (const auto reason = reasonAgainstWriting(folder)) {
        throw Failure(Status::Failure, "the folder " + shownPath(folder) + " cannot be written to (" + *reason +
                                           "); check its owner and permissions");
    }
    return settings;
}

std::string shownPath(const std::string& path) {
    const std::string home = NSFileManager::defaultManager().homeDirectory();
    const bool isInHome = path.starts_with(home + "/");
    return withVisibleControlCharacters(isInHome ? std::string("~").append(path, home.size()) : path);
}

} // namespace kelvo::touchctl
