#pragma once

#include "platform/MessagePorts.h"
#include "platform/RunLoop.h"

#include <functional>
#include <memory>

namespace kelvo {

/// Lets one window of the program be open per session: the first start owns a message port, and a later one asks there
/// for the first to come to the front.
class SingleInstance {
public:
    enum class Outcome {
        /// This start is the only one, or nobody can know for want of a session bus.
        IsFirst,
        /// Another start comes to the front instead.
        OtherWasTold,
        /// Another start owns the port but does not answer.
        OtherIsHung,
    };

    /// `whenStartedAgain` is called on the first start for each later one. Everything given must outlive this object.
    SingleInstance(platform::CFMessagePorts& ports, platform::CFRunLoop& runLoop,
                   std::function<void()> whenStartedAgain);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Takes the port, or tells whoever has it; waits 2 seconds at most for the answer.
    [[nodiscard]] Outcome claim();

private:
    [[nodiscard]] Outcome tellOther();

    platform::CFMessagePorts& ports_;
    platform::CFRunLoop& runLoop_;
    std::function<void()> whenStartedAgain_;
    std::unique_ptr<platform::CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
};

} // namespace kelvo
