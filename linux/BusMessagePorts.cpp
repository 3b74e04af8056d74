#include "linux/BusMessagePorts.h"

#include "linux/BusConnection.h"
#include "linux/BusService.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

namespace kelvo {

using platform::CFMessagePortStatus;
using platform::CFRunLoop;
using platform::NSData;

namespace {

/// A port whose messages nobody handles refuses more than this, to limit its queue.
constexpr std::size_t kLongestQueue = 4096;

/// The byte array that comes next in `message`; negative if it is something else. Throws if memory runs out.
int readData(sd_bus_message* message, NSData& data) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    const int result = sd_bus_message_read_array(message, 'y', &bytes, &size);
    if (result < 0) return result;
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    data.assign(first, first + size);
    return 0;
}

/// The call that delivers a message to the owner of `destination`; null if the bus cannot deliver it.
BusMessage newSendCall(sd_bus* bus, const std::string& destination, std::int32_t messageId,
                       std::span<const std::uint8_t> data) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(bus, &created, destination.c_str(), kPortPath, kPortInterface, kSendMethod) < 0)
        return nullptr;
    BusMessage call(created);
    // A port that nobody has opened is absent; the bus must not start a program for it.
    if (sd_bus_message_set_auto_start(created, 0) < 0) return nullptr;
    if (sd_bus_message_append(created, "i", messageId) < 0) return nullptr;
    if (sd_bus_message_append_array(created, 'y', data.data(), data.size()) < 0) return nullptr;
    return call;
}

/// The answer of the bus to one call.
struct Answer {
    bool hasArrived = false;
    CFMessagePortStatus status = CFMessagePortStatus::TransportError;
    NSData data;
};

void readAnswer(sd_bus_message* reply, Answer& answer) {
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    if (!error) {
        if (readData(reply, answer.data) >= 0) answer.status = CFMessagePortStatus::Success;
    } else if (isNameAbsent(*error)) {
        answer.status = CFMessagePortStatus::IsInvalid;
    }
}

int onAnswer(sd_bus_message* reply, void* userData, sd_bus_error*) noexcept {
    auto& answer = *static_cast<Answer*>(userData);
    answer.hasArrived = true;
    try {
        readAnswer(reply, answer);
    } catch (...) {
        answer.status = CFMessagePortStatus::TransportError;
    }
    return 0;
}

} // namespace

/// Sends for all remote ports over one connection, which the first message opens. It is not used for receiving, so that
/// a handler can send while its own message is being handled.
class BusSender {
public:
    BusSender(CFRunLoop& loop, std::string address) : loop_(loop), address_(std::move(address)) {}

    CFMessagePortStatus send(const std::string& name, std::int32_t messageId, std::span<const std::uint8_t> data,
                             double sendTimeout, double receiveTimeout, NSData& reply);

private:
    /// The connection, a new one if the last one was lost; null if there is no bus.
    std::shared_ptr<BusConnection> connection();

    CFRunLoop& loop_;
    std::string address_;
    std::shared_ptr<BusConnection> connection_;
};

std::shared_ptr<BusConnection> BusSender::connection() {
    // The loss of the bus since the last message is detected only when it is processed.
    if (connection_) connection_->process();
    if (!connection_ || !connection_->isOpen()) connection_ = BusConnection::open(loop_, address_);
    return connection_;
}

