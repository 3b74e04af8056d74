#include "linux/EvdevDisplay.h"

#include <linux/input.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

/// Intervals for retrying a display that another program has grabbed.
constexpr double kRetrySeconds = 5.0;
/// More than any panel reports at once, but few enough not to delay timers.
constexpr int kMostEventsInATurn = 1024;

touch::Time now() {
    return std::chrono::duration_cast<touch::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

touch::Axis axisOf(const libevdev* device, unsigned code) {
    const input_absinfo* axis = libevdev_get_abs_info(device, code);
    return axis ? touch::Axis{axis->minimum, axis->maximum, axis->resolution} : touch::Axis{};
}

touch::KernelEvent kernelEventOf(const input_event& event) {
    const auto time = std::chrono::seconds(event.input_event_sec) + std::chrono::microseconds(event.input_event_usec);
    return {time, event.type, event.code, event.value};
}

bool isStartOfLoss(const input_event& event) { return event.type == EV_SYN && event.code == SYN_DROPPED; }

} // namespace

Evdev evdevOf(int eventNode) {
    // A panel that sends garbage must not fill the log.
    libevdev_set_log_priority(static_cast<libevdev_log_priority>(0));
    libevdev* device = nullptr;
    return Evdev(libevdev_new_from_fd(eventNode, &device) >= 0 ? device : nullptr);
}

bool isTouchDisplay(const libevdev* device) {
    const char* phys = libevdev_get_phys(device);
    return libevdev_has_property(device, INPUT_PROP_DIRECT) == 1 && libevdev_get_num_slots(device) > 0 &&
           libevdev_has_event_code(device, EV_ABS, ABS_MT_POSITION_X) == 1 &&
           libevdev_has_event_code(device, EV_ABS, ABS_MT_POSITION_Y) == 1 &&
           !(phys && std::string_view(phys).starts_with(kOwnPhys));
}

touch::PanelDescription panelDescriptionOf(const libevdev* device) {
    const auto number = [](int id) { return static_cast<std::uint16_t>(id); };
    const char* name = libevdev_get_name(device);
    return {name ? name : "",
            number(libevdev_get_id_bustype(device)),
            number(libevdev_get_id_vendor(device)),
            number(libevdev_get_id_product(device)),
            number(libevdev_get_id_version(device)),
            axisOf(device, ABS_MT_POSITION_X),
            axisOf(device, ABS_MT_POSITION_Y),
            static_cast<std::size_t>(std::max(libevdev_get_num_slots(device), 0))};
}

std::unique_ptr<EvdevDisplay> EvdevDisplay::open(platform::CFRunLoop& loop, Descriptor eventNode, Listener& listener,
                                                 std::optional<touch::Size> knownSize) {
    Evdev device = evdevOf(eventNode.number());
    // Deadlines use the monotonic clock, and so must the timestamps.
    if (!device || !isTouchDisplay(device.get()) || libevdev_set_clock_id(device.get(), CLOCK_MONOTONIC) < 0) {
        return nullptr;
    }
    return std::make_unique<EvdevDisplay>(Passkey{}, loop, std::move(eventNode), std::move(device), listener,
                                          knownSize);
}

EvdevDisplay::EvdevDisplay(Passkey, platform::CFRunLoop& loop, Descriptor eventNode, Evdev device, Listener& listener,
                           std::optional<touch::Size> knownSize)
    : loop_(loop),
      eventNode_(std::move(eventNode)),
      device_(std::move(device)),
      listener_(listener),
      description_(panelDescriptionOf(device_.get())),
      glass_(description_.x, description_.y, knownSize),
      slots_(glass_, description_.slots),
      watch_(loop_.watch(eventNode_.number(), [this] { read(); })) {
    watchAsNeeded();
}

EvdevDisplay::~EvdevDisplay() {
    if (retry_) retry_->invalidate();
    if (rest_) rest_->invalidate();
    // The service may keep the file open, and the grab would last as long.
    if (isHeld_) (void)::ioctl(eventNode_.number(), EVIOCGRAB, nullptr);
}

void EvdevDisplay::setHeld(bool isHeld) {
    if (isHeld == isWanted_) return;
    isWanted_ = isHeld;
    isHeldByAnother_ = false;
    watchAsNeeded();
    holdAsWanted();
}

