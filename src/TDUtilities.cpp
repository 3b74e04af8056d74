#include "TDUtilities.h"

#include "TDNames.h"
#include "platform/Bundle.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"

using platform::NSFileManager;
using platform::Value;

namespace {

std::string userPreferencesFolder() {
    return NSFileManager::defaultManager().homeDirectory() + "/Library/Preferences/";
}

std::string productFolderInApplicationSupport() {
    return "/Library/Application Support/" + localizedString("PreferenceFolderName");
}

void createFolderIfMissing(const std::string& path) {
    NSFileManager& files = NSFileManager::defaultManager();
    if (!files.fileExistsAtPath(path)) files.createDirectoryAtPath(path);
}

platform::NSMutableDictionary settingsDefaults() {
    auto defaults = platform::NSMutableDictionary::dictionary();
    defaults.setObjectForKey(32, keys::doubleClickRange);
    defaults.setObjectForKey(0.5, keys::doubleClickRate);
    // Stored twice on purpose: the file ends up with a boolean, which reads as the unrotated state like the number.
    defaults.setObjectForKey(0, keys::rotateMode);
    defaults.setObjectForKey(false, keys::rotateMode);
    defaults.setObjectForKey("0.8.0.3", keys::driverVersion);
    return defaults;
}

platform::NSMutableDictionary utilitiesDefaults() {
    auto defaults = platform::NSMutableDictionary::dictionary();
    defaults.setObjectForKey(0, keys::selectedMenuItem);
    defaults.setObjectForKey(true, keys::isShowStatuMenu);
    defaults.setObjectForKey(true, keys::driverEnable);
    defaults.setObjectForKey(platform::NSMutableArray::arrayWithObjects(), keys::currentDeviceType);
    defaults.setObjectForKey(false, keys::verboseLog);
    return defaults;
}

platform::NSMutableDictionary readOrCreate(const std::string& path, platform::NSMutableDictionary (*defaults)()) {
    // Driver, pane and utility may all begin with the session: what another one has made meanwhile is to stay.
    if (!NSFileManager::defaultManager().fileExistsAtPath(path)) (void)defaults().writeToNewFileAtomically(path);
    return platform::NSMutableDictionary::dictionaryWithContentsOfFile(path);
}

/// A temporary file younger than this is still being written.
constexpr double kLockLifetimeSeconds = 15.0;

/// The first temporary file that the folder lists decides, whatever comes behind it.
bool isPreferenceFileLock(std::string_view prefix, std::string_view excludedName) {
    NSFileManager& files = NSFileManager::defaultManager();
    const std::string folder = userPreferencesFolder();
    std::optional<bool> isLocked;
    (void)files.visitDirectoryAtPath(folder, [&](std::string_view name) {
        if (name.size() <= prefix.size() || !name.starts_with(prefix) || name == excludedName) return true;
        platform::NSLog("  tempFile = %@", name);
        platform::NSLog("  return YES");
        const auto modified = files.modificationDateAtPath(folder + std::string(name));
        if (!modified) return true;
        const double age =
            platform::Clock::current().date().timeIntervalSinceReferenceDate - modified->timeIntervalSinceReferenceDate;
        isLocked = age < kLockLifetimeSeconds;
        return false;
    });
    if (isLocked) return *isLocked;
    platform::NSLog("  return NO");
    return false;
}

} // namespace

std::string localizedString(std::string_view key, std::string_view value) {
    platform::NSBundle* bundle = platform::NSBundle::bundleWithIdentifier(kPaneBundleIdentifier);
    return bundle ? bundle->localizedStringForKey(key, value) : std::string(value);
}

std::string getSettingsFileName(const std::optional<std::string>& name) {
    return "Settings_" + platform::stringWithFormat("%@.plist", {name});
}

std::string getPreferenceFolderPath() {
    std::string path = userPreferencesFolder() + localizedString("PreferenceFolderName");
    createFolderIfMissing(path);
    return path;
}

std::string getSettingsFilePath(const std::optional<std::string>& name) {
    return platform::stringByAppendingPathComponent(getPreferenceFolderPath(), getSettingsFileName(name));
}

