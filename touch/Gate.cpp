#include "touch/Gate.h"

#include <algorithm>

namespace touch {

void Gate::give(const Output& output, Time now) {
    if (waiting_.empty() && now >= closedUntil_) {
        next_.give(output, now);
        return;
    }
    if (replacesLast(output)) {
        waiting_.back().output = output;
        return;
    }
    if (waiting_.isFull()) letGo(Time::max(), now);
    waiting_.add({output, closedUntil_});
}

/// Of several moves that nobody has seen yet, only the newest matters.
bool Gate::replacesLast(const Output& output) const {
    const bool isMove = output.kind == Output::Kind::TouchMove || output.kind == Output::Kind::PointerMove;
    if (!isMove || !output.endsFrame || waiting_.empty()) return false;
    const Waiting& last = waiting_.end()[-1];
    const bool isAlone = waiting_.size() == 1 || waiting_.end()[-2].output.endsFrame;
    return isAlone && last.output.kind == output.kind && last.output.number == output.number &&
           last.opensAt == closedUntil_;
}

void Gate::closeUntil(Time moment) { closedUntil_ = std::max(closedUntil_, moment); }

Time Gate::opensAt(Time now) const { return std::max(now, closedUntil_); }

std::optional<Time> Gate::deadline() const {
    if (waiting_.empty()) return std::nullopt;
    return waiting_.begin()->opensAt;
}

void Gate::run(Time now) { letGo(now, now); }

void Gate::clear() {
    waiting_.clear();
    closedUntil_ = Time::min();
}

void Gate::letGo(Time until, Time now) {
    std::size_t count = 0;
    for (; count < waiting_.size() && waiting_[count].opensAt <= until; ++count) {
        next_.give(waiting_[count].output, now);
    }
    waiting_.removeFirst(count);
}

} // namespace touch
