#include "peers/driver/SimulatedDisplay.h"

#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

/// In millimetres: 24 inches across, 16 to 9.
constexpr touch::Size kGlass{531.0, 299.0};

} // namespace

SimulatedDisplay::SimulatedDisplay(const std::string& name, std::function<void(const std::string&)> printLine)
    : printer_(std::move(printLine), name), display_(kGlass, printer_, logFault) {}

SimulatedDisplay::~SimulatedDisplay() { display_.setEnabled(false, displayTime()); }

void SimulatedDisplay::setGiving(bool isGiving) {
    if (isGiving != display_.isEnabled()) display_.setEnabled(isGiving, displayTime());
    timer_.awaitDeadline();
}

ContactFrame SimulatedDisplay::frameOf(std::vector<ContactFrame::Contact> contacts) {
    return {static_cast<std::uint64_t>(displayTime().count()), kGlass.width, kGlass.height, std::move(contacts)};
}

void SimulatedDisplay::see(const ContactFrame& frame) {
    touch::Frame seen;
    seen.time = touch::Time(static_cast<touch::Time::rep>(frame.time));
    for (const ContactFrame::Contact& contact : frame.contacts) {
        (void)seen.contacts.add({contact.id, {contact.x * kGlass.width, contact.y * kGlass.height}});
    }
    hasFingers_ = !seen.contacts.empty();
    display_.frame(seen);
    timer_.awaitDeadline();
}

} // namespace kelvo
