#pragma once

#include "touch/Gate.h"
#include "touch/Settings.h"

#include <optional>

namespace touch {

/// Makes the desktop's double clicks the user's: a second tap that is quick and near enough is given where the first
/// was, and one that is not, though the desktop would count it, waits until it no longer does. Nothing is ever added.
class ClickSeries {
public:
    explicit ClickSeries(Gate& gate) : gate_(gate) {}

    /// `glass` is the panel's size in millimetres.
    void setRules(Size glass, const Settings& settings, const Desktop& desktop);

    /// One finger alone is about to be given as a press. Gives the place for it; the gate may be closed for a while.
    [[nodiscard]] Point place(Time landedAt, Point landing, Time now);
    /// Whatever the gate has let out reached the desktop by now. A program that had to wait is late, and the desktop's
    /// time runs from when it gets a press.
    void reachedDesktop(Time now);
    /// How the last press ended. Only a tap can be the first of a double click.
    void ended(bool wasTap) { wasTap_ = wasTap; }
    /// The last press was taken back: to the desktop it never was.
    void takenBack() {
        last_ = beforeLast_;
        wasTap_ = false;
    }
    /// Fingers did something else meanwhile.
    void interrupt() { wasTap_ = false; }
    void clear() {
        last_.reset();
        beforeLast_.reset();
    }

private:
    struct Press {
        Time landedAt{0};
        Time givenAt{0};
        /// Where the first of the series landed; all of them are given there.
        Point anchor;
        bool hasReachedDesktop = false;
    };

    [[nodiscard]] bool continuesSeries(Time landedAt, Point landing) const;
    [[nodiscard]] bool desktopWouldCount(Point landing, Time now) const;

    Gate& gate_;
    Time rate_{0};
    double radius_ = 0.0;
    Time desktopInterval_{0};
    double desktopDistance_ = 0.0;
    std::optional<Press> last_;
    std::optional<Press> beforeLast_;
    bool wasTap_ = false;
};

} // namespace touch
