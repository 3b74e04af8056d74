#include "peers/MessageNames.h"

#include "TDNames.h"

#include <algorithm>
#include <array>

namespace kelvo {

namespace {

struct Message {
    std::string_view port;
    std::int32_t id;
    std::string_view name;
};

constexpr std::array kMessages{
    Message{kTouchDisplayDriverPortName, kMessageIDForDoubleClickRate, "kMessageIDForDoubleClickRate"},
    Message{kTouchDisplayDriverPortName, kMessageIDForDoubleClickRange, "kMessageIDForDoubleClickRange"},
    Message{kTouchDisplayDriverPortName, kMessageIDForGestureArray, "kMessageIDForGestureArray"},
    Message{kTouchDisplayDriverPortName, kMessageIDForRotateMode, "kMessageIDForRotateMode"},
    Message{kTouchDisplayDriverPortName, kMessageIDForRightClick, "kMessageIDForRightClick"},
    Message{kTouchDisplayDriverPortName, kMessageIDForCalibration, "kMessageIDForCalibration"},
    Message{kPreferencePortName, COMMAND_DRIVER_DISABLE, "COMMAND_DRIVER_DISABLE"},
    Message{kPreferencePortName, kMessageIDForDeviceIsConnected, "kMessageIDForDeviceIsConnected"},
    Message{kPreferencePortName, kMessageIDForSelectedMenuItem, "kMessageIDForSelectedMenuItem"},
    Message{kStatusBarPortName, kMessageIDForStatusMenu, "kMessageIDForStatusMenu"},
};

} // namespace

std::string_view nameOfMessage(std::string_view port, std::int32_t messageId) {
    const auto found = std::find_if(kMessages.begin(), kMessages.end(), [&](const Message& message) {
        return message.port == port && message.id == messageId;
    });
    return found == kMessages.end() ? std::string_view() : found->name;
}

} // namespace kelvo
