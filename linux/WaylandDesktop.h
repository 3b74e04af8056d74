#pragma once

#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <functional>
#include <memory>

namespace kelvo {

/// A desktop on Wayland: its monitors, to which it maps and turns touches itself, and its own settings where those are
/// known of. Null where the environment names no
/// compositor that answers. `changed` is called after each change; it may not destroy the watch. The loop outlives it.
/// A compositor that ends leaves what was known last.
[[nodiscard]] std::unique_ptr<touch::DesktopWatch> openWaylandDesktop(platform::CFRunLoop& loop,
                                                                      std::function<void()> changed);

} // namespace kelvo
