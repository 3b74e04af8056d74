#pragma once

#include "touch/FrameWriter.h"
#include "touch/Output.h"

#include <cstdint>
#include <optional>

namespace touch {

/// What fingers have done together since a gesture began.
struct Motion {
    /// In millimetres.
    Point way;
    /// How many times as far apart.
    double scale = 1.0;
    /// Clockwise, in radians.
    double angle = 0.0;
    bool operator==(const Motion&) const = default;
};

/// Plays gestures on the virtual touchpad with fingers that stand as a desktop expects them: real ones stand in any
/// way, and a desktop can take four that come together for a swipe. What they have done before a gesture was certain is
/// caught up with in steps that no desktop takes for a jump.
class Player {
public:
    explicit Player(Outputs& next) : frames_(next) {}

    /// Puts `fingers` on the pad for a shape. None must be there.
    void begin(Shape shape, std::int32_t fingers, Time now);
    /// What the real fingers have come to.
    void follow(const Motion& motion, Time now);
    /// The real fingers are done; those on the pad go up once they have caught up.
    void end(Time now);
    /// They go up now, wherever they are.
    void finish(Time now);
    /// Forgets everything; whoever owns what is down lifts it.
    void clear() { state_ = State::Idle; }

    [[nodiscard]] bool isPlaying() const { return state_ != State::Idle; }
    [[nodiscard]] std::optional<Time> deadline() const;
    /// Goes on to catch up. True when that was the end of it.
    bool run(Time now);

private:
    enum class State : std::uint8_t { Idle, Following, Ending };

    void show(const Motion& motion, Time now);
    void stepTowards(const Motion& motion, Time now);
    void lift(Time now);
    [[nodiscard]] Point placeOf(std::int32_t finger, const Motion& motion) const;
    [[nodiscard]] double farthestStep(const Motion& from, const Motion& to) const;

    FrameWriter frames_;
    State state_ = State::Idle;
    Shape shape_ = Shape::ScrollWithTwo;
    std::int32_t fingers_ = 0;
    Motion target_;
    Motion shown_;
    Time shownAt_{0};
};

} // namespace touch
