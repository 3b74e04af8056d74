#include "qt/TouchSlider.h"

#include "qt/TouchDevice.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kelvo {

namespace {

/// How far a value may be from what the finger meant, for rounding to pixels.
constexpr double kTolerance = 1.0;

class TouchSliderTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        style_.reset(QStyleFactory::create(QString::fromStdString(GetParam())));
        ASSERT_TRUE(style_);
        slider_.setStyle(style_.get());
        slider_.setRange(0, 100);
        slider_.resize(400, 44);
        slider_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&slider_));
    }

    std::unique_ptr<QStyle> style_;
    TouchSlider slider_{Qt::Horizontal};
    Finger finger_;
};

TEST_P(TouchSliderTest, TapOnTheGrooveSetsWhatIsThere) {
    finger_.tap(slider_, {200, 22});
    EXPECT_NEAR(slider_.value(), 50, kTolerance);
    finger_.tap(slider_, {395, 22});
    EXPECT_EQ(slider_.value(), 100);
    finger_.tap(slider_, {1, 22});
    EXPECT_EQ(slider_.value(), 0);
}

TEST_P(TouchSliderTest, TapAboveOrBelowTheGrooveCountsToo) {
    finger_.tap(slider_, {200, 3});
    EXPECT_NEAR(slider_.value(), 50, kTolerance);
    finger_.tap(slider_, {100, 41});
    EXPECT_LT(slider_.value(), 30);
}

TEST_P(TouchSliderTest, HandleGoesOnWithTheFingerFromThere) {
    finger_.press(slider_, {100, 22});
    const int pressed = slider_.value();
    finger_.moveTo(slider_, {300, 22});
    EXPECT_NEAR(slider_.value() - pressed, 50, 4);
    finger_.lift(slider_, {300, 22});
}

TEST_P(TouchSliderTest, TapOnTheHandleMovesNothing) {
    slider_.setValue(50);
    finger_.tap(slider_, {203, 22});
    EXPECT_EQ(slider_.value(), 50);
}

TEST_P(TouchSliderTest, ValuesGrowToTheLeftWhereThatIsHowOneReads) {
    slider_.setLayoutDirection(Qt::RightToLeft);
    finger_.tap(slider_, {100, 22});
    EXPECT_GT(slider_.value(), 70);
}

TEST_P(TouchSliderTest, MouseDoesTheSame) {
    QTest::mouseClick(&slider_, Qt::LeftButton, {}, {200, 22});
    EXPECT_NEAR(slider_.value(), 50, kTolerance);
}

TEST_P(TouchSliderTest, OtherButtonsMoveNothing) {
    QTest::mouseClick(&slider_, Qt::RightButton, {}, {200, 22});
    EXPECT_EQ(slider_.value(), 0);
}

INSTANTIATE_TEST_SUITE_P(Styles, TouchSliderTest, testing::Values("Fusion", "Windows"),
                         [](const auto& style) { return style.param; });

} // namespace

} // namespace kelvo
