#include "touch/Judge.h"

#include "touch/Thresholds.h"

#include <cmath>

namespace touch {

void Judge::setGestures(const GestureChoice& gestures) {
    isWanted_ = {};
    addGestures(gestures);
}

void Judge::addGestures(const GestureChoice& gestures) {
    for (std::size_t shape = 0; shape < kShapeCount; ++shape) {
        const auto gesture = gestures.gestureOf(static_cast<Shape>(shape));
        if (gesture) isWanted_[shape][static_cast<std::size_t>(*gesture)] = true;
    }
}

void Judge::give(const Output& output, Time now) {
    if (now < lastTime_) onFault_(Fault::TimeWentBack);
    lastTime_ = now;
    const Road road = roadOf(output.kind);
    judgeFrame(road, output.endsFrame);
    judgePlace(road, output.at);
    judgeStep(road, output);
    next_.give(output, now);
}

void Judge::expectNothingDown() const {
    if (downCount_ > 0 || shapeOn_) onFault_(Fault::LeftDown);
    if (openFrame_) onFault_(Fault::FrameLeftOpen);
}

void Judge::judgeFrame(Road road, bool endsFrame) {
    if (openFrame_ && *openFrame_ != road) onFault_(Fault::FrameOfTwoDevices);
    openFrame_ = endsFrame ? std::nullopt : std::optional(road);
}

void Judge::judgeStep(Road road, const Output& output) {
    switch (output.kind) {
    case Output::Kind::TouchDown:
    case Output::Kind::ButtonDown:
    case Output::Kind::PadDown:
    case Output::Kind::KeyDown:
        goDown(road, output.number);
        return;
    case Output::Kind::TouchMove:
    case Output::Kind::PadMove:
        expectDown(road, output.number);
        return;
    case Output::Kind::TouchUp:
    case Output::Kind::TouchCancel:
    case Output::Kind::ButtonUp:
    case Output::Kind::PadUp:
    case Output::Kind::KeyUp:
        goUp(road, output.number);
        return;
    case Output::Kind::GestureBegin:
    case Output::Kind::GestureEnd:
    case Output::Kind::Call:
        judgeGesture(output);
        return;
    case Output::Kind::PointerMove:
        return;
    }
}

void Judge::judgePlace(Road road, Point at) const {
    const bool isOnPad = road == Road::Touchpad;
    const double width = isOnPad ? thresholds::kPad.width : 1.0;
    const double height = isOnPad ? thresholds::kPad.height : 1.0;
    // Written so that NaN is rejected, too.
    const bool isPlace = at.x >= 0.0 && at.x <= width && at.y >= 0.0 && at.y <= height;
    if (!isPlace) onFault_(Fault::NotANumber);
}

std::optional<std::size_t> Judge::indexOf(std::int32_t number) const {
    if (number < 0 || static_cast<std::size_t>(number) >= kNumbers) return std::nullopt;
    return static_cast<std::size_t>(number);
}

void Judge::goDown(Road road, std::int32_t number) {
    const auto index = indexOf(number);
    if (!index || down_[static_cast<std::size_t>(road)][*index]) {
        onFault_(Fault::DownTwice);
        return;
    }
    down_[static_cast<std::size_t>(road)][*index] = true;
    ++downCount_;
}

void Judge::goUp(Road road, std::int32_t number) {
    const auto index = indexOf(number);
    if (!index || !down_[static_cast<std::size_t>(road)][*index]) {
        onFault_(Fault::UpWithoutDown);
        return;
    }
    down_[static_cast<std::size_t>(road)][*index] = false;
    --downCount_;
}

void Judge::expectDown(Road road, std::int32_t number) const {
    const auto index = indexOf(number);
    if (!index || !down_[static_cast<std::size_t>(road)][*index]) onFault_(Fault::MoveWithoutDown);
}

void Judge::judgeGesture(const Output& output) {
    if (output.kind == Output::Kind::GestureBegin) {
        if (shapeOn_) onFault_(Fault::SecondGesture);
        const auto& wanted = isWanted_[static_cast<std::size_t>(output.shape)];
        if (!wanted[static_cast<std::size_t>(output.gesture)]) onFault_(Fault::UnwantedGesture);
        shapeOn_ = output.shape;
        return;
    }
    if (!shapeOn_ || *shapeOn_ != output.shape) onFault_(Fault::EndWithoutGesture);
    if (output.kind == Output::Kind::GestureEnd) shapeOn_.reset();
}

} // namespace touch
