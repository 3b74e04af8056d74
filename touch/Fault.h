#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace touch {

/// What cannot happen, if this code is right. Nothing rests on a fault being reported; tests fail at each.
enum class Fault : std::uint8_t {
    DownTwice,
    UpWithoutDown,
    MoveWithoutDown,
    FrameOfTwoDevices,
    FrameLeftOpen,
    SecondGesture,
    EndWithoutGesture,
    UnwantedGesture,
    NotANumber,
    TimeWentBack,
    PressedWithoutFinger,
    LeftDown,
};

[[nodiscard]] constexpr std::string_view nameOf(Fault fault) {
    switch (fault) {
    case Fault::DownTwice:
        return "what is down went down again";
    case Fault::UpWithoutDown:
        return "what is not down went up";
    case Fault::MoveWithoutDown:
        return "what is not down moved";
    case Fault::FrameOfTwoDevices:
        return "a frame has steps of two devices";
    case Fault::FrameLeftOpen:
        return "a frame was not ended";
    case Fault::SecondGesture:
        return "a gesture began while another was on";
    case Fault::EndWithoutGesture:
        return "a gesture ended that was not on";
    case Fault::UnwantedGesture:
        return "a gesture was given out that is off";
    case Fault::NotANumber:
        return "a place is no number, or not on its device";
    case Fault::TimeWentBack:
        return "time went back";
    case Fault::PressedWithoutFinger:
        return "a state that holds a finger has none";
    case Fault::LeftDown:
        return "something was left down after the last finger and timer";
    }
    return "";
}

using FaultHandler = std::function<void(Fault)>;

} // namespace touch
