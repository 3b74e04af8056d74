#include "Properties/TDTestView.h"

#include "platform/Notifications.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

/// Keeps what is drawn, a line a step.
class RecordedContext : public NSGraphicsContext {
public:
    std::vector<std::string> steps;

    void setColor(NSColor color) override {
        const bool isWhite = color == NSColor::whiteColor();
        steps.emplace_back(isWhite ? "white" : color == NSColor::greenColor() ? "green" : "red");
    }
    void fillRect(NSRect rect) override { record("fill", rect, ""); }
    void strokePath(const NSBezierPath& path) override {
        std::ostringstream width;
        width << " width " << path.lineWidth();
        record("stroke", path.bounds(), width.str());
    }

private:
    void record(const char* what, NSRect rect, const std::string& more) {
        std::ostringstream text;
        text << what << ' ' << rect.x << ' ' << rect.y << ' ' << rect.width << ' ' << rect.height << more;
        steps.push_back(text.str());
    }
};

class TestArea : public testing::Test {
protected:
    TestArea() {
        view.setFrame({0, 0, 100, 100});
        for (const char* name : {"TDDoubleClickHappenOnRateView", "TDDoubleClickHappenOnTestView"}) {
            NSNotificationCenter::defaultCenter().addObserver(observer, name,
                                                              [this](const NSNotification& notification) {
                                                                  posted.push_back(notification.name);
                                                                  EXPECT_FALSE(notification.userInfo);
                                                              });
        }
    }

    std::vector<std::string> draw() {
        RecordedContext context;
        const NSGraphicsContext::Current current(context);
        view.drawRect({1, 2, 3, 4});
        return context.steps;
    }

    void press(NSPoint place = {50, 50}) { view.mouseDown({place}); }
    void release(NSPoint place = {50, 50}) { view.mouseUp({place}); }
    void click() {
        press();
        release();
    }
    /// The first press to the second release, with the second press in between.
    void doubleClick(double seconds) {
        click();
        platform.runLoop.advance(seconds / 2);
        press();
        platform.runLoop.advance(seconds / 2);
        release();
    }

    support::FakePlatform platform;
    NSObject observer;
    std::vector<std::string> posted;
    TDTestView view;
};

TEST_F(TestArea, OfNoTypeHasNothingToTellThoseWhoDoNotSeeIt) {
    draw();
    doubleClick(0.5);
    EXPECT_EQ(view.accessibilityValue(), std::nullopt);
}

TEST_F(TestArea, OfTheRangeTellsTheRange) {
    view.setViewType(1);
    EXPECT_EQ(view.accessibilityValue(), 32.0);
    view.setRange(47.0);
    EXPECT_EQ(view.accessibilityValue(), 47.0);
}

TEST_F(TestArea, OfTheRateTellsTheIntervalMeasuredLastAndNothingBefore) {
    view.setViewType(2);
    view.setTimeInterval(0.7);
    draw();
    EXPECT_EQ(view.accessibilityValue(), std::nullopt);
    doubleClick(0.1);
    EXPECT_EQ(view.accessibilityValue(), 0.3);
    doubleClick(1.5);
    EXPECT_EQ(view.accessibilityValue(), 1.0);
    view.setTimeInterval(0.7);
    EXPECT_EQ(view.accessibilityValue(), 1.0);
}

TEST_F(TestArea, OfTheTestTellsWhetherTheLastDoubleClickCounted) {
    view.setViewType(3);
    view.setTimeInterval(0.5);
    draw();
    EXPECT_EQ(view.accessibilityValue(), std::nullopt);
    doubleClick(0.4);
    EXPECT_EQ(view.accessibilityValue(), 1.0);
    doubleClick(0.6);
    EXPECT_EQ(view.accessibilityValue(), 0.0);
    platform.runLoop.advance(1.0);
    doubleClick(0.4);
    EXPECT_EQ(view.accessibilityValue(), 1.0);
    click();
    press();
    release({0, 0});
    EXPECT_EQ(view.accessibilityValue(), 0.0);
}

TEST_F(TestArea, PressBesideTheCircleLeavesWhatItTells) {
    view.setViewType(3);
    draw();
    press({0, 0});
    EXPECT_EQ(view.accessibilityValue(), std::nullopt);
}

