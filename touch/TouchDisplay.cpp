#include "touch/TouchDisplay.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <utility>

namespace touch {

TouchDisplay::TouchDisplay(Size glass, Outputs& out, FaultHandler onFault)
    : glass_(glass),
      onFault_(std::move(onFault)),
      rules_(glass_, settings_, desktop_),
      judge_(out, onFault_),
      guard_(judge_),
      gate_(guard_),
      clicks_(gate_),
      player_(gate_),
      recogniser_(gate_, clicks_, player_, onFault_) {
    recogniser_.setRules(&rules_);
    changeRules();
}

void TouchDisplay::setSettings(const Settings& settings) {
    settings_ = settings;
    changeRules();
}

void TouchDisplay::setDesktop(const Desktop& desktop) {
    desktop_ = desktop;
    changeRules();
}

void TouchDisplay::changeRules() { pending_.emplace(glass_, settings_, desktop_); }

void TouchDisplay::adoptRules() {
    if (!pending_ || !recogniser_.isIdle()) return;
    recogniser_.settlePendingTap(lastTime_);
    rules_ = *std::exchange(pending_, std::nullopt);
    clicks_.setRules(glass_, settings_, desktop_);
    // What waits at the gate has been decided by the rules of before.
    if (gate_.deadline()) {
        judge_.addGestures(rules_.gestures);
    } else {
        judge_.setGestures(rules_.gestures);
    }
}

void TouchDisplay::frame(const Frame& frame) {
    const Sightings& sightings = filter_.filter(frame);
    if (!isEnabled_) return;
    timeout(sightings.time);
    // A timer may have run late, after the frame was stamped.
    lastTime_ = std::max(sightings.time, lastTime_);
    if (!sightings.fingers.empty()) adoptRules();
    recogniser_.see(sightings, lastTime_);
    if (sightings.fingers.empty() && !deadline()) judge_.expectNothingDown();
}

void TouchDisplay::timeout(Time now) {
    for (auto due = deadline(); due && *due <= now; due = deadline()) {
        lastTime_ = std::max(lastTime_, *due);
        // What waits goes first: it was given before.
        gate_.run(lastTime_);
        recogniser_.run(lastTime_);
    }
}

std::optional<Time> TouchDisplay::deadline() const {
    const auto waits = gate_.deadline();
    const auto decides = recogniser_.deadline();
    if (!waits || !decides) return waits ? waits : decides;
    return std::min(*waits, *decides);
}

bool TouchDisplay::isDoubleClickSlowerThanDesktop() const {
    return std::min(settings_.doubleClickRate, thresholds::kLongestDoubleClick) > desktop_.doubleClickInterval;
}

void TouchDisplay::setEnabled(bool isEnabled, Time now) {
    isEnabled_ = isEnabled;
    lastTime_ = std::max(lastTime_, now);
    gate_.clear();
    player_.clear();
    recogniser_.clear();
    clicks_.clear();
    filter_.ignoreWhatIsDown();
    guard_.liftAll(rules_.takesTouchesBack, lastTime_);
}

} // namespace touch
