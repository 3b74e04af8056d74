#include "TDGestureCatalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using testing::ElementsAre;
using testing::ElementsAreArray;

struct Row {
    std::string name;
    std::vector<std::string> actions;
    bool more = false;
    bool operator==(const Row&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
    out << row.name << (row.more ? " more" : "");
    for (const std::string& action : row.actions) out << ' ' << action;
    return out;
}

const std::vector<Row> kSnowLeopard = {
    {"SecondaryClick", {"ClickOrTapWithTwoFingers"}, false},
    {"Scroll", {"ScrollWithTwoFingers"}, false},
    {"ScrollDirection", {"ContentTracksFingerMovement"}, false},
    {"ZoomInOrOut", {"PinchWithTwoFingers"}, false},
    {"Rotate", {"RotateWithTwoFingers"}, false},
    {"SwipeBetweenPages", {"SwipeWithThreeFingers"}, true},
    {"FullScreenApps", {"SwipeLeftOrRightWithFourFingers"}, true},
    {"AppExpos\u00e9", {"SwipeDownWithFourFingers"}, true},
    {"ShowDesktop", {"SwipeUpWithFourFingers"}, true},
};

const std::vector<Row> kLion = {
    {"SecondaryClick", {"ClickOrTapWithTwoFingers"}, false},
    {"LookUp", {"TapWithThreeFingers"}, false},
    {"ScrollDirection", {"ContentTracksFingerMovement"}, false},
    {"ZoomInOrOut", {"PinchWithTwoFingers"}, false},
    {"SmartZoom", {"DoubleTapWithTwoFingers"}, false},
    {"Rotate", {"RotateWithTwoFingers"}, false},
    {"SwipeBetweenPages",
     {"ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers", "SwipeWithTwoOrThreeFingers"},
     true},
    {"FullScreenApps", {"SwipeLeftOrRightWithThreeFingers", "SwipeLeftOrRightWithFourFingers"}, true},
    {"MissionControl", {"SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"}, true},
    {"AppExpos\u00e9", {"SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"}, true},
    {"Launchpad", {"PinchWithThumbAndThreeFingers"}, true},
    {"ShowDesktop", {"SpreadWithThumbAndThreeFingers"}, true},
};

std::vector<Row> mountainLion() {
    std::vector<Row> rows = kLion;
    rows.insert(rows.begin() + 8, Row{"NotificationCenter", {"SwipeLeftFromTheRightEdgeWithTwoFingers"}, true});
    return rows;
}

std::vector<Row> rowsOf(const NSMutableArray& gestures) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < gestures.count(); ++i) {
        const NSMutableDictionary record = gestures.objectAtIndex(i).dictionary();
        Row row{record.objectForKey("Name").string().value(), {}, record.objectForKey("MoreGesture").boolValue()};
        const NSMutableArray descriptor = record.objectForKey("Descriptor").array();
        for (std::size_t j = 0; j < descriptor.count(); ++j) {
            row.actions.push_back(descriptor.objectAtIndex(j).string().value());
        }
        rows.push_back(row);
    }
    return rows;
}

TEST(Catalogue, OfSnowLeopardHasItsNineRecords) {
    EXPECT_THAT(rowsOf(initGesturesInformationForSnowLeopard()), ElementsAreArray(kSnowLeopard));
}

TEST(Catalogue, OfLionHasItsTwelveRecords) {
    EXPECT_THAT(rowsOf(initGesturesInformationForLion()), ElementsAreArray(kLion));
}

TEST(Catalogue, OfMountainLionHasOneRecordMoreBehindFullScreen) {
    EXPECT_THAT(rowsOf(initGesturesInformationForMountainLion()), ElementsAreArray(mountainLion()));
}

TEST(Catalogue, RecordsAreSwitchedOnAtTheirFirstActionAndHaveFiveKeysOfTheirKinds) {
    for (const NSMutableArray& gestures : {initGesturesInformationForSnowLeopard(), initGesturesInformationForLion(),
                                           initGesturesInformationForMountainLion()}) {
        for (std::size_t i = 0; i < gestures.count(); ++i) {
            const NSMutableDictionary record = gestures.objectAtIndex(i).dictionary();
            EXPECT_THAT(record.allKeys(),
                        ElementsAre("Name", "Descriptor", "SelectedIndex", "IsEnable", "MoreGesture"));
            EXPECT_EQ(record.objectForKey("SelectedIndex").kind(), Value::Kind::Integer);
            EXPECT_EQ(record.objectForKey("SelectedIndex").intValue(), 0);
            EXPECT_EQ(record.objectForKey("IsEnable").kind(), Value::Kind::Boolean);
            EXPECT_TRUE(record.objectForKey("IsEnable").boolValue());
            EXPECT_EQ(record.objectForKey("MoreGesture").kind(), Value::Kind::Boolean);
        }
    }
}

TEST(Catalogue, AskedForTwiceGivesEqualRecordsThatAreNotShared) {
    const NSMutableArray first = initGesturesInformationForLion();
    const NSMutableArray second = initGesturesInformationForLion();
    EXPECT_TRUE(first.isEqual(second));
    EXPECT_FALSE(first.isIdenticalTo(second));

    first.objectAtIndex(0).dictionary().setObjectForKey(false, "IsEnable");

    EXPECT_TRUE(second.objectAtIndex(0).dictionary().objectForKey("IsEnable").boolValue());
}

TEST(Catalogue, NamesAppExposeWithTheComposedAccentAlone) {
    const Value name = initGesturesInformationForLion().objectAtIndex(9).dictionary().objectForKey("Name");

    EXPECT_TRUE(name.isEqual("AppExpos\u00e9"));
    EXPECT_FALSE(name.isEqual("AppExpose\u0301"));
}

TEST(Catalogue, IsChosenByTheRawSystemVersion) {
    for (const std::int32_t version : {0x1060, 0x1068, 0x106F}) {
        EXPECT_THAT(rowsOf(gestureCatalogueForVersion(version)), ElementsAreArray(kSnowLeopard)) << version;
    }
    for (const std::int32_t version : {0x1070, 0x1074, 0x107F}) {
        EXPECT_THAT(rowsOf(gestureCatalogueForVersion(version)), ElementsAreArray(kLion)) << version;
    }
    for (const std::int32_t version : {0x1080, 0x1090, 0x1100, 0x7FFFFFFF}) {
        EXPECT_THAT(rowsOf(gestureCatalogueForVersion(version)), ElementsAreArray(mountainLion())) << version;
    }
    for (const std::int32_t version : {0x105F, 0x1059, 0, -1}) {
        EXPECT_FALSE(gestureCatalogueForVersion(version)) << version;
    }
}

} // namespace
