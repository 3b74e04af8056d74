#pragma once

#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <functional>
#include <memory>

namespace kelvo {

/// A desktop on X11: its monitors, its double click, and which touchpads scroll naturally. Null where the environment
/// names no X server that answers. `changed` is called after each change; it may not destroy the watch. The loop
/// outlives it. A server that ends leaves what was known last.
[[nodiscard]] std::unique_ptr<touch::DesktopWatch> openX11Desktop(platform::CFRunLoop& loop,
                                                                  std::function<void()> changed);

} // namespace kelvo
