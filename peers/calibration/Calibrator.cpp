#include "peers/calibration/Calibrator.h"

#include "TDUtilities.h"
#include "peers/driver/DisplayTimer.h"
#include "peers/driver/TouchSettings.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using State = touch::CalibrationRun::State;

NSMutableArray arrayOf(touch::Point place) { return NSMutableArray::arrayWithObjects({place.x, place.y}); }

NSMutableDictionary storedFormOf(const touch::CalibrationRun& run, const std::string& output) {
    auto matrix = NSMutableArray::arrayWithObjects();
    for (const double number : run.result().matrix) matrix.addObject(number);
    auto points = NSMutableArray::arrayWithObjects();
    for (const touch::CalibrationPoint& point : run.points()) {
        points.addObject(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{arrayOf(point.glass), "Glass"}, {arrayOf(point.target), "Target"}}));
    }
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{matrix, "Matrix"}, {points, "Points"}, {output, "Output"}});
}

Calibrator::Outcome outcomeOf(DisplayWatch::End end) {
    switch (end) {
    case DisplayWatch::End::DisplayGone:
        return Calibrator::Outcome::DisplayGone;
    case DisplayWatch::End::Refused:
        return Calibrator::Outcome::NotWatched;
    case DisplayWatch::End::NoBus:
    case DisplayWatch::End::NoDriver:
        break;
    }
    return Calibrator::Outcome::NoDriver;
}

} // namespace

Calibrator::Calibrator(platform::CFRunLoop& loop, std::string display, bool isPrecise, Handlers handlers,
                       std::string address)
    : loop_(loop),
      display_(std::move(display)),
      isPrecise_(isPrecise),
      handlers_(std::move(handlers)),
      address_(address),
      driver_(loop, std::move(address)) {}

Calibrator::~Calibrator() {
    if (timer_) timer_->invalidate();
}

/// The driver knows how the desktop turned the display; where the crosses are on the panel depends on that.
void Calibrator::begin() {
    driver_.perform({"screen", display_}, [this](const DriverAnswer& answer) { watch(answer); });
}

void Calibrator::watch(const DriverAnswer& answer) {
    if (answer.outcome == DriverAnswer::Outcome::Done) std::istringstream(answer.text) >> desktop_.turns;
    const auto stored = NSMutableDictionary::dictionaryWithContentsOfFile(getSettingsFilePath(display_));
    settings_ = touchSettingsOf(display_, stored, {});
    desktop_.nativePixels = nativePixelsOf(stored);
    watch_ = std::make_unique<DisplayWatch>(
        loop_, display_,
        DisplayWatch::Handlers{[this] { start(); },
                               [this](const touch::Frame& frame, touch::Size glass) { see(frame, glass); },
                               [this](DisplayWatch::End why, const std::string& text) {
                                   if (!text.empty()) platform::NSLog("%@", text);
                                   end(outcomeOf(why));
                               }},
        address_);
    watch_->begin();
}

void Calibrator::start() {
    run_.emplace(settings_, desktop_, isPrecise_, displayTime());
    follow();
}

void Calibrator::see(const touch::Frame& frame, touch::Size glass) {
    if (!run_ || isOver_) return;
    run_->see(frame, glass);
    follow();
}

void Calibrator::follow() {
    awaitDeadline();
    switch (run_->state()) {
    case State::Confirmed:
        return end(save() ? Outcome::Saved : Outcome::NotSaved);
    case State::Missed:
        return end(Outcome::Missed);
    case State::Refused:
        return end(Outcome::Refused);
    case State::TimedOut:
        return end(Outcome::TimedOut);
    case State::Touch:
    case State::Lift:
    case State::Confirm:
        break;
    }
    handlers_.changed();
}

void Calibrator::awaitDeadline() {
    if (timer_) timer_->invalidate();
    if (isOver_ || run_->isOver()) return;
    const double seconds = std::chrono::duration<double>(run_->deadline() - displayTime()).count();
    timer_ = platform::NSTimer::scheduledTimerWithTimeInterval(std::max(0.0, seconds), *this, [this] {
        run_->run(displayTime());
        follow();
    });
}

void Calibrator::end(Outcome outcome) {
    if (std::exchange(isOver_, true)) return;
    if (timer_) timer_->invalidate();
    handlers_.over(outcome);
}

bool Calibrator::save() const {
    auto entries = NSMutableDictionary::dictionary();
    entries.setObjectForKey(storedFormOf(*run_, output_), display_);
    return saveSettingItemsToPlist(entries, getAdvanceCalibrationFilePath());
}

} // namespace kelvo
