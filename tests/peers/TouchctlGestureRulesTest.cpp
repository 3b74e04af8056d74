#include "peers/touchctl/GestureRules.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "peers/touchctl/GestureRows.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

NSMutableDictionary gesture(std::string_view name, std::initializer_list<Value> actions, int index = 0,
                            bool isOn = true) {
    auto record = newGestureDictionary(name, actions, false);
    record.setObjectForKey(index, keys::selectedIndex);
    record.setObjectForKey(isOn, keys::isEnable);
    return record;
}

class TouchctlGestureRules : public testing::Test {
protected:
    support::FakePlatform platform_;
};

TEST_F(TouchctlGestureRules, ListsOfEachSystemAreAsItMakesThem) {
    for (const int version : {0x1068, 0x1074, 0x1090}) {
        platform_.systemVersion.version = version;
        EXPECT_THAT(odditiesOf(gestureCatalogueForVersion(version), {}), IsEmpty()) << version;
    }
}

TEST_F(TouchctlGestureRules, NothingThatTheRowsMakeIsStrange) {
    setModelType("Desk");
    for (const int version : {0x1068, 0x1074, 0x1090}) {
        platform_.systemVersion.version = version;
        gSettings = gestureCatalogueForVersion(version);
        // Every gesture with every action, after everything that came before, forth and back.
        for (int round = 0; round < 2; ++round) {
            for (std::size_t i = 0; i < gSettings.count(); ++i) {
                const std::size_t place = round == 0 ? i : gSettings.count() - 1 - i;
                const NSMutableDictionary record = gSettings.objectAtIndex(place).dictionary();
                const std::string name = record.objectForKey("Name").string().value_or("");
                const NSMutableArray actions = record.objectForKey("Descriptor").array();
                for (const Value& action : actions.objects()) {
                    for (const char* deed : {"on", "off"}) {
                        changeGesture(name, {deed, action.string().value_or("")});
                        EXPECT_THAT(odditiesOf(gSettings, {}), IsEmpty()) << name << action.description() << deed;
                    }
                }
            }
        }
    }
}

TEST_F(TouchctlGestureRules, UnknownIsWhatNeitherTheSystemNorTheDisplayHas) {
    const NSMutableArray own = arrayOf({gesture("Own", {"OwnAction"}), gesture("Rotate", {"Twist"})});
    EXPECT_THAT(odditiesOf(own, own), IsEmpty());
    EXPECT_THAT(odditiesOf(own, {}), ElementsAre("unknown gesture \"Own\"", "unknown action \"Twist\" of Rotate"));
    platform_.systemVersion.version = 0x1074;
    EXPECT_THAT(odditiesOf(initGesturesInformationForMountainLion(), {}),
                ElementsAre("unknown gesture \"NotificationCenter\""));
    EXPECT_THAT(odditiesOf(initGesturesInformationForMountainLion(), arrayOf({7})), SizeIs(1));
}

TEST_F(TouchctlGestureRules, EachOfTwoIsNamedOnce) {
    const NSMutableDictionary rotate = gesture("Rotate", {"RotateWithTwoFingers"});
    EXPECT_THAT(odditiesOf(arrayOf({rotate, rotate, gesture("Rotate", {"RotateWithTwoFingers"}, 0, false)}), {}),
                ElementsAre("duplicate gesture \"Rotate\"", "duplicate gesture \"Rotate\""));
}

TEST_F(TouchctlGestureRules, CollidingGesturesAreStrangeUnlessTheyHaveNowhereToGo) {
    const auto pages = gesture("SwipeBetweenPages", {"ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers"}, 1);
    const auto full =
        gesture("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers", "SwipeLeftOrRightWithFourFingers"}, 0);
    EXPECT_THAT(odditiesOf(arrayOf({pages, full}), {}), SizeIs(1));
    const auto pinned = gesture("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers"});
    EXPECT_THAT(odditiesOf(arrayOf({pages, pinned}), {}), IsEmpty());

    const auto control = gesture("MissionControl", {"SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"}, 1);
    const auto expose = gesture("AppExpos\u00e9", {"SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"}, 0, false);
    EXPECT_THAT(odditiesOf(arrayOf({expose, control}), {}), SizeIs(1));
    const auto onlyFour = gesture("AppExpos\u00e9", {"SwipeDownWithFourFingers"});
    EXPECT_THAT(odditiesOf(arrayOf({onlyFour, control}), {}), IsEmpty());
    EXPECT_THAT(odditiesOf(arrayOf({control}), {}), IsEmpty());
}

} // namespace

} // namespace kelvo::touchctl
