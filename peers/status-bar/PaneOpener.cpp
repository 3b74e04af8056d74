#include "peers/status-bar/PaneOpener.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Log.h"

#include <utility>

namespace kelvo {

namespace {

using platform::CFMessagePortStatus;
using platform::NSMutableDictionary;

/// A pane that was started is looked for at this interval, for ten seconds.
constexpr double kLookIntervalSeconds = 0.2;
constexpr int kLooks = 50;

CFMessagePortStatus sendTab(std::int32_t index) {
    const auto payload = NSMutableDictionary::dictionaryWithObjectsAndKeys({{index, keys::selectedMenuItem}});
    return sendToPort(kPreferencePortName, payload, kMessageIDForSelectedMenuItem);
}

} // namespace

PaneOpener::PaneOpener(std::function<bool()> startPane) : startPane_(std::move(startPane)) {}

PaneOpener::~PaneOpener() {
    if (nextLook_) nextLook_->invalidate();
}

void PaneOpener::openAtTab(std::int32_t index) {
    tab_ = index;
    // Whoever tells the pane right now, or is about to, finds this tab.
    if (!isTelling_ && !nextLook_) tellPane();
}

void PaneOpener::tellPane() {
    nextLook_.reset();
    while (tab_) {
        const std::int32_t index = *std::exchange(tab_, std::nullopt);
        isTelling_ = true;
        const CFMessagePortStatus status = sendTab(index);
        isTelling_ = false;
        switch (status) {
        case CFMessagePortStatus::Success:
            looksLeft_ = 0;
            break;
        case CFMessagePortStatus::SendTimeout:
        case CFMessagePortStatus::ReceiveTimeout:
            platform::NSLog("the settings do not answer; close their window and choose again");
            return giveUp();
        case CFMessagePortStatus::IsInvalid:
        case CFMessagePortStatus::TransportError:
            return awaitPane(tab_.value_or(index));
        }
    }
}

void PaneOpener::awaitPane(std::int32_t index) {
    if (looksLeft_ == 0) {
        if (!startPane_()) {
            platform::NSLog("the settings cannot be started; is kelvo-touch-display installed?");
            return giveUp();
        }
        looksLeft_ = kLooks;
    } else if (--looksLeft_ == 0) {
        platform::NSLog("the settings were started but do not open");
        return giveUp();
    }
    tab_ = index;
    nextLook_ = platform::NSTimer::scheduledTimerWithTimeInterval(kLookIntervalSeconds, *this, [this] { tellPane(); });
}

void PaneOpener::giveUp() {
    tab_.reset();
    looksLeft_ = 0;
}

} // namespace kelvo
