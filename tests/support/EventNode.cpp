#include "support/EventNode.h"

#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace support {

namespace {

std::vector<EventNode*>& nodes() {
    static std::vector<EventNode*> all;
    return all;
}

EventNode* nodeOf(int descriptor) {
    const auto found =
        std::find_if(nodes().begin(), nodes().end(), [&](const EventNode* node) { return node->has(descriptor); });
    return found == nodes().end() ? nullptr : *found;
}

int fail(int error) {
    errno = error;
    return -1;
}

/// What was asked for, as much of it as there is room for.
int give(const void* answer, std::size_t length, void* argument, std::size_t room) {
    const std::size_t given = std::min(length, room);
    if (given > 0) std::memcpy(argument, answer, given);
    return static_cast<int>(given);
}

/// As `give`, for the requests whose result is not how much was given.
int answer(const void* found, std::size_t length, void* argument, std::size_t room) {
    (void)give(found, length, argument, room);
    return 0;
}

int giveBits(const std::set<unsigned>& bits, void* argument, std::size_t room) {
    std::array<unsigned char, 128> answer{};
    for (const unsigned bit : bits) answer.at(bit / 8) |= static_cast<unsigned char>(1U << (bit % 8));
    return give(answer.data(), answer.size(), argument, room);
}

} // namespace

EventNode::Device EventNode::panel() {
    Device device;
    const auto axis = [](std::int32_t maximum, std::int32_t resolution) {
        return input_absinfo{0, 0, maximum, 0, 0, resolution};
    };
    device.axes = {{ABS_X, axis(2000, 10)},
                   {ABS_Y, axis(1000, 10)},
                   {ABS_MT_SLOT, axis(9, 0)},
                   {ABS_MT_TOOL_TYPE, axis(2, 0)},
                   {ABS_MT_POSITION_X, axis(2000, 10)},
                   {ABS_MT_POSITION_Y, axis(1000, 10)},
                   {ABS_MT_TRACKING_ID, axis(65535, 0)}};
    return device;
}

EventNode::EventNode(Device device) : device_(std::move(device)) {
    const auto slot = device_.axes.find(ABS_MT_SLOT);
    const std::size_t count = slot == device_.axes.end() ? 0 : static_cast<std::size_t>(slot->second.maximum) + 1;
    for (const auto& [code, axis] : device_.axes) {
        if (code > ABS_MT_SLOT) slots_[code].assign(count, code == ABS_MT_TRACKING_ID ? -1 : 0);
    }
    nodes().push_back(this);
}

EventNode::~EventNode() {
    std::erase(nodes(), this);
    for (const auto& [reading, writing] : pipes_) ::close(writing);
}

int EventNode::open() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("no pipe");
    pipes_[ends[0]] = ends[1];
    return ends[0];
}

void EventNode::send(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    if (type == EV_ABS) keep(code, value);
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    pending_.push_back(event);
}

void EventNode::touch(std::int32_t slot, std::int32_t id, std::int32_t x, std::int32_t y) {
    send(EV_ABS, ABS_MT_SLOT, slot);
    if (slots_[ABS_MT_TRACKING_ID].at(static_cast<std::size_t>(slot)) != id) send(EV_ABS, ABS_MT_TRACKING_ID, id);
    send(EV_ABS, ABS_MT_POSITION_X, x);
    send(EV_ABS, ABS_MT_POSITION_Y, y);
}

void EventNode::lift(std::int32_t slot) {
    send(EV_ABS, ABS_MT_SLOT, slot);
    send(EV_ABS, ABS_MT_TRACKING_ID, -1);
}

void EventNode::report(std::int64_t microseconds) {
    send(EV_SYN, SYN_REPORT, 0);
    for (input_event& event : pending_) {
        event.input_event_sec = microseconds / 1'000'000;
        event.input_event_usec = microseconds % 1'000'000;
    }
    for (const auto& [reading, writing] : pipes_) {
        if (grabber_ >= 0 && grabber_ != reading) continue;
        (void)syscall(SYS_write, writing, pending_.data(), pending_.size() * sizeof(input_event));
    }
    pending_.clear();
}

