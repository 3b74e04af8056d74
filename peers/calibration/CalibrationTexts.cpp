#include "peers/calibration/CalibrationTexts.h"

#include "TDUtilities.h"

#include <cstdio>

namespace kelvo {

namespace {

using Outcome = Calibrator::Outcome;
using State = touch::CalibrationRun::State;

/// "0.3", as it is written in every language of the texts but for its point.
std::string millimetres(double length) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.1f", length);
    return text;
}

std::string filled(std::string text, const std::string& part) {
    const std::size_t place = text.find("%@");
    return place == std::string::npos ? text : text.replace(place, 2, part);
}

std::string unchanged(const std::string& reason) {
    return reason + "\n" + localizedString("CalibrationTool.Unchanged", "Nothing was changed.");
}

std::string reasonOf(const touch::CalibrationResult& result) {
    if (result.fault == touch::CalibrationFault::OnALine) {
        return localizedString("CalibrationTool.OnALine", "The touches are too close to a single line.");
    }
    return localizedString("CalibrationTool.Swapped",
                           "The touches do not match the crosses. One of them may have been in the wrong place.");
}

} // namespace

std::string instructionOf(const Calibrator& calibrator) {
    const auto& run = calibrator.run();
    if (!run) return localizedString("CalibrationTool.Waiting", "Waiting for the driver");
    switch (run->state()) {
    case State::Lift:
        return localizedString("CalibrationTool.Lift", "Lift your finger.");
    case State::Confirm:
        return filled(localizedString("CalibrationTool.Confirm",
                                      "Touch the cross again to keep this calibration. It is off by %@ mm."),
                      millimetres(run->result().residual));
    case State::Touch:
    case State::Confirmed:
    case State::Missed:
    case State::Refused:
    case State::TimedOut:
        break;
    }
    return run->isHolding() ? localizedString("CalibrationTool.Hold", "Hold your finger still.")
                            : localizedString("CalibrationTool.Touch", "Touch and hold the center of the cross.");
}

std::string textOf(Outcome outcome, const Calibrator& calibrator) {
    switch (outcome) {
    case Outcome::Saved:
        return localizedString("CalibrationTool.Saved", "The calibration has been saved.");
    case Outcome::Missed:
        return unchanged(localizedString("CalibrationTool.Missed", "The touch missed the cross."));
    case Outcome::Refused:
        return unchanged(reasonOf(calibrator.run()->result()));
    case Outcome::TimedOut:
        return unchanged(localizedString("CalibrationTool.TimedOut", "Nothing was touched for 20 seconds."));
    case Outcome::DisplayGone:
        return unchanged(localizedString("CalibrationTool.DisplayGone", "The touchscreen was disconnected."));
    case Outcome::NotSaved:
        return unchanged(localizedString("CalibrationTool.NotSaved", "The calibration could not be saved."));
    case Outcome::NotWatched:
        return unchanged(localizedString("CalibrationTool.NotWatched",
                                         "The touchscreen is not connected, the driver is switched off, or another "
                                         "program is using the touchscreen."));
    case Outcome::NoDriver:
        break;
    }
    return unchanged(localizedString("CalibrationTool.NoDriver", "The driver is not running or not responding."));
}

} // namespace kelvo
