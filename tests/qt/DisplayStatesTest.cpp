#include "qt/ToolkitPlatform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLayout>
#include <QStackedWidget>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The pane's form in a window, with a stand-in for its owner.
class DisplayStatesTest : public testing::Test {
protected:
    void SetUp() override {
        nib_ = platform_.nibs.instantiate("KelvoTouchDisplayPref", pane_, view_);
        form_ = platform_.nibs.widgetFor(view_);
        form_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(form_));
    }

    template <typename Widget>
    Widget& widget(const char* name) {
        return *form_->findChild<Widget*>(name);
    }

    /// What the user sees in the middle of the window: the name of the nearest widget that an outlet or the layout put
    /// in the pile.
    std::string inTheMiddle() {
        const QWidget* seen = form_->childAt(widget<QWidget>("tabView_").geometry().center());
        while (seen && seen->parentWidget() != form_) seen = seen->parentWidget();
        return seen ? seen->objectName().toStdString() : "";
    }

    /// The index of the page that a tab's form is put into, scrolled there or not.
    int pageOf(const char* name) {
        const auto& pages = widget<QStackedWidget>("tabView_");
        QWidget* page = &widget<QWidget>(name);
        while (page->parentWidget() != &pages) page = page->parentWidget();
        return pages.indexOf(page);
    }

    void hideSettings(bool hidden) {
        pane_.tabView_.setHidden(hidden);
        pane_.tabPopUp_.setHidden(hidden);
        pane_.statusBarState_.setHidden(hidden);
    }

    ToolkitPlatform platform_;
    PaneStandIn pane_;
    platform::NSView view_;
    std::unique_ptr<platform::NSNib> nib_;
    QWidget* form_ = nullptr;
};

TEST_F(DisplayStatesTest, SettingsCoverAnAlertAndAChooserThatWereLeftStanding) { EXPECT_EQ(inTheMiddle(), "tabView_"); }

TEST_F(DisplayStatesTest, ChooserCoversAnAlertThatWasLeftStanding) {
    hideSettings(true);
    EXPECT_EQ(inTheMiddle(), "selectDeviceView_");
}

TEST_F(DisplayStatesTest, AlertIsSeenWhenSettingsAndChooserAreHidden) {
    hideSettings(true);
    pane_.selectDeviceView_.setHidden(true);
    EXPECT_EQ(inTheMiddle(), "alertTextField_");
}

TEST_F(DisplayStatesTest, BackdropIsSeenWhenEverythingElseIsHidden) {
    hideSettings(true);
    pane_.selectDeviceView_.setHidden(true);
    pane_.alertTextField_.setHidden(true);
    EXPECT_EQ(inTheMiddle(), "backdrop");
}

TEST_F(DisplayStatesTest, WhatCoversOthersIsOpaque) {
    for (const char* name : {"alertTextField_", "selectDeviceView_", "tabView_"}) {
        EXPECT_TRUE(widget<QWidget>(name).autoFillBackground()) << name;
    }
}

TEST_F(DisplayStatesTest, HidingTheSettingsMovesNothing) {
    const QRect alert = widget<QWidget>("alertTextField_").geometry();
    const QRect chooser = widget<QWidget>("selectDeviceView_").geometry();

    hideSettings(true);
    form_->layout()->activate();

    EXPECT_EQ(widget<QWidget>("alertTextField_").geometry(), alert);
    EXPECT_EQ(widget<QWidget>("selectDeviceView_").geometry(), chooser);
}

TEST_F(DisplayStatesTest, TabPopUpHasOneItemForEachTabInTheirOrder) {
    EXPECT_THAT(pane_.tabPopUp_.itemTitles(), ElementsAre("text of Tab.Calibration", "text of Tab.Settings",
                                                          "text of Tab.HardwareInformation", "text of Tab.Version"));
    EXPECT_EQ(pageOf("calibrationVC_"), 0);
    EXPECT_EQ(pageOf("settingVC_"), 1);
    EXPECT_EQ(pageOf("hardwareInformationVC_"), 2);
    EXPECT_EQ(pageOf("VersionVC_"), 3);
    EXPECT_EQ(pane_.tabView_.numberOfTabViewItems(), 4);
}

TEST_F(DisplayStatesTest, EveryControlFiresItsOwnAction) {
    pane_.selectDeviceBtn_.addItemWithTitle("KD-55");
    pane_.selectDeviceBtn_.addItemWithTitle("KD-65");

    QTest::keyClick(&widget<QComboBox>("tabPopUp_"), Qt::Key_Down);
    QTest::keyClick(&widget<QComboBox>("selectDeviceBtn_"), Qt::Key_Down);
    QTest::keyClick(&widget<QCheckBox>("statusBarState_"), Qt::Key_Space);

    EXPECT_THAT(pane_.calls, ElementsAre("selectItem:", "selectDeviceForSetting:", "showOrHideStatusBarApp:"));
}

TEST_F(DisplayStatesTest, TabSelectedByTheProgramIsShownAndItsDelegateHearsOfIt) {
    pane_.tabView_.selectTabViewItemAtIndex(2);
    EXPECT_EQ(widget<QStackedWidget>("tabView_").currentIndex(), pageOf("hardwareInformationVC_"));
    EXPECT_TRUE(widget<QWidget>("hardwareInformationVC_").isVisible());
    EXPECT_THAT(pane_.calls, ElementsAre("willSelect text of Tab.HardwareInformation"));
}

TEST_F(DisplayStatesTest, LoadingCallsNothing) { EXPECT_THAT(pane_.calls, IsEmpty()); }

TEST_F(DisplayStatesTest, VeryLongDeviceNameDoesNotWidenTheWindow) {
    const int before = form_->minimumSizeHint().width();
    pane_.selectDeviceBtn_.addItemWithTitle(std::string(4000, 'W'));
    form_->layout()->activate();
    EXPECT_EQ(form_->minimumSizeHint().width(), before);
}

} // namespace

} // namespace kelvo
