#pragma once

#include "platform/MessagePorts.h"
#include "platform/PropertyList.h"
#include "support/ScriptedRunLoop.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace support {

/// A message as its receiver saw it, decoded.
struct ReceivedMessage {
    std::string port;
    std::int32_t id = 0;
    platform::NSMutableDictionary payload;
    /// How long its sender would wait, in seconds.
    double sendTimeout = 0.0;
    double receiveTimeout = 0.0;
};

/// Message ports inside the test. Peers exist by name and behave as the test says; what they receive is recorded.
class MemoryPorts : public platform::CFMessagePorts {
public:
    /// A peer that is not listed is absent. A slow one takes half a second, a hung one never answers.
    enum class Peer { Answers, AnswersWithData, Slow, Hung };

    explicit MemoryPorts(ScriptedRunLoop& runLoop) : runLoop_(runLoop) {}

    std::map<std::string, Peer> peers;
    /// Names that another process owns.
    std::set<std::string> takenNames;
    std::vector<ReceivedMessage> received;
    /// The names looked up, in order.
    std::vector<std::string> lookUps;
    /// What is looked at in the middle of each send, when the message is there and before its peer answers.
    std::function<void(const ReceivedMessage& message)> duringSend;
    /// What happens while a port is being opened.
    std::function<void()> duringOpening;
    /// How often a port was opened.
    int opened = 0;

    /// Whether this process has the port open and listens to it.
    [[nodiscard]] bool isListening(const std::string& name) const;
    /// Delivers a message to this process's port, if it listens.
    void deliver(const std::string& name, std::int32_t id, const platform::NSData& data);
    /// The same with a payload.
    void deliver(const std::string& name, std::int32_t id, const platform::NSMutableDictionary& payload);

    [[nodiscard]] std::unique_ptr<platform::CFMessagePort> createLocal(const std::string& name,
                                                                       CallBack callBack) override;
    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string& name) override;

private:
    struct Port;
    class LocalPort;
    class RemotePort;
    class Source;

    ScriptedRunLoop& runLoop_;
    std::map<std::string, std::weak_ptr<Port>> ports_;
};

} // namespace support
