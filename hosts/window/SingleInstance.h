#pragma once

#include "platform/MessagePorts.h"
#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <string>

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

    /// `whenStartedAgain` is called on the first start for each later one, with the token by which the desktop lets
    /// that one come to the front, if it has one. Everything given must outlive this object.
    SingleInstance(platform::CFMessagePorts& ports, platform::CFRunLoop& runLoop,
                   std::function<void(const std::string& token)> whenStartedAgain);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Takes the port, or tells whoever has it and passes on the token that this start has; waits 2 seconds at most for
    /// the answer.
    [[nodiscard]] Outcome claim(const std::string& token);

private:
    [[nodiscard]] Outcome tellOther(const std::string& token);

    platform::CFMessagePorts& ports_;
    platform::CFRunLoop& runLoop_;
    std::function<void(const std::string& token)> whenStartedAgain_;
    std::unique_ptr<platform::CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
};

} // namespace kelvo
