#include "support/MemoryPorts.h"

#include <utility>

namespace support {

using platform::CFMessagePortStatus;

struct MemoryPorts::Port {
    CallBack callBack;
    platform::CFMessagePort* handle = nullptr;
    bool scheduled = false;
};

class MemoryPorts::Source : public platform::CFRunLoopSource {
public:
    explicit Source(std::shared_ptr<Port> port) : port_(std::move(port)) {}
    ~Source() override { port_->scheduled = false; }
    void schedule(platform::CFRunLoop& /*loop*/) override { port_->scheduled = true; }
    void cancel() override { port_->scheduled = false; }

private:
    std::shared_ptr<Port> port_;
};

class MemoryPorts::LocalPort : public platform::CFMessagePort {
public:
    explicit LocalPort(std::shared_ptr<Port> port) : port_(std::move(port)) { port_->handle = this; }
    ~LocalPort() override { port_->handle = nullptr; }
    [[nodiscard]] std::unique_ptr<platform::CFRunLoopSource> createRunLoopSource() override {
        return std::make_unique<Source>(port_);
    }

private:
    std::shared_ptr<Port> port_;
};

class MemoryPorts::RemotePort : public platform::CFRemoteMessagePort {
public:
    RemotePort(MemoryPorts& ports, std::string name) : ports_(ports), name_(std::move(name)) {}

    CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data, double sendTimeout,
                                    double receiveTimeout, platform::NSData& reply) override {
        const auto peer = ports_.peers.find(name_);
        if (peer == ports_.peers.end()) return CFMessagePortStatus::IsInvalid;
        const ReceivedMessage message{name_, messageId,
                                      platform::PropertyLists::current().createFromXMLData(data).dictionary(),
                                      sendTimeout, receiveTimeout};
        ports_.received.push_back(message);
        if (ports_.duringSend) ports_.duringSend(message);
        // Whoever answers takes a moment to, in which other things happen.
        const Peer behaviour = peer->second;
        const double wait = behaviour == Peer::Hung ? receiveTimeout : behaviour == Peer::Slow ? 0.5 : 0.0;
        ports_.runLoop_.runUntil([] { return false; }, wait);
        if (behaviour == Peer::Hung) return CFMessagePortStatus::ReceiveTimeout;
        if (behaviour == Peer::AnswersWithData) reply = {1, 2, 3};
        return CFMessagePortStatus::Success;
    }

private:
    MemoryPorts& ports_;
    std::string name_;
};

bool MemoryPorts::isListening(const std::string& name) const {
    const auto entry = ports_.find(name);
    const auto port = entry == ports_.end() ? nullptr : entry->second.lock();
    return port && port->handle && port->scheduled;
}

void MemoryPorts::deliver(const std::string& name, std::int32_t id, const platform::NSData& data) {
    if (!isListening(name)) return;
    const std::shared_ptr<Port> port = ports_.at(name).lock();
    port->callBack(*port->handle, id, data);
}

void MemoryPorts::deliver(const std::string& name, std::int32_t id, const platform::NSMutableDictionary& payload) {
    deliver(name, id, platform::PropertyLists::current().createXMLData(payload).value());
}

std::unique_ptr<platform::CFMessagePort> MemoryPorts::createLocal(const std::string& name, CallBack callBack) {
    const auto open = ports_.find(name);
    const auto existing = open == ports_.end() ? nullptr : open->second.lock();
    if (takenNames.contains(name) || (existing && existing->handle)) return nullptr;
    ++opened;
    if (duringOpening) duringOpening();
    auto port = std::make_shared<Port>();
    port->callBack = std::move(callBack);
    ports_[name] = port;
    return std::make_unique<LocalPort>(std::move(port));
}

std::unique_ptr<platform::CFRemoteMessagePort> MemoryPorts::createRemote(const std::string& name) {
    lookUps.push_back(name);
    if (!peers.contains(name)) return nullptr;
    return std::make_unique<RemotePort>(*this, name);
}

} // namespace support
