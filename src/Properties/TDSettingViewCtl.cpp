#include "Properties/TDSettingViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/SystemVersion.h"

#include <utility>

using platform::NSControl;
using platform::NSLog;
using platform::NSMutableDictionary;
using platform::NSNotification;

namespace {

constexpr std::int32_t kRangeViewType = 1;
constexpr std::int32_t kRateViewType = 2;
constexpr std::int32_t kTestViewType = 3;

/// The interval of a double click, in seconds, and its range, in the driver's unit.
constexpr double kNormalRate = 0.5;
constexpr std::int32_t kNormalRange = 32;

/// In ticks of 1/60 second.
constexpr std::uint32_t kLongestLockWait = 600;

/// In points.
constexpr double kRowMargin = 10.0;
constexpr int kSecondColumnExtraWidth = 20;
constexpr double kFullScreenExtraWidth = 50.0;

/// The switch of the dock's preferences that a gesture follows; none for most gestures.
std::string_view dockKeyOf(std::string_view gesture) {
    if (gesture == gestures::appExpose) return systemKeys::appExpose;
    if (gesture == gestures::showDesktop) return systemKeys::showDesktop;
    if (gesture == gestures::missionControl) return systemKeys::missionControl;
    if (gesture == gestures::launchpad) return systemKeys::launchpad;
    return "";
}

/// Whether the action of a page swipe scrolls with two fingers, which the system has a switch for.
bool scrollsWithTwoFingers(const GestureRecord& record) {
    const std::int32_t index = record.objectForKey(keys::selectedIndex).intValue();
    return index == 0 || index == 2;
}

void waitForPreferenceLocks() {
    platform::Clock& clock = platform::Clock::current();
    const std::uint32_t start = clock.tickCount();
    while (true) {
        const std::uint32_t now = clock.tickCount();
        const bool isDockLocked = isDockPreferenceFileLock();
        const bool isGlobalLocked = isGlobalPreferenceFileLock();
        if (!isDockLocked && !isGlobalLocked) return;
        if (now - start > kLongestLockWait) return;
        NSLog("   dock.plist is lock ");
        clock.sleep(1);
    }
}

} // namespace

TDSettingViewCtl::TDSettingViewCtl() : TDPagedTabController("TDSettingViewCtl") { rengeText_.setDelegate(this); }

TDSettingViewCtl::~TDSettingViewCtl() = default;

std::vector<platform::NSOutlet> TDSettingViewCtl::outlets() {
    return {{"settingTabView_", &settingTabView_},
            {"rangeView_", &rangeView_},
            {"rateView_", &rateView_},
            {"testView_", &testView_},
            {"rangeSlider_", &rangeSlider_},
            {"rateSlider_", &rateSlider_},
            {"rengeText_", &rengeText_},
            {"gestureView_", &gestureView_},
            {"rightClickBotton_", &rightClickBotton_},
            {"longPressInterval_", &longPressInterval_}};
}

std::vector<platform::NSNibAction> TDSettingViewCtl::actions() {
    return {{"setRightClickParameters:", [this](NSControl& sender) { setRightClickParameters(sender); }},
            {"doubleClickSpeedNormal:", [this](NSControl& sender) { doubleClickSpeedNormal(sender); }},
            {"doubleClickRangeNormal:", [this](NSControl& sender) { doubleClickRangeNormal(sender); }},
            {"rateSliderValueChange:", [this](NSControl& sender) { rateSliderValueChange(sender); }},
            {"rangeSliderValueChange:", [this](NSControl& sender) { rangeSliderValueChange(sender); }}};
}

void TDSettingViewCtl::setRightClickParameters(NSControl& /*sender*/) {
    longPressInterval_.setEnabled(rightClickBotton_.state() == 1);
    resetDeviceParameter(payloads::rightClick(longPressInterval_.isEnabled(), longPressInterval_.doubleValue()),
                         kMessageIDForRightClick);
}

bool TDSettingViewCtl::controlTextShouldEndEditing(platform::NSTextField& /*control*/, const std::string& editor) {
    if (editor.empty()) {
        rengeText_.setTitleWithMnemonic(std::to_string(doubleClickRange_));
        return true;
    }
    doubleClickRange_ = platform::truncatedToInt32(platform::leadingNumber(editor));
    setRenge();
    sendRange(static_cast<double>(doubleClickRange_));
    return true;
}

bool TDSettingViewCtl::controlDidFailToFormatStringErrorDescription(platform::NSTextField& /*control*/,
                                                                    const std::string& /*text*/,
                                                                    const std::string& /*error*/) {
    rengeText_.setTitleWithMnemonic(std::to_string(doubleClickRange_));
    return true;
}

