#include "touch/Gate.h"

#include <algorithm>

namespace touch {

void Gate::give(const Output& output, Time now) {
    if (waiting_.empty() && now >= closedUntil_) {
        next_.give(output, now);
        return;
    }
    // Of moves that nobody has seen yet the newest is enough.
    const bool isMove = output.kind == Output::Kind::TouchMove || output.kind == Output::Kind::PointerMove;
    if (isMove && output.endsFrame && !waiting_.empty() && waiting_.back().kind == output.kind &&
        waiting_.back().number == output.number && (waiting_.size() == 1 || waiting_[waiting_.size() - 2].endsFrame)) {
        waiting_.back() = output;
        return;
    }
    if (waiting_.isFull()) letGo(now);
    waiting_.add(output);
}

void Gate::closeUntil(Time moment) { closedUntil_ = std::max(closedUntil_, moment); }

Time Gate::opensAt(Time now) const { return std::max(now, closedUntil_); }

std::optional<Time> Gate::deadline() const {
    if (waiting_.empty()) return std::nullopt;
    return closedUntil_;
}

void Gate::run(Time now) {
    if (!waiting_.empty() && now >= closedUntil_) letGo(now);
}

void Gate::clear() {
    waiting_.clear();
    closedUntil_ = Time::min();
}

void Gate::letGo(Time now) {
    for (const Output& output : waiting_) next_.give(output, now);
    waiting_.clear();
}

} // namespace touch
