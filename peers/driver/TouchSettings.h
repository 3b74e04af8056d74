#pragma once

#include "platform/PropertyList.h"
#include "touch/Settings.h"

#include <cstdint>
#include <optional>

namespace kelvo {

/// What a display's settings come to, beside the display's own file: the system's switches of its gestures, and which
/// system that is.
struct SettingsContext {
    platform::NSMutableDictionary dockPreferences;
    platform::NSMutableDictionary globalPreferences;
    std::int32_t systemVersion = 0;
};

/// The system's files as they are now. A file that cannot be read says that all its gestures are off.
[[nodiscard]] SettingsContext currentSettingsContext();

/// What a settings file says, as the driver understands it. What is missing there, or of a kind that cannot be read as
/// what it is meant for, is as if nobody had chosen: no right click, the usual double click, the picture over all of
/// the panel, and every gesture of the system's catalogue.
[[nodiscard]] touch::Settings touchSettingsOf(const platform::NSMutableDictionary& settings,
                                              const SettingsContext& context);

/// The panel's own resolution, if the settings file has it.
[[nodiscard]] std::optional<touch::Size> nativePixelsOf(const platform::NSMutableDictionary& settings);

} // namespace kelvo
