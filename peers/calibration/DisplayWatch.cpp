#include "peers/calibration/DisplayWatch.h"

#include "linux/BusService.h"
#include "peers/DriverCommand.h"
#include "touch/Thresholds.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <utility>

namespace kelvo {

namespace {

constexpr double kPatienceSeconds = 5.0;

bool isSignal(sd_bus_message* message, const char* member) {
    return sd_bus_message_is_signal(message, kDriverName, member) > 0;
}

/// A frame of that display; false where it is another's or none.
bool readFrame(sd_bus_message* message, const std::string& display, touch::Frame& frame, touch::Size& glass) {
    const char* name = nullptr;
    std::uint64_t time = 0;
    if (sd_bus_message_read(message, "stdd", &name, &time, &glass.width, &glass.height) < 0 || display != name) {
        return false;
    }
    if (!(glass.width > 0.0 && glass.height > 0.0)) {
        glass = {touch::thresholds::kUnknownLength, touch::thresholds::kUnknownLength};
    }
    frame.time = touch::Time(static_cast<touch::Time::rep>(time));
    int result = sd_bus_message_enter_container(message, 'a', "(idd)");
    touch::Contact contact;
    while (result >= 0 &&
           (result = sd_bus_message_read(message, "(idd)", &contact.id, &contact.place.x, &contact.place.y)) > 0) {
        contact.place = {contact.place.x * glass.width, contact.place.y * glass.height};
        (void)frame.contacts.add(contact);
    }
    return result >= 0;
}

} // namespace

DisplayWatch::DisplayWatch(platform::CFRunLoop& loop, std::string display, Handlers handlers, std::string address)
    : loop_(loop), display_(std::move(display)), handlers_(std::move(handlers)), address_(std::move(address)) {}

DisplayWatch::~DisplayWatch() {
    if (patience_) patience_->invalidate();
}

void DisplayWatch::begin() {
    connection_ = BusConnection::open(loop_, address_, [this] { tell(); });
    if (!connection_ || !ask()) {
        ending_ = Ending{End::NoBus, ""};
        // Later, as every other end.
        patience_ = loop_.scheduleTimer(0.0, [this] { tell(); });
        return;
    }
    patience_ = loop_.scheduleTimer(kPatienceSeconds, [this] {
        if (hasBegun_) return;
        ending_ = Ending{End::NoDriver, ""};
        tell();
    });
    connection_->process();
}

bool DisplayWatch::ask() {
    sd_bus* bus = connection_->bus();
    sd_bus_slot* filter = nullptr;
    sd_bus_slot* departure = nullptr;
    sd_bus_slot* call = nullptr;
    sd_bus_message* created = nullptr;
    const std::string rule = "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                             std::string(kDriverName) + "',arg2=''";
    if (sd_bus_add_filter(bus, &filter, onMessage, this) < 0) return false;
    filter_.reset(filter);
    if (sd_bus_add_match_async(bus, &departure, rule.c_str(), nullptr, nullptr, nullptr) < 0) return false;
    departure_.reset(departure);
    if (sd_bus_message_new_method_call(bus, &created, kDriverName, kDriverPath, kDriverName, "Watch") < 0) return false;
    const BusMessage message(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0 || sd_bus_message_append(created, "s", display_.c_str()) < 0 ||
        sd_bus_call_async(bus, &call, created, onAnswer, this, kNoTimeout) < 0) {
        return false;
    }
    call_.reset(call);
    return true;
}

int DisplayWatch::onAnswer(sd_bus_message* answer, void* watch, sd_bus_error* /*error*/) noexcept {
    auto& self = *static_cast<DisplayWatch*>(watch);
    try {
        const sd_bus_error* error = sd_bus_message_get_error(answer);
        if (!error) {
            self.hasBegun_ = true;
        } else {
            self.ending_ = isNameAbsent(*error) ? Ending{End::NoDriver, ""}
                                                : Ending{End::Refused, error->message ? error->message : ""};
        }
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}

int DisplayWatch::onMessage(sd_bus_message* message, void* watch, sd_bus_error* /*error*/) noexcept {
    try {
        static_cast<DisplayWatch*>(watch)->take(message);
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}

void DisplayWatch::take(sd_bus_message* message) {
    if (isSignal(message, "Frame")) {
        Seen seen;
        if (readFrame(message, display_, seen.frame, seen.glass)) seen_.push_back(seen);
    } else if (isSignal(message, "WatchEnded")) {
        const char* name = nullptr;
        if (sd_bus_message_read(message, "s", &name) > 0 && display_ == name) ending_ = Ending{End::DisplayGone, ""};
    } else if (sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0) {
        const char* name = nullptr;
        const char* oldOwner = nullptr;
        const char* newOwner = nullptr;
        const bool isRead = sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) > 0;
        if (isRead && std::strcmp(name, kDriverName) == 0 && *newOwner == '\0') ending_ = Ending{End::NoDriver, ""};
    }
}

/// Whoever is told may destroy this at the end alone.
void DisplayWatch::tell() {
    if ((hasBegun_ || ending_) && patience_) std::exchange(patience_, nullptr)->invalidate();
    if (hasBegun_ && handlers_.began) std::exchange(handlers_.began, nullptr)();
    for (const Seen& seen : std::exchange(seen_, {})) handlers_.seen(seen.frame, seen.glass);
    if (!ending_ && connection_ && !connection_->isOpen()) ending_ = Ending{End::NoBus, ""};
    if (!ending_) return;
    const auto ended = std::exchange(handlers_.ended, nullptr);
    const Ending ending = *ending_;
    if (ended) ended(ending.end, ending.text);
}

} // namespace kelvo