TEST_F(TestArea, DrawsAThinRedRingOfTheRangesDiameterOnWhite) {
    EXPECT_THAT(draw(), ElementsAre("white", "fill 0 0 100 100", "red", "stroke 34 34 32 32 width 2"));
}

TEST_F(TestArea, DrawsAThickGreenRingAfterAChangeAndTheFirstLookAfterTwo) {
    view.changeDrawType();
    EXPECT_THAT(draw(), ElementsAre("white", "fill 0 0 100 100", "green", "stroke 34 34 32 32 width 8"));

    view.changeDrawType();
    EXPECT_THAT(draw(), ElementsAre("white", "fill 0 0 100 100", "red", "stroke 34 34 32 32 width 2"));
}

TEST_F(TestArea, StandsAsFarFromTheBottomAsFromTheLeftWhenItIsTallerThanWide) {
    view.setFrame({7, 9, 100, 300});

    EXPECT_THAT(draw(), ElementsAre("white", "fill 0 0 100 300", "red", "stroke 34 34 32 32 width 2"));
}

TEST_F(TestArea, AsksToBeDrawnWhenTheRangeChangesButNotForOtherSettings) {
    int changes = 0;
    const Subscription subscription = view.observeChanges([&] { ++changes; });

    view.setViewType(3);
    view.setTimeInterval(0.7);
    view.changeDrawType();
    EXPECT_EQ(changes, 0);
    view.setRange(40);
    view.setRange(40);
    EXPECT_EQ(changes, 2);
}

TEST_F(TestArea, OfNoTypeOrTheRangeTypeOnlyDraws) {
    for (const std::int32_t type : {0, 1}) {
        view.setViewType(type);
        draw();
        doubleClick(0.2);

        EXPECT_THAT(posted, IsEmpty());
        EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    }
}

TEST_F(TestArea, BeginsWithAnIntervalOfThreeTenths) { EXPECT_EQ(view.timeInterval(), 0.3); }

TEST_F(TestArea, IgnoresClicksBeforeTheFirstDraw) {
    view.setViewType(2);

    doubleClick(0.4);

    EXPECT_THAT(posted, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
}

TEST_F(TestArea, IsHitWhereItWasDrawnLast) {
    view.setViewType(2);
    draw();
    view.setRange(90);
    press({50, 90});
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);

    draw();
    press({50, 90});
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
}

TEST_F(TestArea, TakesPlacesInTheWindow) {
    view.setViewType(2);
    draw();
    view.setOriginInContentView({200, 100});

    press({50, 50});
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    press({250, 150});
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
}

class RateArea : public TestArea {
protected:
    RateArea() {
        view.setViewType(2);
        draw();
    }
};

TEST_F(RateArea, SecondReleaseAfterATenthOfASecondSetsThreeTenths) {
    doubleClick(0.1);
    EXPECT_EQ(view.timeInterval(), 0.3);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
}

TEST_F(RateArea, SecondReleaseAfterPointFiveFiveSecondsSetsThatInterval) {
    doubleClick(0.55);
    EXPECT_DOUBLE_EQ(view.timeInterval(), 0.55);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
}

TEST_F(RateArea, SecondReleaseAfterOneAndAHalfSecondsSetsOne) {
    doubleClick(1.5);
    EXPECT_EQ(view.timeInterval(), 1.0);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
}

TEST_F(RateArea, SecondPressMoreThanTwoSecondsAfterTheFirstStartsANewAttempt) {
    click();
    platform.runLoop.advance(2.1);
    click();
    EXPECT_THAT(posted, IsEmpty());

    platform.runLoop.advance(0.5);
    click();
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
    EXPECT_DOUBLE_EQ(view.timeInterval(), 0.5);
}

TEST_F(RateArea, AttemptEndsExactlyAtItsLimit) {
    click();
    platform.runLoop.advance(2.0);

    press();
    release();
    EXPECT_THAT(posted, IsEmpty());
}