void EventNode::loseEvents(std::int64_t microseconds) {
    for (const auto& [reading, writing] : pipes_) {
        std::array<char, 4096> lost{};
        while (syscall(SYS_read, reading, lost.data(), lost.size()) > 0) {
        }
    }
    pending_.clear();
    input_event dropped{};
    dropped.type = EV_SYN;
    dropped.code = SYN_DROPPED;
    pending_.push_back(dropped);
    report(microseconds);
}

void EventNode::forget(int descriptor) {
    ::close(pipes_.at(descriptor));
    pipes_.erase(descriptor);
    revoked_.erase(descriptor);
    if (grabber_ == descriptor) grabber_ = -1;
}

long EventNode::answerRead(int descriptor, void* bytes, std::size_t size) {
    if (isGone_ || revoked_.contains(descriptor)) return fail(ENODEV);
    if (std::exchange(isInterrupted_, false)) return fail(EINTR);
    return syscall(SYS_read, descriptor, bytes, size);
}

long EventNode::answerWrite(int descriptor, const void* bytes, std::size_t size) {
    if (isGone_ || revoked_.contains(descriptor)) return fail(ENODEV);
    const auto* events = static_cast<const input_event*>(bytes);
    written.emplace_back(events, events + size / sizeof(input_event));
    return writeResult < 0 ? static_cast<long>(size) : writeResult;
}

int EventNode::answerIoctl(int descriptor, unsigned long request, void* argument) {
    if (isGone_ || revoked_.contains(descriptor)) return fail(ENODEV);
    const std::size_t room = _IOC_SIZE(request);
    const unsigned number = _IOC_NR(request);
    if (_IOC_TYPE(request) == UINPUT_IOCTL_BASE) return answerMaking(request, argument);
    if (_IOC_TYPE(request) != 'E') return fail(ENOTTY);

    if (request == EVIOCGRAB) return setGrab(descriptor, argument != nullptr);
    if (request == EVIOCREVOKE) {
        revoke(descriptor);
        return 0;
    }
    if (request == EVIOCGID) return answer(&device_.id, sizeof device_.id, argument, room);
    if (number == _IOC_NR(EVIOCGNAME(0))) return give(device_.name.c_str(), device_.name.size() + 1, argument, room);
    if (number == _IOC_NR(EVIOCGPHYS(0))) return give(device_.phys.c_str(), device_.phys.size() + 1, argument, room);
    if (number == _IOC_NR(EVIOCGPROP(0))) return giveBits(device_.properties, argument, room);
    if (number == _IOC_NR(EVIOCGMTSLOTS(0))) {
        auto* values = static_cast<std::int32_t*>(argument);
        const std::vector<std::int32_t>& slots = slots_[static_cast<unsigned>(*values)];
        return answer(slots.data(), slots.size() * sizeof slots[0], values + 1, room - sizeof *values);
    }
    if (number == _IOC_NR(EVIOCGBIT(0, 0))) {
        std::set<unsigned> types{EV_SYN};
        if (!device_.keys.empty()) types.insert(EV_KEY);
        if (!device_.axes.empty()) types.insert(EV_ABS);
        return giveBits(types, argument, room);
    }
    if (number == _IOC_NR(EVIOCGBIT(EV_KEY, 0))) return giveBits(device_.keys, argument, room);
    if (number == _IOC_NR(EVIOCGBIT(EV_ABS, 0))) {
        std::set<unsigned> codes;
        for (const auto& [code, axis] : device_.axes) codes.insert(code);
        return giveBits(codes, argument, room);
    }
    if (_IOC_DIR(request) == _IOC_READ && number >= _IOC_NR(EVIOCGABS(0)) && number <= _IOC_NR(EVIOCGABS(ABS_MAX))) {
        const auto axis = device_.axes.find(number - static_cast<unsigned>(_IOC_NR(EVIOCGABS(0))));
        return axis == device_.axes.end() ? fail(EINVAL) : answer(&axis->second, sizeof axis->second, argument, room);
    }
    // Of everything else there is nothing, and the clock is the test's.
    if (_IOC_DIR(request) == _IOC_READ) std::memset(argument, 0, room);
    return 0;
}