/// While the display is not grabbed, wake up only if a finger must be lifted first.
void EvdevDisplay::watchAsNeeded() {
    if (watch_) watch_->enableCallBacks(isWanted_ || isHeld_, false);
}

// Reading

void EvdevDisplay::read() {
    unsigned flag = LIBEVDEV_READ_FLAG_NORMAL;
    for (int events = 0; readNext(flag); ++events) {
        if (events >= kMostEventsInATurn && flag == LIBEVDEV_READ_FLAG_NORMAL) {
            readRestLater();
            return;
        }
    }
    if (errno != EAGAIN) {
        lose();
        return;
    }
    if (isHeld_ != isWanted_ && slots_.frame().contacts.empty()) holdAsWanted();
}

/// Events that libevdev has already read do not wake up the loop.
void EvdevDisplay::readRestLater() {
    if (rest_) rest_->invalidate();
    rest_ = loop_.scheduleTimer(0.0, [this] {
        rest_.reset();
        read();
    });
}

/// False if nothing is left to read; errno says why. After lost events, libevdev reports the current state as a series
/// of events.
bool EvdevDisplay::readNext(unsigned& flag) {
    input_event event{};
    const int result = libevdev_next_event(device_.get(), flag, &event);
    if (result == -EAGAIN && flag == LIBEVDEV_READ_FLAG_SYNC) {
        flag = LIBEVDEV_READ_FLAG_NORMAL;
        return true;
    }
    if (result < 0) {
        errno = -result;
        return errno == EINTR;
    }
    if (result == LIBEVDEV_READ_STATUS_SYNC && flag == LIBEVDEV_READ_FLAG_NORMAL) flag = LIBEVDEV_READ_FLAG_SYNC;
    if (!isStartOfLoss(event)) take(event);
    return true;
}

void EvdevDisplay::take(const input_event& event) {
    const touch::KernelEvent taken = kernelEventOf(event);
    if (pen_ && isHeld_ && taken.time >= heldSince_) pen_(taken);
    if (!slots_.take(taken) || !isHeld_) return;
    const touch::Frame frame = slots_.frame();
    if (frame.time >= heldSince_) listener_.panelReported(frame);
}

// Holding

void EvdevDisplay::holdAsWanted() {
    if (retry_) retry_->invalidate();
    retry_.reset();
    if (isHeld_ == isWanted_ || isTouched() || !switchGrab()) return;
    watchAsNeeded();
    if (isHeld_) {
        heldSince_ = now();
        listener_.panelIsHeld(heldSince_);
    } else {
        listener_.panelIsFree(now());
    }
}

/// If a finger lands in the meantime, others have seen part of it, so the panel is left as it was.
bool EvdevDisplay::switchGrab() {
    const auto grab = [this](bool isOn) {
        // The kernel takes a number in place of the pointer.
        return ::ioctl(eventNode_.number(), EVIOCGRAB, isOn ? 1 : 0) == 0;
    };
    if (!grab(isWanted_)) {
        isHeldByAnother_ = errno == EBUSY;
        if (isHeldByAnother_) retryLater();
        return false;
    }
    isHeldByAnother_ = false;
    if (isTouched()) {
        (void)grab(isHeld_);
        return false;
    }
    isHeld_ = isWanted_;
    return true;
}

/// If the state is unavailable, the panel counts as touched and stays as it is.
bool EvdevDisplay::isTouched() const {
    // The requested axis, then a value per slot.
    std::vector<std::int32_t> values(description_.slots + 1, -1);
    values[0] = ABS_MT_TRACKING_ID;
    if (::ioctl(eventNode_.number(), EVIOCGMTSLOTS(values.size() * sizeof values[0]), values.data()) < 0) return true;
    return std::any_of(values.begin() + 1, values.end(), [](std::int32_t id) { return id >= 0; });
}

void EvdevDisplay::retryLater() {
    retry_ = loop_.scheduleTimer(kRetrySeconds, [this] { holdAsWanted(); });
}

/// The grab ended with the device, or with the access to it.
void EvdevDisplay::lose() {
    if (retry_) retry_->invalidate();
    retry_.reset();
    if (rest_) rest_->invalidate();
    rest_.reset();
    watch_.reset();
    isHeld_ = isWanted_ = false;
    listener_.panelIsGone();
}

} // namespace kelvo
