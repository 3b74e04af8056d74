#include "Properties/TDGesturesCellView.h"

#include "TDGestureCatalogue.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Log.h"
#include "platform/SystemVersion.h"

#include <cstdint>
#include <optional>

using platform::NSLog;

namespace {

/// The menu's first entry is empty, so an action's place in the menu is one behind its place in the record.
constexpr std::int64_t kFirstActionItem = 1;
/// A menu with the empty entry and one action.
constexpr std::size_t kItemsOfSingleAction = 2;
/// What a pop-up is wider than its title, and how far one without a border moves to stand in line, in points.
constexpr double kPopUpMargin = 25.0;
constexpr double kBorderlessShift = 2.0;

std::string nameOf(const GestureRecord& record) { return record.objectForKey(keys::name).string().value_or(""); }

/// The place of the chosen action in the menu. 0, which is no action, for an index that no menu can have.
std::int64_t menuIndexOf(const GestureRecord& record) {
    const std::int64_t index = record.objectForKey(keys::selectedIndex).intValue();
    return index < 0 ? 0 : index + kFirstActionItem;
}

/// The chosen action; empty when the index is outside of the record's actions.
std::string actionOf(const GestureRecord& record) {
    const std::int64_t index = menuIndexOf(record) - kFirstActionItem;
    if (index < 0) return "";
    return record.objectForKey(keys::descriptor)
        .array()
        .objectAtIndex(static_cast<std::size_t>(index))
        .string()
        .value_or("");
}

bool isPagesOrFullScreen(std::string_view name) {
    return name == gestures::swipeBetweenPages || name == gestures::fullScreenApps;
}

bool isMissionControlOrExpose(std::string_view name) {
    return name == gestures::missionControl || name == gestures::appExpose;
}

bool canCollide(std::string_view name) { return isPagesOrFullScreen(name) || isMissionControlOrExpose(name); }

std::string titleKeyOf(const GestureRecord& record) {
    const std::string name = nameOf(record);
    const bool isOlder =
        name == gestures::fullScreenApps && isSnowLeopard(platform::Gestalt(platform::gestaltSystemVersion));
    return isOlder ? "FullScreenAppsForSnowLeopard" : name;
}

void sendGestures() { resetDeviceParameter(payloads::gestureArray(), kMessageIDForGestureArray); }

} // namespace

TDGesturesCellView::~TDGesturesCellView() { platform::NSNotificationCenter::defaultCenter().removeObserver(*this); }

std::vector<platform::NSOutlet> TDGesturesCellView::outlets() {
    return {
        {"clickBtn", &clickBtn}, {"m_title", &m_title}, {"m_gestures", &m_gestures}, {"PopUpBtnCell", &PopUpBtnCell}};
}

std::vector<platform::NSNibAction> TDGesturesCellView::actions() {
    return {{"changeAction:", [this](platform::NSControl& sender) { changeAction(sender); }}};
}

void TDGesturesCellView::initCurrentStateWithActionInformation(const GestureRecord& record) {
    actionInfo_ = record;
    itemsString_.clear();
    const std::string titleKey = titleKeyOf(record);
    m_title.setStringValue(localizedString(titleKey));

    const bool isEnabled = record.objectForKey(keys::isEnable).boolValue();
    clickBtn.setState(isEnabled ? 1 : 0);
    m_gestures.setEnabled(isEnabled);

    itemsString_.emplace_back("");
    const platform::NSMutableArray descriptor = record.objectForKey(keys::descriptor).array();
    for (std::size_t i = 0; i < descriptor.count(); ++i) {
        itemsString_.push_back(localizedString(descriptor.objectAtIndex(i).string().value_or("")));
    }
    m_gestures.removeAllItems();
    m_gestures.addItemsWithTitles(itemsString_);

    if (itemsString_.size() != kItemsOfSingleAction) {
        m_gestures.setRespond(true);
    } else {
        platform::NSRect frame = m_gestures.frame();
        frame.x -= kBorderlessShift;
        m_gestures.setFrame(frame);
        PopUpBtnCell.setBordered(false);
        PopUpBtnCell.setArrow(false);
        m_gestures.setEnabled(true);
        m_gestures.setRespond(false);
    }

    m_gestures.selectItemAtIndex(static_cast<int>(menuIndexOf(record)));
    showSelectedTitle();
    resizePopUp();

    if (canCollide(titleKey)) {
        platform::NSNotificationCenter::defaultCenter().addObserver(
            *this, kUpdateGesture,
            [this](const platform::NSNotification& notification) { checkGesture(notification); });
    }
}