CFMessagePortStatus BusSender::send(const std::string& name, std::int32_t messageId, std::span<const std::uint8_t> data,
                                    double sendTimeout, double receiveTimeout, NSData& reply) {
    const std::string destination = kBusNamePrefix + name;
    if (sd_bus_service_name_is_valid(destination.c_str()) <= 0) return CFMessagePortStatus::IsInvalid;
    // The waits can deliver anything, including another send, which may close this connection but not destroy it.
    const auto connection = this->connection();
    if (!connection) return CFMessagePortStatus::TransportError;
    const BusMessage call = newSendCall(connection->bus(), destination, messageId, data);
    if (!call) return CFMessagePortStatus::TransportError;

    Answer answer;
    sd_bus_slot* created = nullptr;
    if (sd_bus_call_async(connection->bus(), &created, call.get(), onAnswer, &answer, kNoTimeout) < 0)
        return CFMessagePortStatus::TransportError;
    // Without its slot, a late answer is ignored.
    const BusSlot slot(created);
    connection->process();

    const auto hasEnded = [&] { return answer.hasArrived || !connection->isOpen(); };
    loop_.runUntil([&] { return hasEnded() || connection->hasSentEverything(); }, sendTimeout);
    if (!hasEnded() && !connection->hasSentEverything()) {
        // A queued message must not reach the peer after its sender has given up.
        connection->close();
        return CFMessagePortStatus::SendTimeout;
    }
    loop_.runUntil(hasEnded, receiveTimeout);
    if (answer.hasArrived) {
        reply = std::move(answer.data);
        return answer.status;
    }
    return connection->isOpen() ? CFMessagePortStatus::ReceiveTimeout : CFMessagePortStatus::TransportError;
}

namespace {

class RemotePort : public platform::CFRemoteMessagePort {
public:
    RemotePort(std::shared_ptr<BusSender> sender, std::string name)
        : sender_(std::move(sender)), name_(std::move(name)) {}

    CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data, double sendTimeout,
                                    double receiveTimeout, NSData& reply) override {
        // A message that arrives during the wait may destroy this port.
        const auto sender = sender_;
        return sender->send(name_, messageId, data, sendTimeout, receiveTimeout, reply);
    }

private:
    std::shared_ptr<BusSender> sender_;
    std::string name_;
};

/// Shared by a local port, its source and the bus: the service that owns the port's name, and the received messages.
/// It stays alive while a message is being handled, even if the handler destroys the port.
class Mailbox : public std::enable_shared_from_this<Mailbox> {
public:
    Mailbox(CFRunLoop& loop, std::string address, const std::string& name, platform::CFMessagePorts::CallBack callBack)
        : callBack_(std::move(callBack)),
          service_(std::make_shared<BusService>(
              loop, std::move(address),
              BusService::Offer{kBusNamePrefix + name, kPortPath, kPortInterface, vtable, this, {}})) {}

    /// Whether the name was acquired.
    [[nodiscard]] bool open() { return service_->open(); }
    /// From now on, messages go to `port`.
    void attach(platform::CFMessagePort& port) { port_ = &port; }
    /// The sender of the message that is being handled.
    [[nodiscard]] const std::string& sender() const { return sender_; }
    /// Releases the name and discards all messages.
    void close();

    void startDelivery(const platform::CFRunLoopSource& source, CFRunLoop& loop);
    /// Ends delivery, unless another source has taken it over since.
    void stopDelivery(const platform::CFRunLoopSource& source);

private:
    struct Message {
        std::int32_t id = 0;
        NSData data;
        std::string sender;
    };

    static const sd_bus_vtable vtable[];
    static int onSend(sd_bus_message* call, void* userData, sd_bus_error* error) noexcept;

    int receive(sd_bus_message* call);
    void deliverSoon();
    void deliver();

    platform::CFMessagePorts::CallBack callBack_;
    platform::CFMessagePort* port_ = nullptr;
    std::shared_ptr<BusService> service_;

    std::deque<Message> queue_;
    std::string sender_;
    const platform::CFRunLoopSource* source_ = nullptr;
    CFRunLoop* deliveryLoop_ = nullptr;
    std::shared_ptr<platform::NSTimer> delivery_;
};

