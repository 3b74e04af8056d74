#include "peers/driver/PanelDisplay.h"

#include <cstdint>
#include <stdexcept>
#include <utility>

namespace kelvo {

std::unique_ptr<PanelDisplay> PanelDisplay::open(const OpenPanel& openPanel, std::unique_ptr<touch::Outputs> out,
                                                 Handlers handlers) {
    auto display = std::make_unique<PanelDisplay>(std::move(handlers));
    display->panel_ = openPanel(*display);
    if (!display->panel_) return nullptr;
    display->out_ = std::move(out);
    display->display_ = std::make_unique<touch::TouchDisplay>(display->panel_->size(), display->splitter_, logFault);
    display->timer_.emplace(*display->display_);
    display->display_->setEnabled(false, displayTime());
    return display;
}

PanelDisplay::~PanelDisplay() {
    if (display_) display_->setEnabled(false, displayTime());
}

void PanelDisplay::setEnabled(bool isEnabled) {
    isEnabled_ = isEnabled;
    // Everything pressed is released before anyone else can see the next finger.
    giveAsWanted();
    panel_->setHeld(isEnabled);
}

void PanelDisplay::setWatched(bool isWatched) {
    isWatched_ = isWatched;
    giveAsWanted();
}

PanelDisplay::State PanelDisplay::state() const {
    if (!isEnabled_) return State::Off;
    if (isHeld_) return State::Held;
    return panel_->isHeldByAnother() ? State::HeldByAnother : State::Waiting;
}

void PanelDisplay::beginRecording(const std::string& path, const std::string& settings) {
    if (recording_) throw std::runtime_error("it is already being recorded");
    recording_ = std::make_unique<RecordingFile>(path, panel_->description(), settings);
    panel_->setPen([this](const touch::KernelEvent& event) { recording_->write(event); });
}

bool PanelDisplay::endRecording() {
    panel_->setPen({});
    const auto recording = std::exchange(recording_, nullptr);
    return recording && recording->finish();
}

void PanelDisplay::Splitter::give(const touch::Output& output, touch::Time now) {
    display_.out_->give(output, now);
    if (display_.recording_) display_.recording_->write(output, now);
    if (output.kind == touch::Output::Kind::Call) display_.handlers_.called(output.gesture, output.direction);
}

void PanelDisplay::panelIsHeld(touch::Time /*now*/) {
    isHeld_ = true;
    giveAsWanted();
}

void PanelDisplay::panelIsFree(touch::Time /*now*/) {
    isHeld_ = false;
    giveAsWanted();
}

void PanelDisplay::panelReported(const touch::Frame& frame) {
    if (!hasFingers_ && !frame.contacts.empty()) handlers_.handBegins();
    hasFingers_ = !frame.contacts.empty();
    if (isWatched_) tellWatcher(frame);
    display_->frame(frame);
    timer_->awaitDeadline();
}

void PanelDisplay::panelIsGone() {
    isHeld_ = false;
    giveAsWanted();
    // A copy, because the callback may destroy this.
    const auto gone = handlers_.gone;
    gone();
}

void PanelDisplay::giveAsWanted() {
    const bool isGiving = isEnabled_ && isHeld_ && !isWatched_;
    if (isGiving != display_->isEnabled()) display_->setEnabled(isGiving, displayTime());
    timer_->awaitDeadline();
}

void PanelDisplay::tellWatcher(const touch::Frame& frame) {
    const touch::Size glass = panel_->size();
    ContactFrame told{static_cast<std::uint64_t>(frame.time.count()), glass.width, glass.height, {}};
    for (const touch::Contact& contact : frame.contacts) {
        if (contact.isPalm) continue;
        told.contacts.push_back({contact.id, contact.place.x / glass.width, contact.place.y / glass.height});
    }
    handlers_.watched(told);
}

} // namespace kelvo
