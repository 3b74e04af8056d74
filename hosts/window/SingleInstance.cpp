#include "hosts/window/SingleInstance.h"

#include <utility>

namespace kelvo {

namespace {

constexpr char kWindowPortName[] = "WindowMessagePort";
/// Asks the window to come to the front; the payload is the token, as it stands.
constexpr std::int32_t kMessageIDForComingToFront = 1;

} // namespace

SingleInstance::SingleInstance(platform::CFMessagePorts& ports, platform::CFRunLoop& runLoop,
                               std::function<void(const std::string& token)> whenStartedAgain)
    : ports_(ports), runLoop_(runLoop), whenStartedAgain_(std::move(whenStartedAgain)) {}

SingleInstance::~SingleInstance() {
    if (source_) runLoop_.removeSource(*source_);
}

SingleInstance::Outcome SingleInstance::claim(const std::string& token) {
    port_ = ports_.createLocal(kWindowPortName, [this](platform::CFMessagePort&, std::int32_t messageId, auto data) {
        if (messageId == kMessageIDForComingToFront) whenStartedAgain_({data.begin(), data.end()});
    });
    if (!port_) return tellOther(token);
    source_ = port_->createRunLoopSource();
    runLoop_.addSource(*source_);
    return Outcome::IsFirst;
}

SingleInstance::Outcome SingleInstance::tellOther(const std::string& token) {
    const auto other = ports_.createRemote(kWindowPortName);
    if (!other) return Outcome::IsFirst;
    const platform::NSData data(token.begin(), token.end());
    platform::NSData reply;
    switch (other->sendRequest(kMessageIDForComingToFront, data, platform::kSendTimeoutSeconds,
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
