#include "qt/Guarded.h"

#include "platform/Log.h"

#include <exception>

namespace kelvo {

void guarded(const std::function<void()>& call) noexcept {
    try {
        call();
    } catch (const std::exception& error) {
        platform::NSLog("Unexpected error: %@", error.what());
    } catch (...) {
        platform::NSLog("Unexpected error of an unknown kind");
    }
}

} // namespace kelvo
