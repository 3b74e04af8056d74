#pragma once

#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace platform {

/// The port of this process under a name that others send to. Destroying it gives the name up.
class CFMessagePort {
public:
    CFMessagePort() = default;
    CFMessagePort(const CFMessagePort&) = delete;
    CFMessagePort& operator=(const CFMessagePort&) = delete;
    virtual ~CFMessagePort();

    /// The source that delivers what arrives at the port. It may outlive the port and then delivers nothing.
    [[nodiscard]] virtual std::unique_ptr<CFRunLoopSource> createRunLoopSource() = 0;

    /// Who sent the message that is being handled, by a name that nobody else in the session has or will have; empty
    /// where that is not known.
    [[nodiscard]] virtual std::string sender() const { return {}; }
};

/// What a send came to.
enum class CFMessagePortStatus { Success, SendTimeout, ReceiveTimeout, IsInvalid, TransportError };

/// As long as each of the two waits of a send may take among the product's processes.
inline constexpr double kSendTimeoutSeconds = 1.0;
inline constexpr double kReceiveTimeoutSeconds = 1.0;

/// The port of another process, good for one send.
class CFRemoteMessagePort {
public:
    CFRemoteMessagePort() = default;
    CFRemoteMessagePort(const CFRemoteMessagePort&) = delete;
    CFRemoteMessagePort& operator=(const CFRemoteMessagePort&) = delete;
    virtual ~CFRemoteMessagePort();

    /// Sends and waits for the reply, each for so many seconds at most, running the main loop without user input. Reply
    /// data, if any, is in `reply`. A port that nobody owns is IsInvalid, at once.
    virtual CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data,
                                            double sendTimeout, double receiveTimeout, NSData& reply) = 0;
};

/// Named message ports of the user's session.
class CFMessagePorts {
public:
    /// Receives one message. The sender has had its empty reply by then: no message is answered with data.
    using CallBack =
        std::function<void(CFMessagePort& local, std::int32_t messageId, std::span<const std::uint8_t> data)>;

    CFMessagePorts() = default;
    CFMessagePorts(const CFMessagePorts&) = delete;
    CFMessagePorts& operator=(const CFMessagePorts&) = delete;
    virtual ~CFMessagePorts();

    static CFMessagePorts& current();

    /// Opens the port `name`; null when the name is taken or there is no session to open it in.
    [[nodiscard]] virtual std::unique_ptr<CFMessagePort> createLocal(const std::string& name, CallBack callBack) = 0;
    /// Looks the port `name` up; null when it is known not to exist.
    [[nodiscard]] virtual std::unique_ptr<CFRemoteMessagePort> createRemote(const std::string& name) = 0;
};

} // namespace platform
