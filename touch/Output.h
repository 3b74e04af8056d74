#pragma once

#include "touch/Gestures.h"
#include "touch/Units.h"

#include <cstdint>

namespace touch {

/// The virtual devices, and the ear of whoever performs calls and keeps the log.
enum class Road : std::uint8_t { TouchScreen, Pointer, Touchpad, Keyboard, Listener };

enum class Button : std::uint8_t { Left, Right };

/// One step of what is given out.
struct Output {
    enum class Kind : std::uint8_t {
        /// `number` is the finger's place in the device's table of fingers, from 0 on; `at` where it is on the screen.
        TouchDown,
        TouchMove,
        TouchUp,
        /// The touch never happened: nobody may take it for a tap.
        TouchCancel,
        /// `at` is a place on the screen.
        PointerMove,
        ButtonDown,
        ButtonUp,
        /// `number` is a finger of the touchpad, from 0 on; `at` where it is on the pad, in millimetres.
        PadDown,
        PadMove,
        PadUp,
        /// `number` is the kernel's code of the key.
        KeyDown,
        KeyUp,
        /// A gesture begins or ends; `gesture` and, where it has one, `direction` say which.
        GestureBegin,
        GestureEnd,
        /// The call that the desktop's table has for `gesture` and `direction` is to be made.
        Call,
    };

    Kind kind = Kind::TouchUp;
    std::int32_t number = 0;
    Point at{};
    Gesture gesture = Gesture::Scroll;
    Shape shape = Shape::ScrollWithTwo;
    Direction direction = Direction::None;
    /// The last step of its device's frame, which takes effect as a whole.
    bool endsFrame = false;
    bool operator==(const Output&) const = default;

    [[nodiscard]] Button button() const { return number == 0 ? Button::Left : Button::Right; }
};

[[nodiscard]] constexpr Road roadOf(Output::Kind kind) {
    switch (kind) {
    case Output::Kind::TouchDown:
    case Output::Kind::TouchMove:
    case Output::Kind::TouchUp:
    case Output::Kind::TouchCancel:
        return Road::TouchScreen;
    case Output::Kind::PointerMove:
    case Output::Kind::ButtonDown:
    case Output::Kind::ButtonUp:
        return Road::Pointer;
    case Output::Kind::PadDown:
    case Output::Kind::PadMove:
    case Output::Kind::PadUp:
        return Road::Touchpad;
    case Output::Kind::KeyDown:
    case Output::Kind::KeyUp:
        return Road::Keyboard;
    case Output::Kind::GestureBegin:
    case Output::Kind::GestureEnd:
    case Output::Kind::Call:
        return Road::Listener;
    }
    return Road::Listener;
}

/// Takes what is given out, in its order. The time is that of the frame or timer that led to it.
class Outputs {
public:
    Outputs() = default;
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    virtual ~Outputs() = default;
    virtual void give(const Output& output, Time now) = 0;
};

} // namespace touch
