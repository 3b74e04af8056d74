#include "peers/touchctl/ReportingPorts.h"

#include <utility>

namespace kelvo::touchctl {

using platform::CFMessagePortStatus;

class ReportingPorts::RemotePort final : public platform::CFRemoteMessagePort {
public:
    RemotePort(ReportingPorts& report, std::unique_ptr<platform::CFRemoteMessagePort> port)
        : report_(report), port_(std::move(port)) {}

    CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data, double sendTimeout,
                                    double receiveTimeout, platform::NSData& reply) override {
        const CFMessagePortStatus status = port_->sendRequest(messageId, data, sendTimeout, receiveTimeout, reply);
        if (status != CFMessagePortStatus::Success && !report_.failure_) report_.failure_ = status;
        return status;
    }

private:
    ReportingPorts& report_;
    std::unique_ptr<platform::CFRemoteMessagePort> port_;
};

std::unique_ptr<platform::CFMessagePort> ReportingPorts::createLocal(const std::string& name, CallBack callBack) {
    return ports_.createLocal(name, std::move(callBack));
}

std::unique_ptr<platform::CFRemoteMessagePort> ReportingPorts::createRemote(const std::string& name) {
    auto port = ports_.createRemote(name);
    if (!port) {
        if (!failure_) failure_ = CFMessagePortStatus::IsInvalid;
        return nullptr;
    }
    return std::make_unique<RemotePort>(*this, std::move(port));
}

} // namespace kelvo::touchctl