void TDSettingViewCtl::systemPreferenceFileCheck() {
    NSLog("   systemPreferenceFileCheck    ");
    waitForPreferenceLocks();
    const auto dock = NSMutableDictionary::dictionaryWithContentsOfFile(getDockPreferenceFilePath());
    const auto global = NSMutableDictionary::dictionaryWithContentsOfFile(getGlobalPreferenceFilePath());

    for (std::size_t i = 0; i < actionArr.count(); ++i) {
        GestureRecord record = actionArr.objectAtIndex(i).dictionary();
        const std::string name = record.objectForKey(keys::name).string().value_or("");
        const bool isEnabled = record.objectForKey(keys::isEnable).boolValue();
        if (const std::string_view dockKey = dockKeyOf(name); !dockKey.empty()) {
            if (!dock.objectForKey(dockKey).boolValue() && isEnabled) record.setObjectForKey(false, keys::isEnable);
        } else if (name == gestures::swipeBetweenPages) {
            if (isSnowLeopard(platform::Gestalt(platform::gestaltSystemVersion))) continue;
            if (global.objectForKey(systemKeys::swipeNavigateWithScrolls).boolValue()) continue;
            if (isEnabled && scrollsWithTwoFingers(record)) record.setObjectForKey(false, keys::isEnable);
        }
    }
}

void TDSettingViewCtl::updateUIState() {
    const std::string path = getSettingsFilePath(gModelType);
    const bool exists = platform::NSFileManager::defaultManager().fileExistsAtPath(path);
    NSLog("updateUIState %@", path);

    NSMutableDictionary settings;
    if (exists) {
        settings = NSMutableDictionary::dictionaryWithContentsOfFile(path);
        NSLog("%@", settings);
        removeRows();
        actionArr = settings.objectForKey(keys::gestureArray).array();
        NSLog("actionArr == %@", actionArr);
        if (!actionArr) takeNewCatalogue(path);
        gSettings = actionArr;
        setRate(settings.objectForKey(keys::doubleClickRate).doubleValue());
        doubleClickRange_ = settings.objectForKey(keys::doubleClickRange).intValue();
        NSLog("%f,%d", doubleClickRate_, doubleClickRange_);
    } else {
        // The rows of the list before this one are left standing; their area keeps them.
        gersturesViewArray.clear();
        takeNewCatalogue(path);
        setRate(kNormalRate);
        doubleClickRange_ = kNormalRange;
    }
    setRenge();
    loadRightClick(settings);

    NSLog("actionArr1 == %@", actionArr);
    systemPreferenceFileCheck();
    NSLog("actionArr2 == %@", actionArr);
    buildRows();
}

bool TDSettingViewCtl::saveItemToInfoPlistForKey(const platform::Value& item, std::string_view key) {
    const std::string path = getSettingsFilePath(gModelType);
    auto settings = platform::NSFileManager::defaultManager().fileExistsAtPath(path)
                        ? NSMutableDictionary::dictionaryWithContentsOfFile(path)
                        : NSMutableDictionary::dictionary();
    if (settings.objectForKey(key).isEqual(item)) return false;
    settings.setObjectForKey(item, key);
    (void)settings.writeToFileAtomically(path);
    return true;
}

void TDSettingViewCtl::doubleClickSpeedNormal(NSControl& /*sender*/) {
    setRate(kNormalRate);
    sendRate();
}

void TDSettingViewCtl::doubleClickRangeNormal(NSControl& /*sender*/) {
    doubleClickRange_ = kNormalRange;
    setRenge();
    sendRange(doubleClickRange_);
}

void TDSettingViewCtl::rateSliderValueChange(NSControl& sender) {
    doubleClickRate_ = 1.0 - dynamic_cast<platform::NSSlider&>(sender).doubleValue();
    setRateInTestAreas();
    sendRate();
}

void TDSettingViewCtl::rangeSliderValueChange(NSControl& sender) {
    doubleClickRange_ = platform::truncatedToInt32(dynamic_cast<platform::NSSlider&>(sender).doubleValue());
    setRenge();
    sendRange(doubleClickRange_);
}

void TDSettingViewCtl::setRenge() {
    const double range = doubleClickRange_;
    rangeView_.setRange(range);
    rangeSlider_.setDoubleValue(range);
    rateView_.setRange(range);
    testView_.setRange(range);
    rengeText_.setTitleWithMnemonic(std::to_string(doubleClickRange_));
}

void TDSettingViewCtl::doubleClickOnTestView(const NSNotification& /*notification*/) {
    testView_.changeDrawType();
    testView_.setNeedsDisplay(true);
}

void TDSettingViewCtl::doubleClickOnRateView(const NSNotification& /*notification*/) {
    setRate(rateView_.timeInterval());
    sendRate();
}