int EventNode::answerMaking(unsigned long request, void* argument) {
    const auto number = [&] { return std::to_string(reinterpret_cast<std::uintptr_t>(argument)); };
    if (request == UI_SET_EVBIT) made += "type " + number();
    if (request == UI_SET_KEYBIT) made += "key " + number();
    if (request == UI_SET_PROPBIT) made += "property " + number();
    if (request == UI_SET_PHYS) made += std::string("phys ") + static_cast<const char*>(argument);
    if (request == UI_ABS_SETUP) {
        const auto* axis = static_cast<const uinput_abs_setup*>(argument);
        made += "axis " + std::to_string(axis->code) + " from " + std::to_string(axis->absinfo.minimum) + " to " +
                std::to_string(axis->absinfo.maximum) + ", " + std::to_string(axis->absinfo.resolution) + " a unit";
    }
    if (request == UI_DEV_SETUP) {
        const auto* setup = static_cast<const uinput_setup*>(argument);
        for (const auto id : {setup->id.bustype, setup->id.vendor, setup->id.product, setup->id.version}) {
            made += std::to_string(id) + " ";
        }
        made += static_cast<const char*>(setup->name);
    }
    if (request == UI_DEV_CREATE) made += "created";
    if (_IOC_NR(request) == _IOC_NR(UI_GET_SYSNAME(0))) {
        std::strncpy(static_cast<char*>(argument), "input-of-nobody", _IOC_SIZE(request));
        return 0;
    }
    made += "\n";
    return 0;
}

int EventNode::setGrab(int descriptor, bool isOn) {
    ++grabs;
    if (isOn && grabber_ >= 0) return fail(EBUSY);
    if (!isOn && grabber_ != descriptor) return fail(EINVAL);
    grabber_ = isOn ? descriptor : -1;
    if (const auto act = std::exchange(meanwhile, nullptr)) act();
    return 0;
}

void EventNode::revoke(int descriptor) {
    revoked_.insert(descriptor);
    if (grabber_ == descriptor) grabber_ = -1;
    // A descriptor without its device is ready for whoever waits for anything.
    ::close(std::exchange(pipes_.at(descriptor), -1));
}

void EventNode::keep(std::uint16_t code, std::int32_t value) {
    if (code == ABS_MT_SLOT) {
        currentSlot_ = static_cast<std::size_t>(value);
        device_.axes.at(ABS_MT_SLOT).value = value;
    } else if (const auto values = slots_.find(code); values != slots_.end()) {
        values->second.at(currentSlot_) = value;
    } else if (const auto axis = device_.axes.find(code); axis != device_.axes.end()) {
        axis->second.value = value;
    }
}

} // namespace support

extern "C" {

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    support::EventNode* node = support::nodeOf(descriptor);
    if (node) return node->answerIoctl(descriptor, request, argument);
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

ssize_t read(int descriptor, void* bytes, size_t size) {
    support::EventNode* node = support::nodeOf(descriptor);
    return node ? node->answerRead(descriptor, bytes, size) : syscall(SYS_read, descriptor, bytes, size);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
    support::EventNode* node = support::nodeOf(descriptor);
    return node ? node->answerWrite(descriptor, bytes, size) : syscall(SYS_write, descriptor, bytes, size);
}

int close(int descriptor) {
    support::EventNode* node = support::nodeOf(descriptor);
    if (node) node->forget(descriptor);
    return static_cast<int>(syscall(SYS_close, descriptor));
}
}