// Finding out the user of the sender would take another call. There is no need: a session bus admits only its own
// user, so the method is open to everyone on the bus.
const sd_bus_vtable Mailbox::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD(kSendMethod, kSendSignature, kReplySignature, Mailbox::onSend, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

void Mailbox::close() {
    port_ = nullptr;
    if (delivery_) delivery_->invalidate();
    service_->close();
    queue_.clear();
}

int Mailbox::onSend(sd_bus_message* call, void* userData, sd_bus_error*) noexcept {
    try {
        return static_cast<Mailbox*>(userData)->receive(call);
    } catch (...) {
        return -ENOMEM;
    }
}

/// Answers the sender, with an error if negative, and handles the message later: sd-bus, which calls this, could not
/// receive in a loop that the handler runs.
int Mailbox::receive(sd_bus_message* call) {
    if (queue_.size() >= kLongestQueue) return -ENOBUFS;
    Message message;
    int result = sd_bus_message_read(call, "i", &message.id);
    if (result >= 0) result = readData(call, message.data);
    if (result >= 0) result = sd_bus_reply_method_return(call, kReplySignature, 0);
    if (result < 0) return result;
    if (const char* sender = sd_bus_message_get_sender(call)) message.sender = sender;
    queue_.push_back(std::move(message));
    deliverSoon();
    return 1;
}

void Mailbox::startDelivery(const platform::CFRunLoopSource& source, CFRunLoop& loop) {
    source_ = &source;
    deliveryLoop_ = &loop;
    deliverSoon();
}

void Mailbox::stopDelivery(const platform::CFRunLoopSource& source) {
    if (source_ != &source) return;
    source_ = nullptr;
    if (delivery_) delivery_->invalidate();
    delivery_.reset();
}

void Mailbox::deliverSoon() {
    if (!source_ || queue_.empty() || delivery_) return;
    delivery_ = deliveryLoop_->scheduleTimer(0.0, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->deliver();
    });
}

/// The handler can do anything: destroy the port or the source, or run the loop, which then delivers the next message.
void Mailbox::deliver() {
    delivery_.reset();
    while (port_ && source_ && !queue_.empty()) {
        const Message message = std::move(queue_.front());
        queue_.pop_front();
        deliverSoon();
        // A message can be handled while another is being handled.
        const std::string senderBefore = std::exchange(sender_, message.sender);
        callBack_(*port_, message.id, message.data);
        sender_ = senderBefore;
    }
}

class MailboxSource final : public platform::CFRunLoopSource {
public:
    explicit MailboxSource(std::weak_ptr<Mailbox> mailbox) : mailbox_(std::move(mailbox)) {}
    MailboxSource(const MailboxSource&) = delete;
    MailboxSource& operator=(const MailboxSource&) = delete;
    ~MailboxSource() override { cancel(); }

    void schedule(CFRunLoop& loop) override {
        if (const auto mailbox = mailbox_.lock()) mailbox->startDelivery(*this, loop);
    }

    void cancel() override {
        if (const auto mailbox = mailbox_.lock()) mailbox->stopDelivery(*this);
    }

private:
    std::weak_ptr<Mailbox> mailbox_;
};

class LocalPort : public platform::CFMessagePort {
public:
    explicit LocalPort(std::shared_ptr<Mailbox> mailbox) : mailbox_(std::move(mailbox)) { mailbox_->attach(*this); }
    LocalPort(const LocalPort&) = delete;
    LocalPort& operator=(const LocalPort&) = delete;
    ~LocalPort() override { mailbox_->close(); }

    std::unique_ptr<platform::CFRunLoopSource> createRunLoopSource() override {
        return std::make_unique<MailboxSource>(mailbox_);
    }
    [[nodiscard]] std::string sender() const override { return mailbox_->sender(); }

private:
    std::shared_ptr<Mailbox> mailbox_;
};

} // namespace

BusMessagePorts::BusMessagePorts(CFRunLoop& loop, std::string address)
    : loop_(loop), address_(address), sender_(std::make_shared<BusSender>(loop, std::move(address))) {}

std::unique_ptr<platform::CFMessagePort> BusMessagePorts::createLocal(const std::string& name, CallBack callBack) {
    auto mailbox = std::make_shared<Mailbox>(loop_, address_, name, std::move(callBack));
    if (!mailbox->open()) return nullptr;
    return std::make_unique<LocalPort>(std::move(mailbox));
}

std::unique_ptr<platform::CFRemoteMessagePort> BusMessagePorts::createRemote(const std::string& name) {
    return std::make_unique<RemotePort>(sender_, name);
}

} // namespace kelvo
