#pragma once

#include "platform/MessagePorts.h"
#include "platform/RunLoop.h"

#include <memory>
#include <string>

namespace kelvo {

/// What a message port looks like on the bus: the port P owns the name `kBusNamePrefix` + P and answers
/// `kSendMethod` (`kSendSignature` → `kReplySignature`) of `kPortInterface` at `kPortPath`. The arguments are the
/// message's id and its data; an empty reply means none.
inline constexpr const char* kBusNamePrefix = "com.kelvo.TouchDisplay.";
inline constexpr const char* kPortPath = "/com/kelvo/TouchDisplay/MessagePort";
inline constexpr const char* kPortInterface = "com.kelvo.TouchDisplay.MessagePort";
inline constexpr const char* kSendMethod = "Send";
inline constexpr const char* kSendSignature = "iay";
inline constexpr const char* kReplySignature = "ay";

class BusSender;

/// Message ports over the user's session bus, which admits the same user alone. They may outlive this object, but not
/// the run loop.
class BusMessagePorts : public platform::CFMessagePorts {
public:
    /// `address` is the bus to use; when it is empty, the one that the environment names at the time of each connect.
    explicit BusMessagePorts(platform::CFRunLoop& loop, std::string address = {});

    /// Waits at most 2 s for the bus. A port whose bus goes away finds it again by itself and keeps its messages.
    [[nodiscard]] std::unique_ptr<platform::CFMessagePort> createLocal(const std::string& name,
                                                                       CallBack callBack) override;
    /// Never null: the bus is asked for the name with each message.
    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string& name) override;

private:
    platform::CFRunLoop& loop_;
    std::string address_;
    std::shared_ptr<BusSender> sender_;
};

} // namespace kelvo
