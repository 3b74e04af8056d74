#include "touch/Actions.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

namespace {

using touch::Action;
using touch::Gesture;
using Kind = Action::Kind;

Action fingers(std::int32_t count) { return {.kind = Kind::Fingers, .fingers = count}; }

Action chord(std::initializer_list<std::int32_t> keys) {
    Action action{.kind = Kind::Chord};
    for (const std::int32_t key : keys) action.keys.add(key);
    return action;
}

bool can(Gesture gesture, const Action& action) { return reasonAgainst(action, gesture).empty(); }

TEST(Actions, EveryGestureCanDoWhatThePlainTableHasForIt) {
    const touch::ActionTable table;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        if (gesture == Gesture::ScrollDirection) continue;
        for (const auto direction : {touch::Direction::Left, touch::Direction::Right}) {
            EXPECT_EQ(reasonAgainst(table.actionFor(gesture, direction), gesture), "") << nameOf(gesture);
        }
    }
}

TEST(Actions, ATapHasNoFingersToFollow) {
    for (const Gesture gesture : {Gesture::SecondaryClick, Gesture::LookUp, Gesture::SmartZoom}) {
        EXPECT_FALSE(can(gesture, fingers(0)));
        EXPECT_FALSE(can(gesture, fingers(3)));
    }
}

TEST(Actions, ScrollingZoomingAndTurningAreFollowedByTwoFingersOrNotAtAll) {
    for (const Gesture gesture : {Gesture::Scroll, Gesture::ZoomInOrOut, Gesture::Rotate}) {
        EXPECT_TRUE(can(gesture, fingers(0)));
        EXPECT_TRUE(can(gesture, fingers(2)));
        EXPECT_FALSE(can(gesture, fingers(3)));
        EXPECT_TRUE(can(gesture, {.kind = Kind::Nothing}));
        EXPECT_FALSE(can(gesture, chord({125})));
        EXPECT_FALSE(can(gesture, {.kind = Kind::RightClick}));
        EXPECT_FALSE(can(gesture, {.kind = Kind::Call}));
    }
}

TEST(Actions, SwipesArePlayedWithThreeOrFourFingers) {
    EXPECT_TRUE(can(Gesture::MissionControl, fingers(3)));
    EXPECT_TRUE(can(Gesture::MissionControl, fingers(4)));
    for (const std::int32_t count : {-1, 1, 2, 5}) EXPECT_FALSE(can(Gesture::MissionControl, fingers(count))) << count;
}

TEST(Actions, AChordHasKeysOfTheListAndEachOnce) {
    EXPECT_TRUE(can(Gesture::Launchpad, chord({125, 30})));
    EXPECT_FALSE(can(Gesture::Launchpad, chord({})));
    EXPECT_FALSE(can(Gesture::Launchpad, chord({125, 125})));
    EXPECT_FALSE(can(Gesture::Launchpad, chord({16})));
}

TEST(Actions, TheDirectionOfScrollingDoesNothingOfItsOwn) {
    EXPECT_FALSE(can(Gesture::ScrollDirection, {.kind = Kind::Nothing}));
}

TEST(Actions, EachKeyOfAChordHasOneNameAndOneCode) {
    std::set<std::string_view> names;
    std::set<std::int32_t> codes;
    for (const touch::ChordKey& key : touch::kChordKeys) {
        names.insert(key.name);
        codes.insert(key.code);
        EXPECT_EQ(touch::codeOfChordKey(key.name), key.code);
        EXPECT_EQ(touch::nameOfChordKey(key.code), key.name);
    }
    EXPECT_EQ(names.size(), touch::kChordKeys.size());
    EXPECT_EQ(codes.size(), touch::kChordKeys.size());
    EXPECT_EQ(touch::nameOfChordKey(0), "");
}

} // namespace
