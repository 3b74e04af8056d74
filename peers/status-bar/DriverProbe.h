#pragma once

#include "linux/BusConnection.h"
#include "platform/NSObject.h"
#include "platform/RunLoop.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

/// What the driver's message port does when somebody calls.
enum class DriverAnswer { NotRunning, NotAnswering, Answering };

/// Finds out whether the driver runs and answers, by the ping that whatever is on the bus answers by itself: its port
/// receives no message. Nothing waits here.
class DriverProbe : public platform::NSObject {
public:
    /// `address` is the bus to use; when it is empty, the one that the environment names.
    explicit DriverProbe(std::string address = {}) : address_(std::move(address)) {}
    ~DriverProbe() override;
    DriverProbe(const DriverProbe&) = delete;
    DriverProbe& operator=(const DriverProbe&) = delete;

    /// Calls `tell` once, within half a second. Asking again before that takes the place of the first time.
    void ask(std::function<void(DriverAnswer)> tell);

private:
    struct SlotReleaser {
        void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
    };

    static int onReply(sd_bus_message* reply, void* probe, sd_bus_error* error) noexcept;

    [[nodiscard]] bool call();
    void tellWhenKnown();
    void finish(DriverAnswer answer);
    void forget();

    std::string address_;
    std::function<void(DriverAnswer)> tell_;
    std::shared_ptr<BusConnection> connection_;
    std::unique_ptr<sd_bus_slot, SlotReleaser> slot_;
    std::shared_ptr<platform::NSTimer> deadline_;
    std::optional<DriverAnswer> answer_;
};

} // namespace kelvo
