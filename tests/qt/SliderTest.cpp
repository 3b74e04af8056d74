#include "qt/FormFixture.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QSlider>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <initializer_list>
#include <utility>
#include <vector>

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

    /// Drags the handle to these positions, one right after the other.
    void drag(std::initializer_list<int> positions) {
        widget_.setSliderDown(true);
        for (const int position : positions) widget_.setSliderPosition(position);
    }

    /// What the user does next, which has nothing to do with the slider.
    void releaseElsewhere() { QTest::mouseRelease(&readOut_, Qt::LeftButton); }

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

/// The user's language for as long as this lives.
class SpokenLanguage {
public:
    explicit SpokenLanguage(const char* name) { QLocale::setDefault(QLocale(name)); }
    SpokenLanguage(const SpokenLanguage&) = delete;
    SpokenLanguage& operator=(const SpokenLanguage&) = delete;
    ~SpokenLanguage() { QLocale::setDefault(before_); }

private:
    QLocale before_;
};

TEST_F(SliderTest, ValueIsReadOutAsTheUsersLanguageWritesNumbers) {
    const SpokenLanguage german("de_DE");
    bind();
    EXPECT_EQ(readOut_.text(), "1,00 s");
}

TEST_F(SliderTest, ValueIsReadOutInTheDigitsThatTheTextsHave) {
    const SpokenLanguage arabic("ar_EG");
    bind();
    EXPECT_EQ(readOut_.text(), "1.00 s");
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
    for (const auto& [position, value] : {std::pair(10, 0.1), std::pair(30, 0.3)}) {
        owner_.fired.clear();
        drag({position});
        QCoreApplication::processEvents();
        EXPECT_EQ(model_.doubleValue(), value);
        EXPECT_THAT(owner_.fired, ElementsAre("speedChange:"));
    }
}

TEST_F(SliderTest, MovesThatComeAtOnceFireOnceForTheNewest) {
    bind();
    show();
    drag({10, 20, 30});
    QCoreApplication::processEvents();
    EXPECT_EQ(model_.doubleValue(), 0.3);
    EXPECT_THAT(owner_.fired, ElementsAre("speedChange:"));
}

TEST_F(SliderTest, MoveHasFiredBeforeAnythingElseIsPressedOrReleased) {
    bind();
    show();
    drag({10, 20});
    releaseElsewhere();
    EXPECT_EQ(model_.doubleValue(), 0.2);
    drag({30});
    QTest::keyPress(&readOut_, Qt::Key_A);
    EXPECT_EQ(model_.doubleValue(), 0.3);
    EXPECT_THAT(owner_.fired, ElementsAre("speedChange:", "speedChange:"));
}

TEST_F(SliderTest, KeysFireEachAndWhatAHeldKeyRepeatsOnce) {
    bind();
    show();
    for (int i = 0; i < 3; ++i) QTest::keyClick(&widget_, Qt::Key_Right);
    EXPECT_EQ(owner_.fired.size(), 3U);

    for (int i = 0; i < 5; ++i) {
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(&widget_, &repeated);
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(model_.doubleValue(), 0.08);
    EXPECT_EQ(owner_.fired.size(), 4U);
}

TEST_F(SliderTest, MoveInTheMiddleOfTheActionOfAnotherFiresAfterIt) {
    bind();
    std::vector<double> values;
    model_.setAction([&](platform::NSControl&) {
        values.push_back(model_.doubleValue());
        if (values.size() == 1) drag({40, 50});
    });
    show();
    drag({10});
    EXPECT_TRUE(QTest::qWaitFor([&] { return values.size() == 2; }));
    EXPECT_THAT(values, ElementsAre(0.1, 0.5));
    EXPECT_EQ(widget_.value(), 50);
}

TEST_F(SliderTest, MoveMayEndTheFormThatItIsIn) {
    bind();
    model_.setAction([this](platform::NSControl&) { binding_.reset(); });
    show();
    drag({10});
    releaseElsewhere();
    EXPECT_FALSE(binding_);
    EXPECT_EQ(model_.doubleValue(), 0.1);
}

TEST_F(SliderTest, MoveIsNotActedOnWithoutItsForm) {
    bind();
    show();
    drag({10});
    binding_.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(model_.doubleValue(), 0.0);
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
    QCoreApplication::processEvents();
    EXPECT_GT(model_.doubleValue(), 0.0);
}

} // namespace

} // namespace kelvo
