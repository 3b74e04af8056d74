#include "platform/Log.h"

#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using platform::stringWithFormat;

TEST(AFormat, PutsEachArgumentInItsPlace) {
    EXPECT_EQ(stringWithFormat("%f,%d", {0.5, 32}), "0.500000,32");
    EXPECT_EQ(stringWithFormat("updateUIState %@", {"/a path"}), "updateUIState /a path");
    EXPECT_EQ(stringWithFormat("a%%b%", {}), "a%b%");
    EXPECT_EQ(stringWithFormat("%x%@", {"1"}), "%x1");
}

TEST(AFormat, WithoutAnArgumentReadsAsNothing) { EXPECT_EQ(stringWithFormat("%@ %d %f", {}), "(null) 0 0.000000"); }

TEST(AFormat, DoesNotExpandWhatAnArgumentHolds) { EXPECT_EQ(stringWithFormat("%@ %@", {"%@ %n", "b"}), "%@ %n b"); }

TEST(AFormat, WritesAnyNumber) {
    EXPECT_EQ(stringWithFormat("%f", {std::nan("")}), "nan");
    EXPECT_EQ(stringWithFormat("%f", {-std::numeric_limits<double>::infinity()}), "-inf");
    EXPECT_EQ(stringWithFormat("%f", {-std::numeric_limits<double>::max()}).size(), 317U);
    EXPECT_EQ(stringWithFormat("%d", {1e300}), "2147483647");
}

TEST(ALogLine, GoesToTheSystemLog) {
    support::FakePlatform platform;

    platform::NSLog("SelectedMenuItem %d of %@", 3, std::optional<std::string>());

    EXPECT_THAT(platform.log.lines, testing::ElementsAre("SelectedMenuItem 3 of (null)"));
}

} // namespace
