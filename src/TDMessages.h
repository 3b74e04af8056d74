#pragma once

#include "platform/PropertyList.h"

#include <cstdint>

/// The payloads of the messages that the pane sends, each for the message id of its name. Those to the driver end with
/// the current device's name, which is left out when there is no device at all.
namespace payloads {

/// The double-click interval in seconds, a real.
[[nodiscard]] platform::NSMutableDictionary doubleClickRate(double seconds);
/// The double-click range: an integer from slider and button, a real holding a whole number from the text field.
[[nodiscard]] platform::NSMutableDictionary doubleClickRange(const platform::Value& range);
/// The current device's whole gesture list, `gSettings`. Without a list the payload is empty.
[[nodiscard]] platform::NSMutableDictionary gestureArray();
/// The row of the rotation choice, an integer.
[[nodiscard]] platform::NSMutableDictionary rotateMode(std::int32_t row);
/// Right click by long press, and the time in seconds that makes one, a real.
[[nodiscard]] platform::NSMutableDictionary rightClick(bool isEnabled, double seconds);
[[nodiscard]] platform::NSMutableDictionary automaticCalibration();
/// The resolution of the on-screen display in pixels, reals.
[[nodiscard]] platform::NSMutableDictionary manualCalibration(float width, float height);
/// To the status-bar utility: whether its menu is shown.
[[nodiscard]] platform::NSMutableDictionary statusMenu(bool isShown);

} // namespace payloads
