#include "linux/VirtualDevices.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

namespace kelvo {

namespace {

using touch::Output;
using touch::Road;
using Kind = Output::Kind;

constexpr std::int32_t kTrackingIds = 65536;

std::size_t indexOf(Road road) { return static_cast<std::size_t>(road); }

/// How the touchpad says how many fingers are on it; nothing for none.
std::uint16_t toolOf(std::size_t fingers) {
    constexpr std::array<std::uint16_t, kPadSlots> kTools{BTN_TOOL_FINGER, BTN_TOOL_DOUBLETAP, BTN_TOOL_TRIPLETAP,
                                                          BTN_TOOL_QUADTAP, BTN_TOOL_QUINTTAP};
    return kTools.at(fingers - 1);
}

std::int32_t heldTo(const input_absinfo& axis, double value) {
    return static_cast<std::int32_t>(
        std::clamp(std::round(value), static_cast<double>(axis.minimum), static_cast<double>(axis.maximum)));
}

/// From 0 to 1 along the axis.
std::int32_t atShare(const input_absinfo& axis, double share) {
    return heldTo(axis, axis.minimum + share * (static_cast<double>(axis.maximum) - axis.minimum));
}

std::int32_t atMillimetres(const input_absinfo& axis, double place) {
    return heldTo(axis, axis.minimum + place * axis.resolution);
}

std::uint16_t codeOf(touch::Button button) { return button == touch::Button::Left ? BTN_LEFT : BTN_RIGHT; }

bool isLanding(Kind kind) { return kind == Kind::TouchDown || kind == Kind::PadDown; }
bool isLifting(Kind kind) { return kind == Kind::TouchUp || kind == Kind::TouchCancel || kind == Kind::PadUp; }

} // namespace

VirtualDevices::VirtualDevices(VirtualNodes nodes, const touch::PanelDescription& panel)
    : VirtualDevices(std::move(nodes), virtualDescriptionsOf(panel, {})) {}

VirtualDevices::VirtualDevices(VirtualNodes nodes, const Descriptions& devices)
    : nodes_(std::move(nodes)),
      touchX_(devices[indexOf(Road::TouchScreen)].rangeOf(ABS_MT_POSITION_X)),
      touchY_(devices[indexOf(Road::TouchScreen)].rangeOf(ABS_MT_POSITION_Y)),
      pointerX_(devices[indexOf(Road::Pointer)].rangeOf(ABS_X)),
      pointerY_(devices[indexOf(Road::Pointer)].rangeOf(ABS_Y)),
      pointedX_(pointerX_.value),
      pointedY_(pointerY_.value),
      padX_(devices[indexOf(Road::Touchpad)].rangeOf(ABS_MT_POSITION_X)),
      padY_(devices[indexOf(Road::Touchpad)].rangeOf(ABS_MT_POSITION_Y)) {}

void VirtualDevices::give(const Output& output, touch::Time /*now*/) {
    const Road road = touch::roadOf(output.kind);
    switch (road) {
    case Road::TouchScreen:
    case Road::Touchpad:
        giveFinger(output);
        break;
    case Road::Pointer:
        givePointer(output);
        break;
    case Road::Keyboard:
        add(EV_KEY, static_cast<std::uint16_t>(output.number), output.kind == Kind::KeyDown ? 1 : 0);
        break;
    case Road::Listener:
        return;
    }
    if (output.endsFrame) endFrame(road);
}

void VirtualDevices::giveFinger(const Output& output) {
    const bool isPad = touch::roadOf(output.kind) == Road::Touchpad;
    Fingers& fingers = isPad ? padFingers_ : touches_;
    const auto slot = static_cast<std::size_t>(output.number);
    if (slot >= (isPad ? kPadSlots : fingers.size())) return;
    Finger& finger = fingers[slot];

    add(EV_ABS, ABS_MT_SLOT, output.number);
    finger.isDown = !isLifting(output.kind);
    if (output.kind == Kind::TouchCancel) add(EV_ABS, ABS_MT_TOOL_TYPE, MT_TOOL_PALM);
    if (!finger.isDown) {
        add(EV_ABS, ABS_MT_TRACKING_ID, -1);
        return;
    }
    if (isLanding(output.kind)) {
        // The slot still has what its last finger was taken for.
        if (!isPad) add(EV_ABS, ABS_MT_TOOL_TYPE, MT_TOOL_FINGER);
        add(EV_ABS, ABS_MT_TRACKING_ID, nextTrackingId_);
        nextTrackingId_ = (nextTrackingId_ + 1) % kTrackingIds;
    }
    finger.x = isPad ? atMillimetres(padX_, output.at.x) : atShare(touchX_, output.at.x);
    finger.y = isPad ? atMillimetres(padY_, output.at.y) : atShare(touchY_, output.at.y);
    add(EV_ABS, ABS_MT_POSITION_X, finger.x);
    add(EV_ABS, ABS_MT_POSITION_Y, finger.y);
}

void VirtualDevices::givePointer(const Output& output) {
    if (output.kind != Kind::PointerMove) {
        add(EV_KEY, codeOf(output.button()), output.kind == Kind::ButtonDown ? 1 : 0);
        return;
    }
    const std::int32_t x = atShare(pointerX_, output.at.x);
    const std::int32_t y = atShare(pointerY_, output.at.y);
    // Another device may have moved the pointer, while the kernel passes on only what is new of this one.
    if (x == pointedX_ && y == pointedY_) {
        add(EV_ABS, ABS_X, x > pointerX_.minimum ? x - 1 : x + 1);
        add(EV_SYN, SYN_REPORT, 0);
    }
    add(EV_ABS, ABS_X, x);
    add(EV_ABS, ABS_Y, y);
    pointedX_ = x;
    pointedY_ = y;
}

void VirtualDevices::endFrame(Road road) {
    if (road == Road::TouchScreen || road == Road::Touchpad) {
        const Fingers& fingers = road == Road::Touchpad ? padFingers_ : touches_;
        tellOfCount(road, fingers);
        tellOfFirstFinger(fingers);
    }
    add(EV_SYN, SYN_REPORT, 0);
    write(nodes_.at(indexOf(road)));
    frame_.clear();
}

void VirtualDevices::tellOfCount(Road road, const Fingers& fingers) {
    const bool isPad = road == Road::Touchpad;
    std::size_t& told = toldCount_.at(isPad ? 1 : 0);
    const auto count = static_cast<std::size_t>(
        std::count_if(fingers.begin(), fingers.end(), [](const Finger& finger) { return finger.isDown; }));
    if (count == told) return;
    if ((count == 0) != (told == 0)) add(EV_KEY, BTN_TOUCH, count == 0 ? 0 : 1);
    if (isPad && told > 0) add(EV_KEY, toolOf(told), 0);
    if (isPad && count > 0) add(EV_KEY, toolOf(count), 1);
    told = count;
}

void VirtualDevices::tellOfFirstFinger(const Fingers& fingers) {
    const auto first = std::find_if(fingers.begin(), fingers.end(), [](const Finger& finger) { return finger.isDown; });
    if (first == fingers.end()) return;
    add(EV_ABS, ABS_X, first->x);
    add(EV_ABS, ABS_Y, first->y);
}

void VirtualDevices::add(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    frame_.add(event);
}

void VirtualDevices::write(const Descriptor& node) {
    const std::size_t size = frame_.size() * sizeof(input_event);
    ssize_t written = -1;
    do written = ::write(node.number(), frame_.begin(), size);
    while (written < 0 && errno == EINTR);
    if (written != static_cast<ssize_t>(size)) isLost_ = true;
}

} // namespace kelvo
