#include "peers/driver/OutputPrinter.h"

#include "peers/JsonLine.h"
#include "platform/PropertyList.h"
#include "touch/Actions.h"

#include <cmath>
#include <string_view>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;
using platform::Value;
using touch::Output;
using Kind = Output::Kind;

std::string_view nameOf(touch::Road road) {
    switch (road) {
    case touch::Road::TouchScreen:
        return "touch screen";
    case touch::Road::Pointer:
        return "pointer";
    case touch::Road::Touchpad:
        return "touchpad";
    case touch::Road::Keyboard:
        return "keyboard";
    case touch::Road::Listener:
        break;
    }
    return "gesture";
}

std::string_view nameOf(Kind step) {
    switch (step) {
    case Kind::TouchDown:
    case Kind::ButtonDown:
    case Kind::PadDown:
    case Kind::KeyDown:
        return "down";
    case Kind::TouchMove:
    case Kind::PointerMove:
    case Kind::PadMove:
        return "move";
    case Kind::TouchUp:
    case Kind::ButtonUp:
    case Kind::PadUp:
    case Kind::KeyUp:
        return "up";
    case Kind::TouchCancel:
        return "cancel";
    case Kind::GestureBegin:
        return "begin";
    case Kind::GestureEnd:
        return "end";
    case Kind::Call:
        break;
    }
    return "call";
}

bool hasPlace(Kind step) {
    return step == Kind::TouchDown || step == Kind::TouchMove || step == Kind::PointerMove || step == Kind::PadDown ||
           step == Kind::PadMove;
}

bool isOfFinger(touch::Road road) { return road == touch::Road::TouchScreen || road == touch::Road::Touchpad; }

/// Enough precision for readers, both for fractions of a screen and for millimetres.
Value rounded(double number) {
    constexpr double kParts = 1e4;
    return std::round(number * kParts) / kParts;
}

Value nameOfKey(std::int32_t code) {
    const std::string_view name = touch::nameOfChordKey(code);
    return name.empty() ? Value(code) : Value(name);
}

} // namespace

void OutputPrinter::give(const Output& output, touch::Time now) {
    const touch::Road road = touch::roadOf(output.kind);
    auto line = NSMutableDictionary::dictionary();
    if (!display_.empty()) line.setObjectForKey(display_, "display");
    line.setObjectForKey(static_cast<double>(now.count()) / 1000.0, "ms");
    line.setObjectForKey(nameOf(road), "device");
    line.setObjectForKey(nameOf(output.kind), "step");
    if (isOfFinger(road)) line.setObjectForKey(output.number, "finger");
    if (hasPlace(output.kind)) {
        const bool isOnPad = road == touch::Road::Touchpad;
        line.setObjectForKey(rounded(output.at.x), isOnPad ? "x_mm" : "x");
        line.setObjectForKey(rounded(output.at.y), isOnPad ? "y_mm" : "y");
    }
    if (output.kind == Kind::ButtonDown || output.kind == Kind::ButtonUp) {
        line.setObjectForKey(output.button() == touch::Button::Left ? "left" : "right", "button");
    }
    if (road == touch::Road::Keyboard) line.setObjectForKey(nameOfKey(output.number), "key");
    if (road == touch::Road::Listener) {
        line.setObjectForKey(touch::nameOf(output.gesture), "gesture");
        if (output.direction != touch::Direction::None) {
            line.setObjectForKey(touch::nameOf(output.direction), "direction");
        }
    }
    printLine_(jsonLine(line));
}

} // namespace kelvo
