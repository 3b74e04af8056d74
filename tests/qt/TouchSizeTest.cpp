#include "qt/TouchSize.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {

namespace {

TEST(TouchSizeTest, WhatIsTouchedIsNineMillimetresHighOnEveryScreen) {
    for (const double dotsPerInch : {72.0, 96.0, 110.0, 130.0, 160.0, 200.0}) {
        EXPECT_GE(touchHeightAt(dotsPerInch) / dotsPerInch * 25.4, 9.0) << dotsPerInch;
    }
}

TEST(TouchSizeTest, CoarseScreenHasTheUsualSize) {
    EXPECT_EQ(touchHeightAt(96.0), kTouchHeight);
    EXPECT_EQ(touchHeightAt(40.0), kTouchHeight);
}

TEST(TouchSizeTest, FinerScreenHasMorePixels) { EXPECT_EQ(touchHeightAt(170.0), 61); }

TEST(TouchSizeTest, ScreenWhoseSizeCannotBeBelievedHasTheUsualOne) {
    for (const double dotsPerInch :
         {0.0, -96.0, 5000.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(touchHeightAt(dotsPerInch), kTouchHeight) << dotsPerInch;
    }
}

} // namespace

} // namespace kelvo
