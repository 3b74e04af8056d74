#include "tests/touch/Script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using touch::Gesture;
using touch::GestureChoice;
using touch::GestureRecord;
using touch::Shape;

/// Every way of choosing actions and switching records on and off.
void forEachList(std::vector<GestureRecord> records, const std::function<void(const std::vector<GestureRecord>&)>& see,
                 std::size_t from = 0) {
    if (from == records.size()) {
        see(records);
        return;
    }
    for (std::size_t index = 0; index < records[from].descriptor.size(); ++index) {
        records[from].selectedIndex = static_cast<std::int64_t>(index);
        records[from].isEnabled = true;
        forEachList(records, see, from + 1);
    }
    records[from].isEnabled = false;
    forEachList(records, see, from + 1);
}

/// The actions that the enabled records of a list have chosen; fingers that two want are wanted twice.
std::vector<std::string> chosenActions(const std::vector<GestureRecord>& records) {
    std::vector<std::string> actions;
    for (const GestureRecord& record : records) {
        if (!record.isEnabled) continue;
        const std::string& action = record.descriptor[static_cast<std::size_t>(record.selectedIndex)];
        if (action == "SwipeWithTwoOrThreeFingers") {
            actions.insert(actions.end(), {"ScrollLeftOrRightWithTwoFingers", "SidewaysWithThree"});
        } else if (action == "SwipeWithThreeFingers" || action == "SwipeLeftOrRightWithThreeFingers") {
            actions.emplace_back("SidewaysWithThree");
        } else {
            actions.push_back(action);
        }
    }
    return actions;
}

/// What the window makes of a list whose full-screen gesture or pages the user has just chosen.
bool collides(const std::vector<GestureRecord>& records) {
    auto actions = chosenActions(records);
    std::sort(actions.begin(), actions.end());
    return std::adjacent_find(actions.begin(), actions.end()) != actions.end();
}

TEST(Catalogues, GiveEachShapeToAtMostOneGestureInEveryList) {
    std::size_t lists = 0;
    for (const auto& catalogue :
         {touching::newestGestures(), touching::lionGestures(), touching::snowLeopardGestures()}) {
        // Gestures with one action take no part in any collision, so that half of the lists are enough.
        std::vector<GestureRecord> records = catalogue;
        std::erase_if(records, [](const GestureRecord& record) {
            return record.descriptor.size() == 1 && record.name != "ShowDesktop" && record.name != "FullScreenApps" &&
                   record.name != "SwipeBetweenPages";
        });
        forEachList(records, [&](const std::vector<GestureRecord>& list) {
            ++lists;
            const GestureChoice choice(list, {});
            std::size_t shapes = 0;
            for (std::size_t i = 0; i < touch::kShapeCount; ++i) {
                const auto gesture = choice.gestureOf(static_cast<Shape>(i));
                if (!gesture || *gesture == Gesture::Scroll) continue;
                ++shapes;
            }
            // Where nothing collides every enabled record has all of its shapes.
            const auto actions = chosenActions(list);
            if (collides(list)) {
                EXPECT_LT(shapes, actions.size());
            } else {
                EXPECT_EQ(shapes, actions.size());
            }
        });
    }
    EXPECT_GT(lists, 300U);
}

TEST(Catalogues, KnowEveryActionOfEveryRecord) {
    for (const auto& catalogue :
         {touching::newestGestures(), touching::lionGestures(), touching::snowLeopardGestures()}) {
        for (GestureRecord record : catalogue) {
            for (std::size_t index = 0; index < record.descriptor.size(); ++index) {
                record.selectedIndex = static_cast<std::int64_t>(index);
                const GestureChoice choice({record}, {});
                const auto gesture = touch::gestureNamed(record.name);
                ASSERT_TRUE(gesture) << record.name;
                bool isWanted = *gesture == Gesture::ScrollDirection && choice.contentFollowsFingers();
                for (std::size_t i = 0; i < touch::kShapeCount; ++i) {
                    isWanted = isWanted || choice.gestureOf(static_cast<Shape>(i)) == gesture;
                }
                EXPECT_TRUE(isWanted) << record.name << " " << record.descriptor[index];
            }
        }
    }
}

TEST(Catalogues, AreDoneByTheirDefaultActionEach) {
    const touch::ActionTable table;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        const auto direction = gesture == Gesture::SwipeBetweenPages ? touch::Direction::Right : touch::Direction::None;
        const auto kind = table.actionFor(gesture, direction).kind;
        // That one says only which way content goes.
        EXPECT_EQ(kind == touch::Action::Kind::Nothing, gesture == Gesture::ScrollDirection) << nameOf(gesture);
    }
}

} // namespace
