#include "platform/Drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace platform;

TEST(AnOval, ContainsWhatLiesInsideItsRectangleAndItself) {
    const auto circle = NSBezierPath::bezierPathWithOvalInRect({10, 10, 20, 20});

    EXPECT_TRUE(circle.containsPoint({20, 20}));
    EXPECT_TRUE(circle.containsPoint({29.9, 20}));
    EXPECT_FALSE(circle.containsPoint({30.1, 20}));
    EXPECT_FALSE(circle.containsPoint({11, 11}));
}

TEST(AnOval, DoesNotGrowWithItsLine) {
    auto circle = NSBezierPath::bezierPathWithOvalInRect({0, 0, 10, 10});
    circle.setLineWidth(8.0);

    EXPECT_FALSE(circle.containsPoint({10.5, 5}));
}

TEST(AnOval, WithoutSizeContainsNothing) {
    for (const double size : {0.0, -5.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(NSBezierPath::bezierPathWithOvalInRect({0, 0, size, size}).containsPoint({std::nan(""), 0}));
        if (!(size > 0)) {
            EXPECT_FALSE(NSBezierPath::bezierPathWithOvalInRect({0, 0, size, size}).containsPoint({0, 0}));
        }
    }
}

TEST(Drawing, WithoutAContextDoesNothing) {
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    NSColor::redColor().set();
    NSRectFill({0, 0, 1, 1});
    NSBezierPath::bezierPathWithOvalInRect({0, 0, 1, 1}).stroke();
}

} // namespace
