#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>

namespace kelvo {

struct MessageReleaser {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, MessageReleaser>;

/// Whether a call failed because nobody has the name it went to.
[[nodiscard]] bool isNameAbsent(const sd_bus_error& error);

/// A name on the bus with one object behind it, on a connection of its own. A bus that went away is found again and the
/// name got back, for as long as this lives.
class BusService : public std::enable_shared_from_this<BusService> {
public:
    /// What there is to be had, and who answers.
    struct Offer {
        std::string busName;
        const char* objectPath;
        const char* interface;
        const sd_bus_vtable* vtable;
        /// Given to the functions of `vtable`; outlives the service.
        void* userData;
        /// Called after the bus has been served, never from within sd-bus. May be empty.
        std::function<void()> processed;
    };

    BusService(platform::CFRunLoop& loop, std::string address, Offer offer);
    ~BusService();
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    /// Whether the name was got, within two seconds in which the loop runs. Only then is it kept.
    [[nodiscard]] bool open();
    /// Gives the name up.
    void close();
    /// Sends what has been queued. Not to be called from a callback of sd-bus.
    void process();
    /// The connection for signals and calls of one's own; null while there is none. What hangs on it goes with it.
    [[nodiscard]] sd_bus* bus() const { return isConnected() ? connection_->bus() : nullptr; }

private:
    enum class NameState { Requested, Owned, Refused };

    static int onNameAnswer(sd_bus_message* answer, void* userData, sd_bus_error* error) noexcept;

    void connect();
    [[nodiscard]] bool requestName();
    [[nodiscard]] bool isConnected() const { return connection_ && connection_->isOpen(); }
    [[nodiscard]] bool hasName() const { return isConnected() && nameState_ == NameState::Owned; }
    [[nodiscard]] bool hasFailed() const { return !isConnected() || nameState_ == NameState::Refused; }
    void afterProcessing();
    void keepName();

    platform::CFRunLoop& loop_;
    std::string address_;
    Offer offer_;
    std::shared_ptr<BusConnection> connection_;
    NameState nameState_ = NameState::Refused;
    bool isKept_ = false;
    double retryInterval_;
    std::shared_ptr<platform::NSTimer> retry_;
};

} // namespace kelvo
