#pragma once

#include "platform/MessagePorts.h"

#include <optional>

namespace kelvo::touchctl {

/// The ports of another provider, which keep what became of the messages sent: the functions that send, which are the
/// pane's, tell nobody.
class ReportingPorts final : public platform::CFMessagePorts {
public:
    explicit ReportingPorts(platform::CFMessagePorts& ports) : ports_(ports) {}

    /// The first failure of a send; none when all that was sent has arrived.
    [[nodiscard]] std::optional<platform::CFMessagePortStatus> failure() const { return failure_; }

    [[nodiscard]] std::unique_ptr<platform::CFMessagePort> createLocal(const std::string& name,
                                                                       CallBack callBack) override;
    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string& name) override;

private:
    class RemotePort;

    platform::CFMessagePorts& ports_;
    std::optional<platform::CFMessagePortStatus> failure_;
};

} // namespace kelvo::touchctl
