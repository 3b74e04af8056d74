#pragma once

#include "platform/RunLoop.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace kelvo {

/// Drops what is still queued; flushing it could wait for a bus that hangs.
struct BusCloser {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

struct SlotReleaser {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
/// What was asked of the bus and is still to be told; letting go of it calls it off.
using BusSlot = std::unique_ptr<sd_bus_slot, SlotReleaser>;

/// For a call whose deadline is the caller's own: the library's would not begin before the bus has accepted the
/// connection.
inline constexpr auto kNoTimeout = std::numeric_limits<std::uint64_t>::max();

/// One connection to the message bus, driven by the run loop. Nothing here waits: connecting, authentication and all
/// traffic go on while the loop runs. A connection that was lost stays closed; its owner opens another.
class BusConnection : public std::enable_shared_from_this<BusConnection> {
    struct Passkey {};

public:
    /// Starts to connect to the bus at `address`, or where the environment says the user's session bus is when that is
    /// empty. Null when there is none. `processed`, if any, is called after the bus has been served, the loss of the
    /// connection included, and never from within sd-bus: it may open and close connections as it likes.
    [[nodiscard]] static std::shared_ptr<BusConnection> open(platform::CFRunLoop& loop, const std::string& address,
                                                             std::function<void()> processed = {});

    BusConnection(Passkey, platform::CFRunLoop& loop, Bus bus, std::function<void()> processed);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    /// The connection for calls to sd-bus; null once it is closed. Whoever has queued something calls process().
    [[nodiscard]] sd_bus* bus() const { return bus_.get(); }
    /// False as soon as the bus is known to be gone, though what is told of that may be outstanding.
    [[nodiscard]] bool isOpen() const { return bus_ && sd_bus_is_open(bus_.get()) > 0; }
    /// Whether the bus has accepted this connection and taken everything that was queued.
    [[nodiscard]] bool hasSentEverything() const;

    /// Reads and writes what can be without waiting, then goes on when the loop says that more can. Not to be called
    /// from a callback of sd-bus.
    void process();
    /// Ends the connection; what was queued is never sent, what was awaited never comes.
    void close();

private:
    [[nodiscard]] std::function<void()> processLater();
    [[nodiscard]] bool awaitMore();

    platform::CFRunLoop& loop_;
    Bus bus_;
    std::function<void()> processed_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::shared_ptr<platform::NSTimer> timer_;
};

} // namespace kelvo
