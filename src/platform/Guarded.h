#pragma once

#include <functional>

namespace platform {

/// Runs `call` on behalf of the toolkit, whose callbacks no exception may leave: one is logged and ends here.
void guarded(const std::function<void()>& call) noexcept;

} // namespace platform
