#include "touch/Guard.h"

#include <algorithm>

namespace touch {

namespace {

/// The entry for `number`, or null if the device has none.
template <std::size_t Count>
bool* entry(std::array<bool, Count>& entries, std::int32_t number) {
    return number >= 0 && static_cast<std::size_t>(number) < Count ? &entries[static_cast<std::size_t>(number)]
                                                                   : nullptr;
}

/// Whether this changes anything.
bool changes(bool* isDown, bool becomesDown) {
    if (!isDown || *isDown == becomesDown) return false;
    *isDown = becomesDown;
    return true;
}

bool isSet(const bool* isDown) { return isDown && *isDown; }

} // namespace

void Guard::give(const Output& output, Time now) {
    if (passes(output)) frames_.add(output);
    if (output.endsFrame) frames_.end(now);
}

bool Guard::passes(const Output& output) {
    switch (output.kind) {
    case Output::Kind::TouchDown:
        return changes(entry(touches_, output.number), true);
    case Output::Kind::TouchMove:
        return isSet(entry(touches_, output.number));
    case Output::Kind::TouchUp:
    case Output::Kind::TouchCancel:
        return changes(entry(touches_, output.number), false);
    case Output::Kind::ButtonDown:
        return changes(entry(buttons_, output.number), true);
    case Output::Kind::ButtonUp:
        return changes(entry(buttons_, output.number), false);
    case Output::Kind::PadDown:
        return changes(entry(padFingers_, output.number), true);
    case Output::Kind::PadMove:
        return isSet(entry(padFingers_, output.number));
    case Output::Kind::PadUp:
        return changes(entry(padFingers_, output.number), false);
    case Output::Kind::KeyDown:
        return changesKey(output.number, true);
    case Output::Kind::KeyUp:
        return changesKey(output.number, false);
    case Output::Kind::GestureBegin:
        if (gesture_) return false;
        gesture_ = output;
        return true;
    case Output::Kind::GestureEnd:
        if (!gesture_) return false;
        gesture_.reset();
        return true;
    case Output::Kind::PointerMove:
    case Output::Kind::Call:
        return true;
    }
    return false;
}

bool Guard::changesKey(std::int32_t code, bool isDown) {
    auto* const found = std::find(keys_.begin(), keys_.end(), code);
    if (code <= 0 || isDown == (found != keys_.end())) return false;
    auto* const entry = isDown ? std::find(keys_.begin(), keys_.end(), 0) : found;
    if (entry == keys_.end()) return false;
    *entry = isDown ? code : 0;
    return true;
}

void Guard::liftAll(bool takesTouchesBack, Time now) {
    for (std::size_t i = 0; i < touches_.size(); ++i) {
        give({.kind = takesTouchesBack ? Output::Kind::TouchCancel : Output::Kind::TouchUp,
              .number = static_cast<std::int32_t>(i),
              .endsFrame = i + 1 == touches_.size()},
             now);
    }
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        give({.kind = Output::Kind::ButtonUp, .number = static_cast<std::int32_t>(i), .endsFrame = true}, now);
    }
    for (std::size_t i = 0; i < padFingers_.size(); ++i) {
        give({.kind = Output::Kind::PadUp,
              .number = static_cast<std::int32_t>(i),
              .endsFrame = i + 1 == padFingers_.size()},
             now);
    }
    for (const std::int32_t key : keys_) {
        give({.kind = Output::Kind::KeyUp, .number = key, .endsFrame = true}, now);
    }
    if (!gesture_) return;
    Output end = *gesture_;
    end.kind = Output::Kind::GestureEnd;
    give(end, now);
}

bool Guard::isAnythingDown() const {
    const auto isTrue = [](bool isDown) { return isDown; };
    return std::any_of(touches_.begin(), touches_.end(), isTrue) ||
           std::any_of(buttons_.begin(), buttons_.end(), isTrue) ||
           std::any_of(padFingers_.begin(), padFingers_.end(), isTrue) ||
           std::any_of(keys_.begin(), keys_.end(), [](std::int32_t key) { return key != 0; }) || gesture_.has_value();
}

} // namespace touch