void TDSettingViewCtl::awakeFromNib() {
    rangeView_.setViewType(kRangeViewType);
    rateView_.setViewType(kRateViewType);
    testView_.setViewType(kTestViewType);

    const auto settings = NSMutableDictionary::dictionaryWithContentsOfFile(getSettingsFilePath(gModelType));
    const platform::Value rate = settings.objectForKey(keys::doubleClickRate);
    // Read in single precision here, in double precision by every later reload.
    setRate(rate.hasNumber() ? static_cast<double>(rate.floatValue()) : kNormalRate);

    rangeSlider_.setDoubleValue(kNormalRange);
    if (const platform::Value range = settings.objectForKey(keys::doubleClickRange); range.hasNumber()) {
        doubleClickRange_ = range.intValue();
        rangeSlider_.setDoubleValue(doubleClickRange_);
    }
    const double shownRange = rangeSlider_.doubleValue();
    rangeView_.setRange(shownRange);
    rateView_.setRange(shownRange);
    testView_.setRange(shownRange);
    rangeView_.setNeedsDisplay(true);
    rengeText_.setTitleWithMnemonic(std::to_string(platform::truncatedToInt32(shownRange)));

    auto& center = platform::NSNotificationCenter::defaultCenter();
    center.addObserver(*this, kDoubleClickHappenOnRateView,
                       [this](const NSNotification& notification) { doubleClickOnRateView(notification); });
    center.addObserver(*this, kDoubleClickHappenOnTestView,
                       [this](const NSNotification& notification) { doubleClickOnTestView(notification); });
}

void TDSettingViewCtl::resetTabView() { settingTabView_.selectTabViewItemAtIndex(0); }

void TDSettingViewCtl::removeRows() {
    for (const auto& row : gersturesViewArray) row->view().removeFromSuperview();
    gersturesViewArray.clear();
}

/// Below the first version with gestures there is no catalogue; then there is no list either, and none to save.
void TDSettingViewCtl::takeNewCatalogue(const std::string& settingsPath) {
    actionArr = gestureCatalogueForVersion(platform::Gestalt(platform::gestaltSystemVersion));
    gSettings = actionArr;
    if (!actionArr) return;
    saveSettingItemsToPlist(NSMutableDictionary::dictionaryWithObjectsAndKeys({{actionArr, keys::gestureArray}}),
                            settingsPath);
}

void TDSettingViewCtl::setRate(double rate) {
    doubleClickRate_ = rate;
    rateSlider_.setDoubleValue(1.0 - doubleClickRate_);
    setRateInTestAreas();
}

void TDSettingViewCtl::setRateInTestAreas() {
    rateView_.setTimeInterval(doubleClickRate_);
    testView_.setTimeInterval(doubleClickRate_);
}

void TDSettingViewCtl::loadRightClick(const NSMutableDictionary& settings) {
    const NSMutableDictionary rightClick = settings.objectForKey(keys::rightClick).dictionary();
    const bool isEnabled = rightClick.objectForKey(keys::rightClickIsEnable).boolValue();
    rightClickBotton_.setState(isEnabled ? 1 : 0);
    longPressInterval_.setEnabled(isEnabled);
    longPressInterval_.setDoubleValue(rightClick.objectForKey(keys::rightClickTimeIntelval).doubleValue());
}

void TDSettingViewCtl::buildRows() {
    int n = 0;
    int column = 0;
    for (std::size_t i = 0; i < actionArr.count(); ++i) {
        const GestureRecord record = actionArr.objectAtIndex(i).dictionary();
        // Whatever a damaged list holds beside records has nothing to show.
        if (!record) continue;
        const auto row = std::make_shared<TDGesturesCellView>();
        const double areaHeight = gestureView_.frame().height;
        const platform::NSRect size = row->view().frame();
        if (record.objectForKey(keys::moreGesture).boolValue()) {
            if (column == 0) n = 0;
            column = 1;
        } else {
            column = 0;
        }
        platform::NSRect frame;
        frame.x = column * size.width + kRowMargin;
        frame.y = areaHeight - (n + 1) * size.height;
        frame.width = size.width + kSecondColumnExtraWidth * column;
        if (record.objectForKey(keys::name).isEqual(gestures::fullScreenApps)) frame.width += kFullScreenExtraWidth;
        frame.height = size.height;
        row->view().setFrame(frame);

        NSLog("actionArr[%d] == %@", i, record);
        row->initCurrentStateWithActionInformation(record);
        // The view in the area keeps its row: where rows are left standing, nobody else does.
        gestureView_.addSubview(std::shared_ptr<platform::NSView>(row, &row->view()));
        gersturesViewArray.push_back(row);
        ++n;
    }
}

void TDSettingViewCtl::sendRate() {
    resetDeviceParameter(payloads::doubleClickRate(doubleClickRate_), kMessageIDForDoubleClickRate);
}

void TDSettingViewCtl::sendRange(const platform::Value& range) {
    resetDeviceParameter(payloads::doubleClickRange(range), kMessageIDForDoubleClickRange);
}
