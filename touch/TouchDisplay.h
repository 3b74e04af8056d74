#pragma once

#include "touch/ClickSeries.h"
#include "touch/ContactFilter.h"
#include "touch/Fault.h"
#include "touch/Frame.h"
#include "touch/Gate.h"
#include "touch/Guard.h"
#include "touch/Judge.h"
#include "touch/Output.h"
#include "touch/Player.h"
#include "touch/Recogniser.h"
#include "touch/Rules.h"
#include "touch/Settings.h"

#include <optional>

namespace touch {

/// One touch display: takes the panel's frames and gives out what they mean. It has two entries, a frame and a timeout,
/// each with its time, and says when the next timeout is due; it knows no clock.
///
/// Frames go through, in this order: the filter of what is no finger, the recogniser with the series of taps and the
/// player of gestures, the gate that holds back, the guard of all that is down, and the judge.
class TouchDisplay {
public:
    /// `glass` is the panel's size in millimetres. `out` and what `onFault` refers to outlive this.
    TouchDisplay(Size glass, Outputs& out, FaultHandler onFault);
    TouchDisplay(const TouchDisplay&) = delete;
    TouchDisplay& operator=(const TouchDisplay&) = delete;

    // Each counts from the next finger on: a hand that is on the glass ends as it began.

    void setSettings(const Settings& settings);
    void setDesktop(const Desktop& desktop);

    /// What was due by the frame's time is run first.
    void frame(const Frame& frame);
    /// Runs what is due by then; nothing where that is nothing.
    void timeout(Time now);
    /// When the next timeout is due.
    [[nodiscard]] std::optional<Time> deadline() const;
    /// Whatever has been given out reached the desktop by now. To be told after each entry where times are real.
    void reachedDesktop(Time now) { clicks_.reachedDesktop(now); }

    /// Off, frames lead to nothing. Switching either way lifts everything, and fingers that are on the glass count for
    /// nothing until they have been lifted.
    void setEnabled(bool isEnabled, Time now);
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }

    /// The user allows a slower double click than the desktop: there the desktop decides.
    [[nodiscard]] bool isDoubleClickSlowerThanDesktop() const;

private:
    void changeRules();
    void adoptRules();

    Size glass_;
    FaultHandler onFault_;
    Settings settings_;
    Desktop desktop_;
    Rules rules_;
    std::optional<Rules> pending_;
    bool isEnabled_ = true;
    Time lastTime_ = Time::min();

    ContactFilter filter_;
    Judge judge_;
    Guard guard_;
    Gate gate_;
    ClickSeries clicks_;
    Player player_;
    Recogniser recogniser_;
};

} // namespace touch
