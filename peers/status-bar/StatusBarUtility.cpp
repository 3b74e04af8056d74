#include "peers/status-bar/StatusBarUtility.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Log.h"

#include <utility>

namespace kelvo {

namespace {

using platform::CFMessagePortStatus;
using platform::NSMutableDictionary;

bool isIconWanted(StatusBarUtility::Occasion occasion) {
    return occasion == StatusBarUtility::Occasion::Launch ||
           readUtilitiesDictionary().objectForKey(keys::isShowStatuMenu).boolValue();
}

} // namespace

StatusBarUtility::StatusBarUtility(StatusIcon& icon, std::function<void()> startAnew)
    : icon_(icon), startAnew_(std::move(startAnew)) {}

StatusBarUtility::~StatusBarUtility() {
    if (source_) platform::CFRunLoop::getCurrent().removeSource(*source_);
}

StatusBarUtility::Start StatusBarUtility::start(Occasion occasion) {
    const bool isWanted = isIconWanted(occasion);
    if (!openPort()) {
        const Start other = isWanted ? askOtherToShowIcon() : Start::OtherRuns;
        // One that ended in between has left its place.
        if (other != Start::NoPort || !openPort()) return other;
    }
    if (isWanted) {
        showIcon();
    } else {
        hideIcon();
    }
    return Start::IsFirst;
}

void StatusBarUtility::switchOff() {
    const NSMutableDictionary utilities = readUtilitiesDictionary();
    const auto off = NSMutableDictionary::dictionaryWithObjectsAndKeys({{false, keys::isShowStatuMenu}});
    if (!saveSettingItemsToPlist(off, getUilitiesFilePath())) {
        platform::NSLog("%@ cannot be read or written; repair or remove it", getUilitiesFilePath());
    }
    hideIcon();
    // To a pane that shows one display this news changes nothing, and it reads its check box again. With several it
    // would lead the user back to the choice between them.
    if (utilities.objectForKey(keys::currentDeviceType).array().count() != 1) return;
    const auto connected = NSMutableDictionary::dictionaryWithObjectsAndKeys({{true, keys::isConnected}});
    sendToPort(kPreferencePortName, connected, kMessageIDForDeviceIsConnected);
}

bool StatusBarUtility::openPort() {
    port_ = platform::CFMessagePorts::current().createLocal(
        kStatusBarPortName, [this](platform::CFMessagePort&, std::int32_t messageId,
                                   std::span<const std::uint8_t> data) { receive(messageId, data); });
    if (!port_) return false;
    source_ = port_->createRunLoopSource();
    platform::CFRunLoop::getCurrent().addSource(*source_);
    return true;
}

StatusBarUtility::Start StatusBarUtility::askOtherToShowIcon() {
    const auto payload = NSMutableDictionary::dictionaryWithObjectsAndKeys({{icon_.hasPlace(), kHasPlaceKey}});
    switch (sendToPort(kStatusBarPortName, payload, kMessageIDForShowingIcon)) {
    case CFMessagePortStatus::Success:
        hasHeardFromOther_ = true;
        return Start::OtherRuns;
    case CFMessagePortStatus::SendTimeout:
    case CFMessagePortStatus::ReceiveTimeout:
        return Start::OtherIsHung;
    case CFMessagePortStatus::IsInvalid:
    case CFMessagePortStatus::TransportError:
        break;
    }
    return Start::NoPort;
}

void StatusBarUtility::receive(std::int32_t messageId, std::span<const std::uint8_t> data) {
    const auto payload = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data);
    if (messageId == kMessageIDForShowingIcon) {
        if (payload.objectForKey(kHasPlaceKey).boolValue()) {
            showIconInNewPlace();
        } else {
            showIcon();
        }
    } else if (messageId == kMessageIDForStatusMenu) {
        platform::NSLog("message %d %@", messageId, payload);
        if (payload.objectForKey(keys::isShowStatuMenu).boolValue()) {
            showIcon();
        } else {
            hideIcon();
        }
    }
}

void StatusBarUtility::takePlace() {
    if (isWaitingForPlace_) showIconInNewPlace();
}

void StatusBarUtility::showIconInNewPlace() {
    // A toolkit that found no place once does not look for it again.
    if (!icon_.hasPlace()) startAnew_();
    showIcon();
}

void StatusBarUtility::showIcon() {
    isWaitingForPlace_ = !icon_.hasPlace();
    if (!isWaitingForPlace_) {
        icon_.show();
        logChange("icon shown");
    } else if (!std::exchange(hasMissedTray_, true)) {
        platform::NSLog("no system tray; the menu cannot be shown");
    }
}

void StatusBarUtility::hideIcon() {
    isWaitingForPlace_ = false;
    icon_.hide();
    logChange("icon hidden");
}

void StatusBarUtility::logChange(std::string_view change) {
    if (std::exchange(lastChange_, change) != change) platform::NSLog(change);
}

} // namespace kelvo
