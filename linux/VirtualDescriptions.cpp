#include "linux/VirtualDescriptions.h"

#include "linux/EvdevDisplay.h"
#include "touch/Actions.h"
#include "touch/Frame.h"
#include "touch/Thresholds.h"

#include <linux/uinput.h>

#include <algorithm>
#include <stdexcept>

namespace kelvo {

namespace {

using Axis = VirtualDescription::Axis;

constexpr std::int32_t kHighestTrackingId = 65535;
/// The resolution of typical absolute pointers.
constexpr std::int32_t kPointerRange = 65535;
/// Units per millimetre of the touchpad, finer than desktops scroll.
constexpr std::int32_t kPadResolution = 20;

input_absinfo range(std::int32_t minimum, std::int32_t maximum, std::int32_t resolution = 0) {
    return {0, minimum, maximum, 0, 0, resolution};
}

input_absinfo range(const touch::Axis& axis) { return range(axis.minimum, axis.maximum, axis.resolution); }

std::string physOf(std::string_view place, std::string_view device) {
    return std::string(kOwnPhys).append(place).append("/").append(device);
}

/// Fingers in slots, and the first finger for programs without slot support.
std::vector<Axis> fingerAxes(const input_absinfo& x, const input_absinfo& y, std::size_t slots) {
    return {{ABS_X, x},
            {ABS_Y, y},
            {ABS_MT_SLOT, range(0, static_cast<std::int32_t>(slots) - 1)},
            {ABS_MT_POSITION_X, x},
            {ABS_MT_POSITION_Y, y},
            {ABS_MT_TRACKING_ID, range(0, kHighestTrackingId)}};
}

/// With a button, compositors would treat it as a pointer.
VirtualDescription touchScreenOf(const touch::PanelDescription& panel, std::string_view place) {
    VirtualDescription device{.name = panel.name,
                              .phys = physOf(place, "touch-screen"),
                              .id = {panel.bus, panel.vendor, panel.product, panel.version},
                              .properties = {INPUT_PROP_DIRECT},
                              .keys = {BTN_TOUCH},
                              .axes = fingerAxes(range(panel.x), range(panel.y), touch::kMostContacts)};
    // A touch is cancelled by reporting a palm.
    device.axes.push_back({ABS_MT_TOOL_TYPE, range(MT_TOOL_FINGER, MT_TOOL_PALM)});
    return device;
}

/// Without a middle button, libinput emulates one from the other two and delays each press to see whether both come: by
/// then, the pointer may have moved on.
VirtualDescription pointerOf(const touch::PanelDescription& panel, std::string_view place) {
    return {.name = panel.name + " Pointer",
            .phys = physOf(place, "pointer"),
            .id = {BUS_VIRTUAL, 0, 1, 1},
            .properties = {},
            .keys = {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE},
            .axes = {{ABS_X, range(0, kPointerRange)}, {ABS_Y, range(0, kPointerRange)}}};
}

/// An external bus, and a product number that no keyboard has: a touchpad that belongs to a keyboard is disabled while
/// the user is typing.
VirtualDescription touchpadOf(const touch::PanelDescription& panel, std::string_view place) {
    const auto side = [](double length) {
        return range(0, static_cast<std::int32_t>(length) * kPadResolution, kPadResolution);
    };
    return {.name = touchpadNameOf(panel),
            .phys = physOf(place, "touchpad"),
            .id = {BUS_USB, 0, 2, 1},
            .properties = {INPUT_PROP_POINTER},
            .keys = {BTN_LEFT, BTN_RIGHT, BTN_TOUCH, BTN_TOOL_FINGER, BTN_TOOL_DOUBLETAP, BTN_TOOL_TRIPLETAP,
                     BTN_TOOL_QUADTAP, BTN_TOOL_QUINTTAP},
            .axes = fingerAxes(side(touch::thresholds::kPad.width), side(touch::thresholds::kPad.height), kPadSlots)};
}

VirtualDescription keyboardOf(const touch::PanelDescription& panel, std::string_view place) {
    VirtualDescription device{.name = panel.name + " Keys",
                              .phys = physOf(place, "keyboard"),
                              .id = {BUS_VIRTUAL, 0, 3, 1},
                              .properties = {},
                              .keys = {},
                              .axes = {}};
    for (const touch::ChordKey& key : touch::kChordKeys) device.keys.push_back(static_cast<std::uint16_t>(key.code));
    return device;
}

} // namespace

/// Limited to the length of names in the kernel.
std::string touchpadNameOf(const touch::PanelDescription& panel) {
    return (panel.name + " Touchpad").substr(0, UINPUT_MAX_NAME_SIZE - 1);
}

const input_absinfo& VirtualDescription::rangeOf(std::uint16_t axis) const {
    const auto found = std::find_if(axes.begin(), axes.end(), [&](const Axis& each) { return each.code == axis; });
    if (found == axes.end()) throw std::logic_error("a virtual device lacks an axis that is written to");
    return found->range;
}

std::array<VirtualDescription, kVirtualDevices> virtualDescriptionsOf(const touch::PanelDescription& panel,
                                                                      std::string_view place) {
    return {touchScreenOf(panel, place), pointerOf(panel, place), touchpadOf(panel, place), keyboardOf(panel, place)};
}

} // namespace kelvo
