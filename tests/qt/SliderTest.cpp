#include "qt/FormFixture.h"

#include <QApplication>
#include <QLabel>
#include <QSlider>
#include <QWheelEvent>

#include <gmock/gmock.h>

namespace kelvo {

namespace {

using platform::NSSlider;
using testing::ElementsAre;
using testing::IsEmpty;

/// A slider from 0 to 0.9 in hundredths, with a label that reads 1 - its value.
class SliderTest : public FormFixture {
protected:
    SliderTest() {
        widget_.setRange(0, 90);
        widget_.setOrientation(Qt::Horizontal);
        widget_.setProperty("stepsPerUnit", 100);
        readOut_.setText("%1 s");
        readOut_.setProperty("reads", "speed_");
        readOut_.setProperty("factor", -1.0);
        readOut_.setProperty("offset", 1.0);
        readOut_.setProperty("decimals", 2);
        owner_.published = {{"speed_", &model_}};
        owner_.selectors = {"speedChange:"};
    }

    /// Turns the wheel one notch away from the user.
    bool turnWheel() {
        QWheelEvent turn(widget_.rect().center(), widget_.mapToGlobal(widget_.rect().center()), {}, {0, 120},
                         Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        turn.ignore();
        QApplication::sendEvent(&widget_, &turn);
        return turn.isAccepted();
    }

    NSSlider model_;
    QSlider& widget_ = add<QSlider>("speed_", "speedChange:");
    QLabel& readOut_ = add<QLabel>("speedValue");
};

TEST_F(SliderTest, BoundsComeFromTheForm) {
    model_.setDoubleValue(5.0);
    bind();
    EXPECT_EQ(model_.minValue(), 0.0);
    EXPECT_EQ(model_.maxValue(), 0.9);
    EXPECT_EQ(model_.doubleValue(), 0.9);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(SliderTest, SliderWithoutStepsPerUnitCountsInOnes) {
    NSSlider range;
    QSlider& widget = add<QSlider>("range_");
    widget.setRange(8, 128);
    owner_.published.push_back({"range_", &range});
    bind();
    EXPECT_EQ(range.minValue(), 8.0);
    EXPECT_EQ(range.maxValue(), 128.0);
}

TEST_F(SliderTest, ArrowKeyMovesByOneStepAndFires) {
    bind();
    model_.setDoubleValue(0.5);
    show();
    QTest::keyClick(&widget_, Qt::Key_Right);
    EXPECT_EQ(model_.doubleValue(), 0.51);
    EXPECT_THAT(owner_.fired, ElementsAre("speedChange:"));
}

TEST_F(SliderTest, DraggingFiresAtEveryMove) {
    bind();
    show();
    widget_.setSliderDown(true);
    widget_.setSliderPosition(10);
    widget_.setSliderPosition(30);
    EXPECT_EQ(model_.doubleValue(), 0.3);
    EXPECT_THAT(owner_.fired, ElementsAre("speedChange:", "speedChange:"));
}

TEST_F(SliderTest, ValueBetweenStepsIsShownAtTheNearestAndStaysWhatItIs) {
    bind();
    model_.setDoubleValue(0.30000001192092896);
    EXPECT_EQ(widget_.value(), 30);
    EXPECT_EQ(model_.doubleValue(), 0.30000001192092896);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(SliderTest, ValueThatTheActionSnapsIsShown) {
    bind();
    model_.setAction([this](platform::NSControl&) { model_.setDoubleValue(0.2); });
    show();
    QTest::keyClick(&widget_, Qt::Key_End);
    EXPECT_EQ(widget_.value(), 20);
}

TEST_F(SliderTest, DisabledSliderIsDeafToKeys) {
    bind();
    model_.setEnabled(false);
    show();
    QTest::keyClick(&widget_, Qt::Key_Right);
    EXPECT_EQ(model_.doubleValue(), 0.0);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(SliderTest, ReadOutFollowsTheProgramAndTheUser) {
    bind();
    model_.setDoubleValue(0.5);
    EXPECT_EQ(readOut_.text(), "0.50 s");
    show();
    QTest::keyClick(&widget_, Qt::Key_Left);
    EXPECT_EQ(readOut_.text(), "0.51 s");
}

TEST_F(SliderTest, ReadOutWithoutAFormulaShowsTheValueItself) {
    readOut_.setText("");
    for (const char* property : {"factor", "offset"}) readOut_.setProperty(property, {});
    bind();
    model_.setDoubleValue(0.25);
    EXPECT_EQ(readOut_.text(), "0.25");
}

TEST_F(SliderTest, WheelGoesOnToWhatTheSliderStandsInUnlessItHasTheFocus) {
    bind();
    show();
    widget_.clearFocus();

    EXPECT_FALSE(turnWheel());
    EXPECT_EQ(model_.doubleValue(), 0.0);
    EXPECT_FALSE(widget_.hasFocus());

    widget_.setFocus();
    EXPECT_TRUE(turnWheel());
    EXPECT_GT(model_.doubleValue(), 0.0);
}

} // namespace

} // namespace kelvo
