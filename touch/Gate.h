#pragma once

#include "touch/FixedList.h"
#include "touch/Output.h"

#include <cstddef>
#include <optional>

namespace touch {

/// Lets out what is given, in its order, but nothing before the moment until which it has been closed.
class Gate final : public Outputs {
public:
    explicit Gate(Outputs& next) : next_(next) {}

    void give(const Output& output, Time now) override;
    /// Whatever is given from now on waits until then. An earlier moment than the one before changes nothing.
    void closeUntil(Time moment);
    /// When something given now would come out.
    [[nodiscard]] Time opensAt(Time now) const;

    /// When something that waits is due.
    [[nodiscard]] std::optional<Time> deadline() const;
    void run(Time now);
    /// Forgets what waits; nobody has seen it.
    void clear();

private:
    /// Some forty quick taps, far more than fit into a desktop's interval. When it is full the gate opens early: a
    /// double click too many harms less than a touch that is lost.
    static constexpr std::size_t kCapacity = 256;

    /// It waits for its own moment: of two taps that must not count together each is let out by itself.
    struct Waiting {
        Output output;
        Time opensAt{0};
    };

    [[nodiscard]] bool replacesLast(const Output& output) const;
    /// Lets out what was to wait until then at the longest.
    void letGo(Time until, Time now);

    Outputs& next_;
    FixedList<Waiting, kCapacity> waiting_;
    Time closedUntil_ = Time::min();
};

} // namespace touch
