#include "platform/Guarded.h"

#include "platform/Log.h"

#include <exception>

namespace platform {

void guarded(const std::function<void()>& call) noexcept {
    try {
        call();
    } catch (const std::exception& error) {
        NSLog("Unexpected error: %@", error.what());
    } catch (...) {
        NSLog("Unexpected error of an unknown kind");
    }
}

} // namespace platform
