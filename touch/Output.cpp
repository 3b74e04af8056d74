#include "touch/Output.h"

namespace touch {

Road roadOf(Output::Kind kind) {
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

} // namespace touch
