#include "HardwareInfo/TDHardwareInformationViewCtl.h"
#include "Information/TDVersionViewCtl.h"
#include "Properties/TDGesturesCellView.h"
#include "Properties/TDSettingViewCtl.h"
#include "TDCalibrationViewCtl.h"
#include "qt/CanvasView.h"
#include "qt/ToolkitPlatform.h"
#include "qt/TouchSize.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSlider>
#include <QTabBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

namespace kelvo {

namespace {

using testing::IsSupersetOf;
using testing::Not;

/// An owner for each form of the pane: its controller, or what has the same outlets and actions.
const std::map<std::string, std::function<std::unique_ptr<platform::NSNibOwner>()>> owners = {
    {"KelvoTouchDisplayPref", [] { return std::make_unique<PaneStandIn>(); }},
    {"TDCalibrationViewCtl", [] { return std::make_unique<TDCalibrationViewCtl>(); }},
    {"TDGesturesCellView", [] { return std::make_unique<TDGesturesCellView>(); }},
    {"TDHardwareInformationViewCtl", [] { return std::make_unique<TDHardwareInformationViewCtl>(); }},
    {"TDSettingViewCtl", [] { return std::make_unique<TDSettingViewCtl>(); }},
    {"TDVersionViewCtl", [] { return std::make_unique<TDVersionViewCtl>(); }},
};

/// Gives each text field of `owner` a text, as its controller does before anyone sees it.
void giveTexts(platform::NSNibOwner& owner) {
    for (const platform::NSOutlet& outlet : owner.outlets()) {
        const auto* view = std::get_if<platform::NSView*>(&outlet.target);
        auto* textField = view ? dynamic_cast<platform::NSTextField*>(*view) : nullptr;
        if (textField) textField->setStringValue("a text");
    }
}

/// A form that is bound for as long as this lives.
struct BoundForm {
    explicit BoundForm(const std::string& name)
        : owner(owners.at(name)()), nib(platform.nibs.instantiate(name, *owner, view)) {}

    [[nodiscard]] QWidget& widget() const { return *platform.nibs.widgetFor(view); }

    ToolkitPlatform platform;
    platform::NSView view;
    std::unique_ptr<platform::NSNibOwner> owner;
    std::unique_ptr<platform::NSNib> nib;
};

std::set<std::string> keysOfEnglishStrings() {
    QFile file(KELVO_STRINGS);
    if (!file.open(QFile::ReadOnly)) return {};
    static const QRegularExpression entry(R"re(^"([^"]+)"\s*=\s*".+";$)re", QRegularExpression::MultilineOption);
    std::set<std::string> keys;
    for (auto match = entry.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
        keys.insert(match.next().captured(1).toStdString());
    }
    return keys;
}

/// The names of gestures, whose texts title the rows, and of their actions.
const std::set<std::string> gestureKeys = {
    "SecondaryClick",
    "Scroll",
    "ScrollDirection",
    "LookUp",
    "ZoomInOrOut",
    "SmartZoom",
    "Rotate",
    "SwipeBetweenPages",
    "FullScreenApps",
    "FullScreenAppsForSnowLeopard",
    "NotificationCenter",
    "MissionControl",
    "AppExpos\u00e9",
    "Launchpad",
    "ShowDesktop",
    "ClickOrTapWithTwoFingers",
    "ScrollWithTwoFingers",
    "ContentTracksFingerMovement",
    "PinchWithTwoFingers",
    "RotateWithTwoFingers",
    "TapWithThreeFingers",
    "DoubleTapWithTwoFingers",
    "ScrollLeftOrRightWithTwoFingers",
    "SwipeWithThreeFingers",
    "SwipeWithTwoOrThreeFingers",
    "SwipeLeftOrRightWithThreeFingers",
    "SwipeLeftOrRightWithFourFingers",
    "SwipeUpWithThreeFingers",
    "SwipeUpWithFourFingers",
    "SwipeDownWithThreeFingers",
    "SwipeDownWithFourFingers",
    "SwipeLeftFromTheRightEdgeWithTwoFingers",
    "PinchWithThumbAndThreeFingers",
    "SpreadWithThumbAndThreeFingers",
};

/// What the user operates, and not a part of the toolkit's own widgets.
bool isOperated(const QWidget& widget) {
    if (qobject_cast<const QTabBar*>(widget.parentWidget())) return false;
    const auto* canvas = qobject_cast<const CanvasView*>(&widget);
    return canvas || qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QSlider*>(&widget);
}

class PaneFormsTest : public testing::TestWithParam<std::string> {};

TEST(PaneForms, EachHasAnOwnerHere) {
    for (const auto& [name, make] : paneForms()) EXPECT_TRUE(owners.contains(name)) << name;
}

TEST(PaneForms, EnglishHasTheTextsThatTheLogicAsksFor) {
    EXPECT_THAT(keysOfEnglishStrings(),
                IsSupersetOf({"Alert.disconnect", "Alert.driverDisable", "Alert.Rotate", "Alert.Button.YES",
                              "Alert.Button.NO", "Alert.HotKey.Title", "PreferenceFolderName", "Window.Title"}));
}

TEST(PaneForms, EnglishHasATextForEveryGestureAndAction) {
    EXPECT_THAT(keysOfEnglishStrings(), IsSupersetOf(gestureKeys));
}

TEST_P(PaneFormsTest, FitsItsOwner) { EXPECT_NO_THROW(BoundForm{GetParam()}); }

TEST_P(PaneFormsTest, EveryTextItAsksForExistsInEnglish) {
    const BoundForm form(GetParam());
    EXPECT_FALSE(form.platform.bundle.keysAskedFor.empty());
    EXPECT_THAT(keysOfEnglishStrings(), IsSupersetOf(form.platform.bundle.keysAskedFor));
}

TEST_P(PaneFormsTest, EveryControlHasAnAccessibleNameAndIsLargeEnoughToTouch) {
    const BoundForm form(GetParam());
    giveTexts(*form.owner);
    for (QWidget* widget : form.widget().findChildren<QWidget*>()) {
        if (!isOperated(*widget)) continue;
        const std::string name = widget->objectName().toStdString();
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty()) << name;
        EXPECT_GE(widget->minimumHeight(), kTouchHeight) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, PaneFormsTest,
                         testing::Values("KelvoTouchDisplayPref", "TDCalibrationViewCtl", "TDGesturesCellView",
                                         "TDHardwareInformationViewCtl", "TDSettingViewCtl", "TDVersionViewCtl"),
                         [](const auto& form) { return form.param; });

} // namespace

} // namespace kelvo
