#pragma once

#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo {

/// The double click and the scrolling that a desktop on Wayland has in its own settings: GNOME's and those of its
/// relatives, KDE's and sway's, as the environment names them; null for others. It has no monitors. `changed` is called
/// after each change, the first answer included; it may not destroy the watch. The loop outlives it.
[[nodiscard]] std::unique_ptr<touch::DesktopWatch> openDesktopSettings(platform::CFRunLoop& loop,
                                                                       std::function<void()> changed);

/// What KDE's files say: "kdeglobals" of the double click, and "kcminputrc" of touchpads.
[[nodiscard]] touch::Surroundings settingsInKdeFiles(std::string_view globals, std::string_view input);

} // namespace kelvo
