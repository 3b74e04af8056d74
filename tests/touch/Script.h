#pragma once

#include "touch/TouchDisplay.h"

#include <string>
#include <string_view>
#include <vector>

namespace touching {

/// A display of 200 by 120 millimetres with every gesture of the newest catalogue on, and a desktop that takes touches
/// back. Tests change what they are about.
struct Stage {
    touch::Size glass{200.0, 120.0};
    touch::Settings settings;
    touch::Desktop desktop;

    Stage();
    /// The record of that name.
    touch::GestureRecord& record(std::string_view name);
    void switchOff(std::string_view name) { record(name).isEnabled = false; }
    void choose(std::string_view name, std::string_view action);
};

/// The gestures of the newest catalogue, each on its first action.
[[nodiscard]] std::vector<touch::GestureRecord> newestGestures();
/// Those of the two before.
[[nodiscard]] std::vector<touch::GestureRecord> lionGestures();
[[nodiscard]] std::vector<touch::GestureRecord> snowLeopardGestures();

/// Plays fingers, and then time until nothing is due any more, and gives what came out, a frame a line. A fault is a
/// line of its own, and a failure.
///
/// A line of fingers is "MILLISECONDS: ID@X,Y ID@X,Y", all that are on the glass in millimetres, or "MILLISECONDS: -".
/// "MILLISECONDS: off" and "on" switch the driver; at "MILLISECONDS: reached" what was given reaches the desktop. What
/// comes out is "MILLISECONDS DEVICE STEP STEP":
///
///     0 touch +0 30,40        down, "~0 30,40" moved, "-0" up, "x0" taken back
///     0 pointer 30,40         moved there; "+right", "-right"
///     0 pad +0 -10,0          a finger on the pad, from its middle
///     0 key +56               the kernel's code
///     0 gesture Rotate begins, "ends", "calls"; with its direction, where it has one
[[nodiscard]] std::string play(const Stage& stage, std::string_view fingers);

/// The lines of `output` that have one of these words as their device.
[[nodiscard]] std::string only(std::string_view devices, const std::string& output);
/// The gestures that began, each as "NAME" or "NAME direction", in one line.
[[nodiscard]] std::string gesturesIn(const std::string& output);
/// `text` without the line feed it begins with and the blanks its lines begin with.
[[nodiscard]] std::string lines(std::string_view text);

/// A hand whose fingers move evenly, written as frames every `step` milliseconds.
struct Stroke {
    touch::Point from;
    touch::Point to;
    double landsAt = 0.0;
    double liftsAt = 0.0;
    /// It moves between these; by default from landing to lifting.
    double movesFrom = -1.0;
    double movesTo = -1.0;
};
[[nodiscard]] std::string strokes(const std::vector<Stroke>& fingers, double step = 8.0);

/// What came out, as the tests read it.
class Transcript final : public touch::Outputs {
public:
    explicit Transcript(touch::Size screen) : screen_(screen) {}
    void give(const touch::Output& output, touch::Time now) override;
    void fault(touch::Fault fault);
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    touch::Size screen_;
    std::string text_;
    bool isInFrame_ = false;
};

} // namespace touching
