#include "linux/BusConnection.h"

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <utility>

namespace kelvo {

namespace {

/// Limits the messages per turn of the loop, so that timers and painting get their share during a flood: a message can
/// make the pane rebuild its list of gestures.
constexpr int kMessagesPerTurn = 8;

/// Both ways of opening connect without waiting; sd_bus_process() completes the handshake. Null if nobody
/// listens there.
Bus startedBus(const std::string& address) {
    sd_bus* created = nullptr;
    if (address.empty()) return Bus(sd_bus_open_user(&created) >= 0 ? created : nullptr);

    if (sd_bus_new(&created) < 0) return nullptr;
    Bus bus(created);
    const bool started = sd_bus_set_address(created, address.c_str()) >= 0 && sd_bus_set_bus_client(created, 1) >= 0 &&
                         sd_bus_start(created) >= 0;
    return started ? std::move(bus) : nullptr;
}

/// `deadline` is in microseconds of the monotonic clock, which is the steady clock.
double secondsUntil(std::uint64_t deadline) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<double>(deadline) / 1e6 - std::chrono::duration<double>(now).count();
}

} // namespace

std::shared_ptr<BusConnection> BusConnection::open(platform::CFRunLoop& loop, const std::string& address,
                                                   std::function<void()> processed) {
    Bus bus = startedBus(address);
    if (!bus) return nullptr;
    sd_bus_set_exit_on_disconnect(bus.get(), 0);
    auto connection = std::make_shared<BusConnection>(Passkey{}, loop, std::move(bus), std::move(processed));
    connection->watch_ = loop.watch(sd_bus_get_fd(connection->bus()), connection->processLater());
    return connection->awaitMore() ? connection : nullptr;
}

BusConnection::BusConnection(Passkey, platform::CFRunLoop& loop, Bus bus, std::function<void()> processed)
    : loop_(loop), bus_(std::move(bus)), processed_(std::move(processed)) {}

BusConnection::~BusConnection() { close(); }

bool BusConnection::hasSentEverything() const {
    std::uint64_t queued = 0;
    return bus_ && sd_bus_is_ready(bus_.get()) > 0 && sd_bus_get_n_queued_write(bus_.get(), &queued) >= 0 &&
           queued == 0;
}

void BusConnection::process() {
    if (!bus_) return;
    // The final callback may release this connection.
    const auto self = shared_from_this();
    int progress = 1;
    for (int i = 0; progress > 0 && i < kMessagesPerTurn; ++i) progress = sd_bus_process(bus_.get(), nullptr);
    if (progress < 0 || !awaitMore()) close();
    if (processed_) processed_();
}

void BusConnection::close() {
    if (timer_) timer_->invalidate();
    timer_.reset();
    // The watch must go before its descriptor.
    watch_.reset();
    bus_.reset();
}

std::function<void()> BusConnection::processLater() {
    return [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->process();
    };
}

/// Schedules process() for when sd-bus needs it next. False if the connection is lost.
bool BusConnection::awaitMore() {
    if (timer_) timer_->invalidate();
    timer_.reset();

    const int events = sd_bus_get_events(bus_.get());
    std::uint64_t deadline = 0;
    if (events < 0 || sd_bus_get_timeout(bus_.get(), &deadline) < 0) return false;
    watch_->enableCallBacks((events & POLLIN) != 0, (events & POLLOUT) != 0);
    // Messages that sd-bus has already read do not make the descriptor readable: their deadline has passed.
    constexpr auto never = std::numeric_limits<std::uint64_t>::max();
    if (deadline != never) timer_ = loop_.scheduleTimer(secondsUntil(deadline), processLater());
    return true;
}

} // namespace kelvo
