#include "hosts/window/SingleInstance.h"

#include <utility>

namespace kelvo {

namespace {

constexpr char kWindowPortName[] = "WindowMessagePort";
/// Asks the window to come to the front; there is no payload.
constexpr std::int32_t kMessageIDForComingToFront = 1;

} // namespace

SingleInstance::SingleInstance(platform::CFMessagePorts& ports, platform::CFRunLoop& runLoop,
                               std::function<void()> whenStartedAgain)
    : ports_(ports), runLoop_(runLoop), whenStartedAgain_(std::move(whenStartedAgain)) {}

SingleInstance::~SingleInstance() {
    if (source_) runLoop_.removeSource(*source_);
}

SingleInstance::Outcome SingleInstance::claim() {
    port_ = ports_.createLocal(kWindowPortName, [this](platform::CFMessagePort&, std::int32_t messageId, auto) {
        if (messageId == kMessageIDForComingToFront) whenStartedAgain_();
    });
    if (!port_) return tellOther();
    source_ = port_->createRunLoopSource();
    runLoop_.addSource(*source_);
    return Outcome::IsFirst;
}

SingleInstance::Outcome SingleInstance::tellOther() {
    const auto other = ports_.createRemote(kWindowPortName);
    if (!other) return Outcome::IsFirst;
    platform::NSData reply;
    switch (other->sendRequest(kMessageIDForComingToFront, {}, platform::kSendTimeoutSeconds,
                               platform::kReceiveTimeoutSeconds, reply)) {
    case platform::CFMessagePortStatus::Success:
        return Outcome::OtherWasTold;
    case platform::CFMessagePortStatus::SendTimeout:
    case platform::CFMessagePortStatus::ReceiveTimeout:
        return Outcome::OtherIsHung;
    case platform::CFMessagePortStatus::IsInvalid:
    case platform::CFMessagePortStatus::TransportError:
        break;
    }
    return Outcome::IsFirst;
}

} // namespace kelvo
