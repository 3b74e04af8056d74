#include "peers/driver/SimulatedDisplay.h"

#include "platform/Log.h"

#include <chrono>
#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

/// In millimetres: 24 inches across, 16 to 9.
constexpr touch::Size kGlass{531.0, 299.0};

touch::Time now() {
    return std::chrono::duration_cast<touch::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

double secondsOf(touch::Time time) { return std::chrono::duration<double>(time).count(); }

void logFault(touch::Fault fault) { platform::NSLog("this must not happen: %@", nameOf(fault)); }

} // namespace

SimulatedDisplay::SimulatedDisplay(const std::string& name, std::function<void(const std::string&)> printLine)
    : printer_(std::move(printLine), name), display_(kGlass, printer_, logFault) {}

SimulatedDisplay::~SimulatedDisplay() {
    if (timer_) timer_->invalidate();
    display_.setEnabled(false, now());
}

void SimulatedDisplay::setGiving(bool isGiving) {
    if (isGiving != display_.isEnabled()) display_.setEnabled(isGiving, now());
    awaitDeadline();
}

ContactFrame SimulatedDisplay::frameOf(std::vector<ContactFrame::Contact> contacts) {
    return {static_cast<std::uint64_t>(now().count()), kGlass.width, kGlass.height, std::move(contacts)};
}

void SimulatedDisplay::see(const ContactFrame& frame) {
    touch::Frame seen;
    seen.time = touch::Time(static_cast<touch::Time::rep>(frame.time));
    for (const ContactFrame::Contact& contact : frame.contacts) {
        (void)seen.contacts.add({contact.id, {contact.x * kGlass.width, contact.y * kGlass.height}});
    }
    hasFingers_ = !seen.contacts.empty();
    display_.frame(seen);
    awaitDeadline();
}

void SimulatedDisplay::awaitDeadline() {
    if (timer_) timer_->invalidate();
    timer_.reset();
    const auto deadline = display_.deadline();
    if (!deadline) return;
    timer_ = platform::NSTimer::scheduledTimerWithTimeInterval(secondsOf(*deadline - now()), *this, [this] {
        display_.timeout(now());
        awaitDeadline();
    });
}

} // namespace kelvo