std::string getUilitiesFilePath() {
    return platform::stringByAppendingPathComponent(getPreferenceFolderPath(), "Utilities.plist");
}

std::string getAdvanceCalibrationFilePath() {
    return platform::stringByAppendingPathComponent(getPreferenceFolderPath(), "advanceCalibrationPoints.plist");
}

std::string getGlobalPreferenceFilePath() { return userPreferencesFolder() + ".GlobalPreferences.plist"; }

std::string getDockPreferenceFilePath() { return userPreferencesFolder() + "com.apple.dock.plist"; }

std::string getSystemPreferenceFolderPath() {
    std::string path = NSFileManager::defaultManager().localLibraryDirectory() + "/Preferences/" + "KelvoTouchDisplay";
    createFolderIfMissing(path);
    return path;
}

std::string getSupportDeviceListFilePath() { return getSystemPreferenceFolderPath() + "/DeviceList.plist"; }

std::string getSupportResolutionListFilePath() {
    return getSystemPreferenceFolderPath() + "/SupportResolutionList.plist";
}

std::string utilitiesAppInStatusBarFullPath() {
    return productFolderInApplicationSupport() + "/StatusBarApp/KelvoTouchDisplaySettingUtility.app";
}

std::string calibrationToolFullPath() {
    return productFolderInApplicationSupport() + "/CalibrationTool/CalibrationTool.app";
}

platform::NSMutableDictionary readSettingItemsFromPlist(const std::string& path) {
    return readOrCreate(path, settingsDefaults);
}

platform::NSMutableDictionary readUtilitiesDictionary() {
    return readOrCreate(getUilitiesFilePath(), utilitiesDefaults);
}

bool saveSettingItemsToPlist(const platform::NSMutableDictionary& items, const std::string& path) {
    auto contents = NSFileManager::defaultManager().fileExistsAtPath(path)
                        ? platform::NSMutableDictionary::dictionaryWithContentsOfFile(path)
                        : platform::NSMutableDictionary::dictionary();
    for (const std::string& key : items.allKeys()) contents.setObjectForKey(items.objectForKey(key), key);
    return contents.writeToFileAtomically(path);
}

bool isDockPreferenceFileLock() {
    return isPreferenceFileLock("com.apple.dock.plist.", "com.apple.dock.plist.lockfile");
}

bool isSystemPreferenceFileLock() {
    return isPreferenceFileLock("com.apple.systempreferences.plist.", "com.apple.systempreferences.plist.lockfile");
}

bool isGlobalPreferenceFileLock() {
    // Without a final "." as the others have: any longer name counts.
    return isPreferenceFileLock(".GlobalPreferences.plist", ".GlobalPreferences.plist.lockfile");
}

platform::CFMessagePortStatus sendToPort(const std::string& portName, const platform::NSMutableDictionary& dictionary,
                                         std::int32_t messageId) {
    Value object = dictionary;
    const auto data = Helpers::NSDate::dataWithContentsOfDictionary(object);
    const auto remotePort = platform::CFMessagePorts::current().createRemote(portName);
    if (!remotePort || !data) return platform::CFMessagePortStatus::IsInvalid;
    platform::NSData unreadReply;
    return remotePort->sendRequest(messageId, *data, platform::kSendTimeoutSeconds, platform::kReceiveTimeoutSeconds,
                                   unreadReply);
}

void resetDeviceParameter(const platform::NSMutableDictionary& dictionary, std::int32_t messageId) {
    sendToPort(kTouchDisplayDriverPortName, dictionary, messageId);
}

void sendDisplayStateToStatusBarState(const platform::NSMutableDictionary& dictionary, std::int32_t messageId) {
    sendToPort(kStatusBarPortName, dictionary, messageId);
}

std::optional<platform::NSData> Helpers::NSDate::dataWithContentsOfDictionary(Value& object) {
    if (object.dictionary()) return platform::PropertyLists::current().createXMLData(object);
    object = Value();
    return std::nullopt;
}

platform::NSMutableDictionary
Helpers::NSMutableDictionary::dictionaryWithContentsOfData(std::span<const std::uint8_t> data) {
    return platform::PropertyLists::current().createFromXMLData(data).dictionary();
}
