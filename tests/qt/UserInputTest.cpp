#include "qt/QtRunLoop.h"

#include <QCheckBox>
#include <QEventLoop>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>

namespace kelvo {

namespace {

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

// Only a real window system queues what the user does, so these run on a display of their own.

class UserInput : public testing::Test {
protected:
    void SetUp() override {
        checkBox_.resize(200, 100);
        checkBox_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&checkBox_));
        QObject::connect(&checkBox_, &QCheckBox::clicked, &checkBox_, [this] { ++clicks_; });
    }

    /// Waits in `runUntil` until the user has clicked and the window knows it. The window system tells things in their
    /// order: when the new width is known here, so is the click.
    void clickDuringRunUntil(int width) {
        const QPoint place = checkBox_.mapToGlobal(QPoint(8, 50));
        QProcess user;
        user.start("xdotool", {"mousemove", QString::number(place.x()), QString::number(place.y()), "click", "1",
                               "windowsize", QString::number(checkBox_.winId()), QString::number(width), "100"});
        runLoop_.runUntil([&] { return checkBox_.width() == width && user.state() == QProcess::NotRunning; },
                          kLongSeconds);
        ASSERT_EQ(checkBox_.width(), width);
    }

    /// Runs the toolkit's loop until the user has clicked so many times in all. Nothing else makes it turn.
    [[nodiscard]] bool isClicked(int times) {
        QEventLoop loop;
        QObject::connect(&checkBox_, &QCheckBox::clicked, &loop, [&] {
            if (clicks_ == times) loop.quit();
        });
        QTimer patience;
        QObject::connect(&patience, &QTimer::timeout, &loop, [&] { loop.exit(1); });
        patience.start(
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(kLongSeconds)));
        return clicks_ == times || loop.exec() == 0;
    }

    QtRunLoop runLoop_;
    QCheckBox checkBox_{"click me"};
    int clicks_ = 0;
};

TEST_F(UserInput, ClickDuringRunUntilArrivesAsSoonAsThatEnds) {
    for (int round = 0; round < 5; ++round) {
        clickDuringRunUntil(300 + round);
        EXPECT_EQ(clicks_, round);
        EXPECT_TRUE(isClicked(round + 1));
    }
}

TEST_F(UserInput, ClickDuringANestedRunUntilArrivesAsSoonAsTheOuterOneEnds) {
    bool isInnerDone = false;
    int clicksAfterInner = -1;
    runLoop_.scheduleTimer(0.0, [&] {
        clickDuringRunUntil(300);
        isInnerDone = true;
        // The outer one is given the opportunity to take it for its own.
        runLoop_.scheduleTimer(0.05, [&] { clicksAfterInner = clicks_; });
    });
    runLoop_.runUntil([&] { return clicksAfterInner >= 0; }, kLongSeconds);
    EXPECT_TRUE(isInnerDone);
    EXPECT_EQ(clicksAfterInner, 0);
    EXPECT_TRUE(isClicked(1));
}

TEST_F(UserInput, ClickDuringAWaitThatAClickBeganArrivesAfterIt) {
    QObject::connect(&checkBox_, &QCheckBox::clicked, &checkBox_, [&] {
        if (clicks_ == 1) clickDuringRunUntil(300);
        EXPECT_LE(clicks_, 2);
    });
    clickDuringRunUntil(301);
    EXPECT_TRUE(isClicked(2));
}

} // namespace

} // namespace kelvo
