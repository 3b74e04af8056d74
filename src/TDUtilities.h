#pragma once

#include "platform/MessagePorts.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The text of `key` in the pane bundle's strings; `value` where it has no entry or the bundle is not to be found.
[[nodiscard]] std::string localizedString(std::string_view key, std::string_view value = "");

/// "Settings_", the model name and ".plist". A "/" in the name is not escaped; a missing name reads "(null)".
[[nodiscard]] std::string getSettingsFileName(const std::optional<std::string>& name);
/// The pane's folder in the user's preferences, created when missing.
[[nodiscard]] std::string getPreferenceFolderPath();
/// The settings file of a device model.
[[nodiscard]] std::string getSettingsFilePath(const std::optional<std::string>& name);
/// The pane-wide utilities file.
[[nodiscard]] std::string getUilitiesFilePath();
/// The calibration tool's points.
[[nodiscard]] std::string getAdvanceCalibrationFilePath();
/// The system's global preferences, which are only ever read.
[[nodiscard]] std::string getGlobalPreferenceFilePath();
/// The system's dock preferences, which are only ever read.
[[nodiscard]] std::string getDockPreferenceFilePath();
/// The product's folder in the machine-wide Library, created when missing.
[[nodiscard]] std::string getSystemPreferenceFolderPath();
/// The list of supported devices, of the product's other components.
[[nodiscard]] std::string getSupportDeviceListFilePath();
/// The list of supported resolutions, of the product's other components.
[[nodiscard]] std::string getSupportResolutionListFilePath();

/// Where the status-bar utility is installed.
[[nodiscard]] std::string utilitiesAppInStatusBarFullPath();
/// Where the calibration tool is installed.
[[nodiscard]] std::string calibrationToolFullPath();

/// The settings file at `path`, which is first created with a device's defaults where nothing exists. Nil when it
/// cannot be read; a damaged file is left as it is.
[[nodiscard]] platform::NSMutableDictionary readSettingItemsFromPlist(const std::string& path);
/// The utilities file, which is first created with its defaults where nothing exists. Nil when it cannot be read.
[[nodiscard]] platform::NSMutableDictionary readUtilitiesDictionary();
/// Merges the keys of `items` into the file at `path`: values replace old ones whole, other keys stay. False when
/// nothing was written; a file that cannot be read is never overwritten.
bool saveSettingItemsToPlist(const platform::NSMutableDictionary& items, const std::string& path);

// Whether the system is writing one of its preference files right now: a temporary file beside it, named after it, was
// modified less than 15 seconds ago. Only a hint, since the writing may begin after the answer. Each logs what it
// found.

[[nodiscard]] bool isDockPreferenceFileLock();
[[nodiscard]] bool isSystemPreferenceFileLock();
[[nodiscard]] bool isGlobalPreferenceFileLock();

/// Sends a message to the port of another process and waits for its answer, for at most two seconds. What became of it
/// is only told here: the settings go out whether or not somebody is there to take them.
platform::CFMessagePortStatus sendToPort(const std::string& portName, const platform::NSMutableDictionary& dictionary,
                                         std::int32_t messageId);
/// Sends a change to the driver.
void resetDeviceParameter(const platform::NSMutableDictionary& dictionary, std::int32_t messageId);
/// Sends to the status-bar utility.
void sendDisplayStateToStatusBarState(const platform::NSMutableDictionary& dictionary, std::int32_t messageId);

/// The additions to the platform's classes.
namespace Helpers {

struct NSDate {
    /// The XML property list of a dictionary; none for anything else. A foreign object is taken from the caller all the
    /// same: its handle is emptied, as one reference too many was always given up here.
    [[nodiscard]] static std::optional<platform::NSData> dataWithContentsOfDictionary(platform::Value& object);
};

struct NSMutableDictionary {
    /// The dictionary that is the root of an XML property list; nil for any other data.
    [[nodiscard]] static platform::NSMutableDictionary dictionaryWithContentsOfData(std::span<const std::uint8_t> data);
};

} // namespace Helpers
