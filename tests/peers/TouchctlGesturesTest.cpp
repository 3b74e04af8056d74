#include "peers/touchctl/GestureRows.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "peers/touchctl/Failure.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using support::arrayOf;
using support::dictionaryOf;
using testing::HasSubstr;
using testing::SizeIs;

class TouchctlGestures : public testing::Test {
protected:
    TouchctlGestures() {
        platform_.ports.peers[kTouchDisplayDriverPortName] = support::MemoryPorts::Peer::Answers;
        setModelType("Desk");
        gSettings = initGesturesInformationForLion();
    }

    [[nodiscard]] static NSMutableDictionary record(std::string_view name) {
        for (std::size_t i = 0; i < gSettings.count(); ++i) {
            auto candidate = gSettings.objectAtIndex(i).dictionary();
            if (candidate.objectForKey("Name").isEqual(name)) return candidate;
        }
        throw std::out_of_range(std::string(name));
    }
    [[nodiscard]] static int indexOf(std::string_view name) {
        return record(name).objectForKey("SelectedIndex").intValue();
    }
    [[nodiscard]] static bool isOn(std::string_view name) { return record(name).objectForKey("IsEnable").boolValue(); }

    [[nodiscard]] static std::string refusalOf(const std::string& name, const Words& deeds) {
        try {
            changeGesture(name, deeds);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), Status::Usage);
            return failure.what();
        }
        return "";
    }

    support::FakePlatform platform_;
};

TEST_F(TouchctlGestures, SwitchedOffStaysWithItsActionAndTheWholeListIsSentOnce) {
    changeGesture("SecondaryClick", {"off"});

    EXPECT_FALSE(isOn("SecondaryClick"));
    EXPECT_EQ(indexOf("SecondaryClick"), 0);
    ASSERT_THAT(platform_.ports.received, SizeIs(1));
    EXPECT_EQ(platform_.ports.received[0].id, kMessageIDForGestureArray);
    EXPECT_TRUE(platform_.ports.received[0].payload.isEqual(
        dictionaryOf({{gSettings, "GestureArray"}, {"Desk", "DeviceName"}})));
}

TEST_F(TouchctlGestures, ActionSwitchesTheGestureOnToo) {
    changeGesture("MissionControl", {"off"});
    changeGesture("MissionControl", {"SwipeUpWithFourFingers"});

    EXPECT_TRUE(isOn("MissionControl"));
    EXPECT_EQ(indexOf("MissionControl"), 1);
}

TEST_F(TouchctlGestures, SwitchedOffWithAnActionItMovesTheOthersAsThatActionDoes) {
    changeGesture("SwipeBetweenPages", {"off", "SwipeWithThreeFingers"});

    EXPECT_FALSE(isOn("SwipeBetweenPages"));
    EXPECT_EQ(indexOf("SwipeBetweenPages"), 1);
    EXPECT_EQ(indexOf("FullScreenApps"), 1);
}

TEST_F(TouchctlGestures, SwitchAndActionAreEachSaidOnceInThisOrder) {
    EXPECT_THAT(refusalOf("Rotate", {"off", "on"}), HasSubstr("not \"on\""));
    EXPECT_THAT(refusalOf("Rotate", {"RotateWithTwoFingers", "off"}), HasSubstr("not \"RotateWithTwoFingers off\""));
    EXPECT_THAT(platform_.ports.received, SizeIs(0));
}

TEST_F(TouchctlGestures, PagesThatTakeThreeFingersMoveFullScreenToFourAndBothRowsSend) {
    changeGesture("SwipeBetweenPages", {"SwipeWithThreeFingers"});

    EXPECT_EQ(indexOf("FullScreenApps"), 1);
    EXPECT_TRUE(isOn("FullScreenApps"));
    EXPECT_THAT(platform_.ports.received, SizeIs(2));
}

TEST_F(TouchctlGestures, FullScreenThatTakesThreeFingersSwitchesOffPagesThatHaveNoOthers) {
    record("FullScreenApps").setObjectForKey(1, "SelectedIndex");
    record("SwipeBetweenPages").setObjectForKey(1, "SelectedIndex");

    changeGesture("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers"});

    EXPECT_FALSE(isOn("SwipeBetweenPages"));
    EXPECT_EQ(indexOf("SwipeBetweenPages"), 0);
}

TEST_F(TouchctlGestures, FullScreenThatTakesThreeFingersMovesPagesThatHaveTwo) {
    record("FullScreenApps").setObjectForKey(1, "SelectedIndex");
    record("SwipeBetweenPages").setObjectForKey(2, "SelectedIndex");

    changeGesture("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers"});

    EXPECT_TRUE(isOn("SwipeBetweenPages"));
    EXPECT_EQ(indexOf("SwipeBetweenPages"), 0);
}

TEST_F(TouchctlGestures, MissionControlAndExposeTakeTheSameNumberOfFingers) {
    changeGesture("AppExpos\u00e9", {"SwipeDownWithFourFingers"});
    EXPECT_EQ(indexOf("MissionControl"), 1);

    changeGesture("MissionControl", {"SwipeUpWithThreeFingers"});
    EXPECT_EQ(indexOf("AppExpos\u00e9"), 0);
}

TEST_F(TouchctlGestures, NameWithAnAccentMayBeWrittenWithoutButNotDecomposed) {
    changeGesture("AppExpose", {"off"});
    EXPECT_FALSE(isOn("AppExpos\u00e9"));
    EXPECT_THAT(refusalOf("AppExpose\u0301", {"on"}), HasSubstr("there is no gesture"));
}

TEST_F(TouchctlGestures, UnknownGestureOrActionIsRefusedWithThoseThereAre) {
    EXPECT_THAT(refusalOf("Jump", {"on"}), HasSubstr("SecondaryClick, LookUp,"));
    EXPECT_THAT(refusalOf("FullScreenApps", {"SwipeWithThreeFingers"}),
                HasSubstr("SwipeLeftOrRightWithThreeFingers, SwipeLeftOrRightWithFourFingers"));
    EXPECT_THAT(platform_.ports.received, SizeIs(0));
}

TEST_F(TouchctlGestures, GestureOfOneActionTakesThatOne) {
    changeGesture("Rotate", {"off"});
    changeGesture("Rotate", {"RotateWithTwoFingers"});
    EXPECT_TRUE(isOn("Rotate"));
    EXPECT_EQ(indexOf("Rotate"), 0);
}

TEST_F(TouchctlGestures, ListIsTheStoredOneElseTheSystems) {
    const NSMutableArray stored = arrayOf({newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, false)});
    EXPECT_TRUE(gestureListOf(dictionaryOf({{stored, "GestureArray"}})).isIdenticalTo(stored));
    platform_.systemVersion.version = 0x1068;
    EXPECT_TRUE(gestureListOf(NSMutableDictionary()).isEqual(initGesturesInformationForSnowLeopard()));
    platform_.systemVersion.version = 0x1059;
    EXPECT_THROW((void)gestureListOf(NSMutableDictionary()), Failure);
}

TEST_F(TouchctlGestures, DamagedListIsRefused) {
    EXPECT_THROW((void)gestureListOf(dictionaryOf({{"x", "GestureArray"}})), Failure);
    EXPECT_THROW((void)gestureListOf(dictionaryOf({{arrayOf({7}), "GestureArray"}})), Failure);
}

} // namespace

} // namespace kelvo::touchctl
