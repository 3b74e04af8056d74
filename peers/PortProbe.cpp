#include "peers/PortProbe.h"

#include "linux/BusService.h"

#include <utility>

namespace kelvo {

namespace {

constexpr double kPatienceSeconds = 0.5;

/// Whether nobody was there to answer, or the owner left before answering.
bool meansNobody(const sd_bus_error* error) {
    return error && (isNameAbsent(*error) || sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) > 0);
}

} // namespace

PortProbe::~PortProbe() { forget(); }

void PortProbe::ask(std::function<void(PortAnswer)> tell) {
    forget();
    tell_ = std::move(tell);
    if (!call()) return finish(PortAnswer::NotRunning);
    deadline_ = platform::NSTimer::scheduledTimerWithTimeInterval(kPatienceSeconds, *this,
                                                                  [this] { finish(PortAnswer::NotAnswering); });
    connection_->process();
}

/// False if there is no bus.
bool PortProbe::call() {
    connection_ = BusConnection::open(platform::CFRunLoop::getCurrent(), address_, [this] { tellWhenKnown(); });
    if (!connection_) return false;
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(connection_->bus(), &created, busName_.c_str(), kPortPath,
                                       "org.freedesktop.DBus.Peer", "Ping") < 0)
        return false;
    const BusMessage ping(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0) return false;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(connection_->bus(), &slot, created, onReply, this, kNoTimeout) < 0) return false;
    slot_.reset(slot);
    return true;
}

int PortProbe::onReply(sd_bus_message* reply, void* probe, sd_bus_error* /*error*/) noexcept {
    // Any other error was an answer by somebody.
    static_cast<PortProbe*>(probe)->answer_ =
        meansNobody(sd_bus_message_get_error(reply)) ? PortAnswer::NotRunning : PortAnswer::Answering;
    return 0;
}

void PortProbe::tellWhenKnown() {
    if (answer_) return finish(*answer_);
    if (!connection_->isOpen()) finish(PortAnswer::NotRunning);
}

void PortProbe::finish(PortAnswer answer) {
    const auto tell = std::exchange(tell_, nullptr);
    forget();
    if (tell) tell(answer);
}

void PortProbe::forget() {
    if (deadline_) deadline_->invalidate();
    deadline_.reset();
    slot_.reset();
    connection_.reset();
    answer_.reset();
}

} // namespace kelvo
