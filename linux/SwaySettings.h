#pragma once

#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo {

/// The scrolling of each touchpad, as sway says it at its socket; null where nobody listens there. Double clicks are
/// its windows' affair, and it has its monitors elsewhere. `changed` is called after each change, the first answer
/// included; it may not destroy the watch. The loop outlives it.
[[nodiscard]] std::unique_ptr<touch::DesktopWatch> openSwaySettings(platform::CFRunLoop& loop, const std::string& path,
                                                                    std::function<void()> changed);

/// What sway's list of inputs says, which is JSON. Nothing where that is damaged.
[[nodiscard]] touch::Surroundings settingsInSwayInputs(std::string_view inputs);

} // namespace kelvo