void TDGesturesCellView::changeAction(platform::NSControl& sender) {
    const auto self = shared_from_this();
    NSLog("changeAction");
    if (dynamic_cast<platform::NSPopUpButton*>(&sender)) showSelectedTitle();

    const bool isEnabled = clickBtn.state() != 0;
    if (isEnabled || m_gestures.isRespond()) m_gestures.setEnabled(isEnabled);
    actionInfo_.setObjectForKey(isEnabled, keys::isEnable);
    storeSelection();

    if (canCollide(nameOf(actionInfo_))) {
        NSLog("post Notification");
        platform::NSNotificationCenter::defaultCenter().postNotification({kUpdateGesture, actionInfo_});
    }
    NSLog("resetDeviceParameter GestureArray");
    sendGestures();
    resizePopUp();
}

void TDGesturesCellView::checkGesture(const platform::NSNotification& notification) {
    const auto self = shared_from_this();
    const GestureRecord& sender = notification.userInfo;
    if (sender.isEqual(actionInfo_)) return;

    const std::string senderName = nameOf(sender);
    const std::string myName = nameOf(actionInfo_);
    Adjustment adjustment = Adjustment::None;
    if (isPagesOrFullScreen(senderName) && isPagesOrFullScreen(myName)) {
        adjustment = senderName == gestures::fullScreenApps ? makeWayForFullScreen(sender) : makeWayForPages(sender);
    } else if (isMissionControlOrExpose(senderName) && isMissionControlOrExpose(myName)) {
        adjustment = followFingers(sender);
    }

    if (adjustment != Adjustment::None) {
        showSelectedTitle();
        if (adjustment == Adjustment::SwitchedOff) {
            clickBtn.setState(0);
            m_gestures.setEnabled(false);
            actionInfo_.setObjectForKey(false, keys::isEnable);
        }
        storeSelection();
        sendGestures();
    }
    resizePopUp();
}

/// Pages take three fingers: full screen goes to four.
TDGesturesCellView::Adjustment TDGesturesCellView::makeWayForPages(const GestureRecord& sender) {
    constexpr std::int64_t fourFingers = 2;
    const std::string action = actionOf(sender);
    const bool takesThree = action == gestures::swipeWithThreeFingers || action == gestures::swipeWithTwoOrThreeFingers;
    if (!takesThree || actionOf(actionInfo_) != gestures::swipeLeftOrRightWithThreeFingers) return Adjustment::None;
    return point(fourFingers);
}

/// Full screen takes three fingers: pages go to two, and are switched off where three were all they had.
TDGesturesCellView::Adjustment TDGesturesCellView::makeWayForFullScreen(const GestureRecord& sender) {
    constexpr std::int64_t twoFingers = 1;
    if (actionOf(sender) != gestures::swipeLeftOrRightWithThreeFingers) return Adjustment::None;
    const std::string mine = actionOf(actionInfo_);
    if (mine == gestures::swipeWithTwoOrThreeFingers) return point(twoFingers);
    if (mine != gestures::swipeWithThreeFingers) return Adjustment::None;
    (void)point(twoFingers);
    return Adjustment::SwitchedOff;
}

/// These two always take the same number of fingers.
TDGesturesCellView::Adjustment TDGesturesCellView::followFingers(const GestureRecord& sender) {
    return point(menuIndexOf(sender));
}

/// Selects an action of the menu. One that this record does not have changes nothing.
TDGesturesCellView::Adjustment TDGesturesCellView::point(std::int64_t menuIndex) {
    const auto items = static_cast<std::int64_t>(itemsString_.size());
    if (menuIndex < kFirstActionItem || menuIndex >= items) return Adjustment::None;
    m_gestures.selectItemAtIndex(static_cast<int>(menuIndex));
    return Adjustment::Pointed;
}

/// The empty entry, which stands selected where the record's own index was unfit, is no action to store.
void TDGesturesCellView::storeSelection() {
    const std::int64_t selected = m_gestures.indexOfSelectedItem();
    if (selected >= kFirstActionItem) actionInfo_.setObjectForKey(selected - kFirstActionItem, keys::selectedIndex);
}

void TDGesturesCellView::showSelectedTitle() { m_gestures.setTitle(m_gestures.titleOfSelectedItem().value_or("")); }

void TDGesturesCellView::resizePopUp() {
    platform::NSRect frame = m_gestures.frame();
    frame.width = PopUpBtnCell.attributedTitleWidth() + kPopUpMargin;
    m_gestures.setFrame(frame);
}
