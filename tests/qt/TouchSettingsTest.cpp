#include "qt/CanvasView.h"
#include "qt/ToolkitPlatform.h"
#include "qt/TouchDevice.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using testing::ElementsAre;

/// A controller with the outlets and actions of the touch settings, which it records.
class SettingsStandIn : public platform::NSViewController {
public:
    SettingsStandIn() : NSViewController("TDSettingViewCtl") {}

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override {
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
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override {
        std::vector<platform::NSNibAction> actions;
        for (const char* selector : {"setRightClickParameters:", "doubleClickSpeedNormal:", "doubleClickRangeNormal:",
                                     "rateSliderValueChange:", "rangeSliderValueChange:"}) {
            actions.push_back({selector, [this, selector](platform::NSControl&) { calls.emplace_back(selector); }});
        }
        return actions;
    }

    platform::NSTabView settingTabView_;
    platform::NSView rangeView_;
    platform::NSView rateView_;
    platform::NSView testView_;
    platform::NSSlider rangeSlider_;
    platform::NSSlider rateSlider_;
    platform::NSTextField rengeText_;
    platform::NSView gestureView_;
    platform::NSButton rightClickBotton_{platform::NSButton::Type::Switch};
    platform::NSSlider longPressInterval_;
    std::vector<std::string> calls;
};

/// The form in a window, with the texts of sliders as in English.
class TouchSettingsTest : public testing::Test {
protected:
    void SetUp() override {
        platform_.bundle.texts["Touch.Seconds"] = "%1 s";
        form_ = platform_.nibs.widgetFor(controller_.view());
        form_->show();
        form_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(form_));
    }

    template <typename Widget>
    Widget& widget(const char* name) {
        return *form_->findChild<Widget*>(name);
    }

    /// The names of what the Tab key leads to from the tabs, up to them again.
    std::vector<std::string> tabStops() {
        QWidget* const tabs = widget<QTabWidget>("settingTabView_").tabBar();
        std::vector<std::string> names;
        tabs->setFocus();
        do {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            names.push_back(QApplication::focusWidget()->objectName().toStdString());
        } while (QApplication::focusWidget() != tabs && names.size() < 100);
        names.pop_back();
        return names;
    }

    ToolkitPlatform platform_;
    SettingsStandIn controller_;
    QWidget* form_ = nullptr;
};

TEST_F(TouchSettingsTest, SlidersHaveTheBoundsOfTheSystem) {
    EXPECT_EQ(controller_.rangeSlider_.minValue(), 8.0);
    EXPECT_EQ(controller_.rangeSlider_.maxValue(), 128.0);
    EXPECT_EQ(controller_.rateSlider_.minValue(), 0.0);
    EXPECT_EQ(controller_.rateSlider_.maxValue(), 0.9);
    EXPECT_EQ(controller_.longPressInterval_.minValue(), 0.3);
    EXPECT_EQ(controller_.longPressInterval_.maxValue(), 3.0);
}

TEST_F(TouchSettingsTest, SlidersStepByOneByHundredthsAndByTenths) {
    controller_.rangeSlider_.setDoubleValue(32.0);
    controller_.rateSlider_.setDoubleValue(0.5);
    controller_.longPressInterval_.setDoubleValue(1.0);
    for (const char* name : {"rangeSlider_", "rateSlider_", "longPressInterval_"}) {
        QTest::keyClick(&widget<QSlider>(name), Qt::Key_Right);
    }
    EXPECT_EQ(controller_.rangeSlider_.doubleValue(), 33.0);
    EXPECT_EQ(controller_.rateSlider_.doubleValue(), 0.51);
    EXPECT_EQ(controller_.longPressInterval_.doubleValue(), 1.1);
    EXPECT_THAT(controller_.calls,
                ElementsAre("rangeSliderValueChange:", "rateSliderValueChange:", "setRightClickParameters:"));
}

TEST_F(TouchSettingsTest, TapOnTheGrooveSetsTheSlider) {
    QSlider& slider = widget<QSlider>("rateSlider_");
    Finger().tap(slider, slider.rect().center());
    QCoreApplication::processEvents();
    EXPECT_NEAR(controller_.rateSlider_.doubleValue(), 0.45, 0.02);
    EXPECT_THAT(controller_.calls, ElementsAre("rateSliderValueChange:"));
}

