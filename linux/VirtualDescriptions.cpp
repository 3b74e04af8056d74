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
/// As fine as absolute pointers are.
constexpr std::int32_t kPointerRange = 65535;
/// To the millimetre of the pad, finer than a desktop scrolls.
constexpr std::int32_t kPadResolution = 20;

input_absinfo range(std::int32_t minimum, std::int32_t maximum, std::int32_t resolution = 0) {
    return {0, minimum, maximum, 0, 0, resolution};
}

input_absinfo range(const touch::Axis& axis) { return range(axis.minimum, axis.maximum, axis.resolution); }

std::string physOf(std::string_view place, std::string_view device) {
    return std::string(kOwnPhys).append(place).append("/").append(device);
}

/// Fingers in slots, and the first of them for who knows no slots.
std::vector<Axis> fingerAxes(const input_absinfo& x, const input_absinfo& y, std::size_t slots) {
    return {{ABS_X, x},
            {ABS_Y, y},
            {ABS_MT_SLOT, range(0, static_cast<std::int32_t>(slots) - 1)},
            {ABS_MT_POSITION_X, x},
            {ABS_MT_POSITION_Y, y},
            {ABS_MT_TRACKING_ID, range(0, kHighestTrackingId)}};
}

/// A button would make compositors take it for a pointer.
VirtualDescription touchScreenOf(const touch::PanelDescription& panel, std::string_view place) {
    VirtualDescription device{.name = panel.name,
                              .phys = physOf(place, "touch-screen"),
                              .id = {panel.bus, panel.vendor, panel.product, panel.version},
                              .properties = {INPUT_PROP_DIRECT},
                              .keys = {BTN_TOUCH},
                              .axes = fingerAxes(range(panel.x), range(panel.y), touch::kMostContacts)};
    // By saying that it was a palm a touch is taken back.
    device.axes.push_back({ABS_MT_TOOL_TYPE, range(MT_TOOL_FINGER, MT_TOOL_PALM)});
    return device;
}

/// Without a middle button libinput makes one of the other two and holds each press back to see whether both come: by
/// then the pointer may have gone on.
VirtualDescription pointerOf(const touch::PanelDescription& panel, std::string_view place) {
    return {.name = panel.name + " Pointer",
            .phys = physOf(place, "pointer"),
            .id = {BUS_VIRTUAL, 0, 1, 1},
            .properties = {},
            .keys = {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE},
            .axes = {{ABS_X, range(0, kPointerRange)}, {ABS_Y, range(0, kPointerRange)}}};
}

/// The bus of a device that is plugged in, and a number that no keyboard has: a touchpad that belongs to a keyboard is
/// switched off while somebody types there.
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

/// As long as the kernel lets names be.
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
