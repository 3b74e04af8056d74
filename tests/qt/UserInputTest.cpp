#include "qt/QtRunLoop.h"

#include <QCheckBox>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

namespace kelvo {

namespace {

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

// Only a real window system queues what the user does, so these run on a display of their own.

TEST(UserInput, ClickDuringRunUntilArrivesAfterIt) {
    QtRunLoop runLoop;
    QCheckBox checkBox("click me");
    checkBox.resize(200, 100);
    checkBox.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&checkBox));
    const QPoint place = checkBox.mapToGlobal(QPoint(8, 50));
    const QString window = QString::number(checkBox.winId());

    // The window system tells things in their order: when the new size is known here, so is the click.
    QProcess user;
    user.start("xdotool", {"mousemove", QString::number(place.x()), QString::number(place.y()), "click", "1",
                           "windowsize", window, "300", "100"});
    runLoop.runUntil([&] { return checkBox.width() == 300; }, kLongSeconds);
    ASSERT_EQ(checkBox.width(), 300);
    EXPECT_FALSE(checkBox.isChecked());

    EXPECT_TRUE(QTest::qWaitFor([&] { return checkBox.isChecked(); }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return user.state() == QProcess::NotRunning; }));
}

} // namespace

} // namespace kelvo
