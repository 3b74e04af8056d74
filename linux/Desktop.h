#pragma once

#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <functional>
#include <memory>

namespace kelvo {

/// The desktop that the environment names: that on Wayland, even where its compositor runs an X server for older
/// programs, else that on X11. Null where neither answers. `changed` and the loop are as either of them wants.
[[nodiscard]] std::unique_ptr<touch::DesktopWatch> openDesktop(platform::CFRunLoop& loop,
                                                               std::function<void()> changed);

} // namespace kelvo
