#pragma once

#include "linux/BusConnection.h"
#include "linux/BusMessagePorts.h"
#include "platform/NSObject.h"
#include "platform/RunLoop.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

/// What a message port does when somebody calls.
enum class PortAnswer { NotRunning, NotAnswering, Answering };

/// Finds out whether the owner of a message port runs and answers, by the ping that whatever is on the bus answers by
/// itself: the port receives no message. Nothing waits here.
class PortProbe : public platform::NSObject {
public:
    /// `address` is the bus to use; when it is empty, the one that the environment names.
    explicit PortProbe(const std::string& port, std::string address = {})
        : busName_(kBusNamePrefix + port), address_(std::move(address)) {}
    ~PortProbe() override;
    PortProbe(const PortProbe&) = delete;
    PortProbe& operator=(const PortProbe&) = delete;

    /// Calls `tell` once, within half a second. Asking again before that takes the place of the first time.
    void ask(std::function<void(PortAnswer)> tell);

private:
    static int onReply(sd_bus_message* reply, void* probe, sd_bus_error* error) noexcept;

    [[nodiscard]] bool call();
    void tellWhenKnown();
    void finish(PortAnswer answer);
    void forget();

    std::string busName_;
    std::string address_;
    std::function<void(PortAnswer)> tell_;
    std::shared_ptr<BusConnection> connection_;
    BusSlot slot_;
    std::shared_ptr<platform::NSTimer> deadline_;
    std::optional<PortAnswer> answer_;
};

} // namespace kelvo