TEST_F(RateArea, SecondReleaseOutsideEndsTheAttemptInSilence) {
    click();
    press();
    release({1, 1});
    EXPECT_THAT(posted, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);

    click();
    EXPECT_THAT(posted, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
}

TEST_F(RateArea, PressOutsideLeavesNoTrace) {
    press({1, 1});
    release();

    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    click();
    EXPECT_THAT(posted, IsEmpty());
}

TEST_F(RateArea, ThirdPressAfterALostReleaseIsUndoneOnlyByTheTimer) {
    click();
    press();
    press();
    release();
    release();
    EXPECT_THAT(posted, IsEmpty());

    platform.runLoop.advance(2.0);
    doubleClick(0.4);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
}

TEST_F(RateArea, ClockSetBackInTheMiddleCountsAsTheShortestInterval) {
    click();
    platform.clock.startDate.timeIntervalSinceReferenceDate -= 100.0;
    press();
    release();

    EXPECT_EQ(view.timeInterval(), 0.3);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnRateView"));
}

TEST_F(RateArea, ObserverReadsTheMeasuredInterval) {
    double seen = 0.0;
    NSNotificationCenter::defaultCenter().addObserver(observer, kDoubleClickHappenOnRateView,
                                                      [&](const NSNotification&) { seen = view.timeInterval(); });
    doubleClick(0.75);

    EXPECT_DOUBLE_EQ(seen, 0.75);
}

TEST_F(RateArea, ObserverIsToldOfTheIntervalAsThoseAreWhoDoNotSeeIt) {
    std::optional<double> told;
    NSNotificationCenter::defaultCenter().addObserver(observer, kDoubleClickHappenOnRateView,
                                                      [&](const NSNotification&) { told = view.accessibilityValue(); });
    doubleClick(0.75);

    EXPECT_EQ(told, 0.75);
}

TEST_F(RateArea, GivenAnotherTypeInTheMiddleMeasuresNothing) {
    click();
    press();
    view.setViewType(1);
    release();

    EXPECT_THAT(posted, IsEmpty());
    EXPECT_EQ(view.timeInterval(), 0.3);
}

class TryArea : public TestArea {
protected:
    TryArea() {
        view.setViewType(3);
        view.setTimeInterval(0.5);
        draw();
    }
};

TEST_F(TryArea, DoubleClickWithinTheIntervalPosts) {
    doubleClick(0.4);
    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnTestView"));
    EXPECT_EQ(view.timeInterval(), 0.5);
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
}

TEST_F(TryArea, HasCountedWhenItsObserverHears) {
    std::optional<double> told;
    NSNotificationCenter::defaultCenter().addObserver(observer, kDoubleClickHappenOnTestView,
                                                      [&](const NSNotification&) { told = view.accessibilityValue(); });
    doubleClick(0.4);

    EXPECT_EQ(told, 1.0);
}

TEST_F(TryArea, DoubleClickAfterTheIntervalPostsNothingThoughItsSecondPressWasInTime) {
    doubleClick(0.6);
    EXPECT_THAT(posted, IsEmpty());
}

TEST_F(TryArea, SecondPressAfterTheIntervalStartsANewAttempt) {
    click();
    platform.runLoop.advance(0.55);
    click();
    EXPECT_THAT(posted, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
}

TEST_F(TryArea, IntervalSetInTheMiddleCountsForTheReleaseButNotForTheRunningTimer) {
    click();
    view.setTimeInterval(0.2);
    platform.runLoop.advance(0.3);
    press();
    release();
    EXPECT_THAT(posted, IsEmpty());

    view.setTimeInterval(0.5);
    click();
    view.setTimeInterval(5.0);
    platform.runLoop.advance(0.5);
    press();
    release();
    EXPECT_THAT(posted, IsEmpty());
}

TEST_F(TryArea, DoubleClickOfExactlyTheIntervalCounts) {
    click();
    platform.runLoop.standStill(0.5);
    press();
    release();

    EXPECT_THAT(posted, ElementsAre("TDDoubleClickHappenOnTestView"));
}

TEST_F(TryArea, TimerThatOutlivesItsViewFiresNowhere) {
    {
        TDTestView other;
        other.setFrame({0, 0, 100, 100});
        other.setViewType(3);
        RecordedContext context;
        const NSGraphicsContext::Current current(context);
        other.drawRect({});
        other.mouseDown({{50, 50}});
    }
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
    platform.runLoop.advance(1.0);
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
}

} // namespace
