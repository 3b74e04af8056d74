#pragma once

#include "platform/PropertyList.h"
#include "touch/Settings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// The number that a value is read as; none where there is none to read.
[[nodiscard]] std::optional<double> numberIn(const platform::Value& value);

/// What a display's settings come to, beside the display's own file: the system's switches of its gestures, which
/// system that is, and the calibrations.
struct SettingsContext {
    platform::NSMutableDictionary dockPreferences;
    platform::NSMutableDictionary globalPreferences;
    std::int32_t systemVersion = 0;
    /// What the calibration tool found, by the displays' names.
    platform::NSMutableDictionary calibrations{};
};

/// The files as they are now. A system's file that cannot be read says that all its gestures are off.
[[nodiscard]] SettingsContext currentSettingsContext();

/// As a driver has them, which makes those of the system's files that are missing.
[[nodiscard]] SettingsContext settingsContextOfDriver();

/// When each of those files was changed last; equal while nobody changes any.
[[nodiscard]] std::vector<std::optional<platform::NSDate>> settingsContextDates();

/// What the settings file of a display of that name says, as the driver understands it. What is missing there, or of a
/// kind that cannot be read as what it is meant for, is as if nobody had chosen: no right click, the usual double
/// click, the picture over all of the panel, no calibration, and every gesture of the system's catalogue.
[[nodiscard]] touch::Settings touchSettingsOf(const std::string& name, const platform::NSMutableDictionary& settings,
                                              const SettingsContext& context);

/// The panel's own resolution, if the settings file has it.
[[nodiscard]] std::optional<touch::Size> nativePixelsOf(const platform::NSMutableDictionary& settings);

} // namespace kelvo