TEST_F(TouchSettingsTest, FingerPushesThePageWhereItDoesNotFit) {
    form_->resize(form_->minimumSizeHint().width(), 240);
    QCoreApplication::processEvents();
    QScrollArea& area = widget<QScrollArea>("touchScroller");
    QScrollBar& bar = *area.verticalScrollBar();
    ASSERT_GT(bar.maximum(), 150);
    Finger finger;
    const QPoint low(area.viewport()->width() - 4, area.viewport()->height() - 10);
    finger.push(*area.viewport(), low, {0, -120});
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar.value() >= 90; })) << bar.value();
    finger.lift(*area.viewport(), low - QPoint(0, 120));
    EXPECT_THAT(controller_.calls, testing::IsEmpty());
}

TEST_F(TouchSettingsTest, SpeedIsReadAsTheTimeBetweenTheClicks) {
    controller_.rateSlider_.setDoubleValue(0.8);
    EXPECT_EQ(widget<QLabel>("speedValue").text(), "0.20 s");
}

TEST_F(TouchSettingsTest, LongPressIsReadInSeconds) {
    controller_.longPressInterval_.setDoubleValue(1.5);
    EXPECT_EQ(widget<QLabel>("longPressValue").text(), "1.5 s");
}

TEST_F(TouchSettingsTest, ButtonsAndCheckBoxFireTheirActions) {
    QTest::keyClick(&widget<QWidget>("normalSpeed"), Qt::Key_Space);
    QTest::keyClick(&widget<QWidget>("normalRange"), Qt::Key_Space);
    QTest::keyClick(&widget<QWidget>("rightClickBotton_"), Qt::Key_Space);
    EXPECT_THAT(controller_.calls,
                ElementsAre("doubleClickSpeedNormal:", "doubleClickRangeNormal:", "setRightClickParameters:"));
}

TEST_F(TouchSettingsTest, TestAreasAreSquareAndHoldTheLargestRange) {
    for (const char* name : {"rateView_", "rangeView_", "testView_"}) {
        const QSize size = widget<CanvasView>(name).size();
        EXPECT_EQ(size.width(), size.height()) << name;
        EXPECT_GE(size.width(), 144) << name;
    }
}

TEST_F(TouchSettingsTest, TabKeyGoesThroughTheTouchPageInReadingOrder) {
    controller_.longPressInterval_.setEnabled(true);
    EXPECT_THAT(tabStops(), ElementsAre("rateView_", "rateSlider_", "normalSpeed", "rangeSlider_", "rengeText_",
                                        "normalRange", "testView_", "rightClickBotton_", "longPressInterval_"));
}

TEST_F(TouchSettingsTest, AreaThatOnlyShowsTheRangeTakesNoFocus) {
    EXPECT_EQ(widget<CanvasView>("rangeView_").focusPolicy(), Qt::NoFocus);
}

TEST_F(TouchSettingsTest, TabsAreTheTouchPageAndTheGesturePage) {
    EXPECT_EQ(controller_.settingTabView_.numberOfTabViewItems(), 2);
    controller_.settingTabView_.selectTabViewItemAtIndex(1);
    EXPECT_TRUE(widget<QWidget>("gestureView_").isVisible());
    EXPECT_FALSE(widget<QWidget>("rateView_").isVisible());
}

TEST_F(TouchSettingsTest, TwoColumnsOfRowsAreSeenWithoutScrollingSideways) {
    const double row = paneForms().at("TDGesturesCellView")()->width();
    // The second column begins 10 behind the first; its rows are 20 wider, and one of them 50 more.
    const double needed = row + 10.0 + row + 20.0 + 50.0;
    controller_.settingTabView_.selectTabViewItemAtIndex(1);
    const auto& scroller = widget<QScrollArea>("gestureScroller");
    EXPECT_GE(scroller.width() - scroller.verticalScrollBar()->sizeHint().width(), needed);
}

} // namespace

} // namespace kelvo
