#include "Properties/TDGesturesCellView.h"
#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "peers/driver/TouchSettings.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using touch::Gesture;
using touch::Shape;

/// Of each record the chosen action and whether it is on.
using Choice = std::vector<std::pair<int, bool>>;

/// The gesture list of the window, as its user can have it.
class RowsAndFingers : public testing::TestWithParam<std::int32_t> {
protected:
    RowsAndFingers() { setModelType("A"); }

    /// Shows a new list with that choice, in rows of its own.
    void show(const Choice& choice) {
        const NSMutableArray list = gestureCatalogueForVersion(GetParam());
        for (std::size_t i = 0; i < list.count(); ++i) {
            NSMutableDictionary record = list.objectAtIndex(i).dictionary();
            record.setObjectForKey(choice[i].first, keys::selectedIndex);
            record.setObjectForKey(choice[i].second, keys::isEnable);
        }
        gSettings = list;
        rows_.clear();
        for (std::size_t i = 0; i < list.count(); ++i) {
            rows_.push_back(std::make_shared<TDGesturesCellView>());
            static_cast<void>(rows_.back()->view());
            rows_.back()->initCurrentStateWithActionInformation(list.objectAtIndex(i).dictionary());
        }
    }

    [[nodiscard]] static Choice shownChoice() {
        Choice choice;
        for (std::size_t i = 0; i < gSettings.count(); ++i) {
            const NSMutableDictionary record = gSettings.objectAtIndex(i).dictionary();
            choice.emplace_back(record.objectForKey(keys::selectedIndex).intValue(),
                                record.objectForKey(keys::isEnable).boolValue());
        }
        return choice;
    }

    /// Every choice that one step of the user leads to: a box that is clicked, or an action of a menu that opens.
    std::vector<Choice> nextChoices(const Choice& choice) {
        std::vector<Choice> next;
        for (std::size_t row = 0; row < choice.size(); ++row) {
            show(choice);
            support::outlet<platform::NSButton>(*rows_[row], "clickBtn").performClick();
            next.push_back(shownChoice());
            show(choice);
            auto& menu = support::outlet<TDCustemorPopUpButton>(*rows_[row], "m_gestures");
            const std::size_t actions = menu.itemTitles().size() - 1;
            for (std::size_t action = 0; actions > 1 && choice[row].second && action < actions; ++action) {
                show(choice);
                support::outlet<TDCustemorPopUpButton>(*rows_[row], "m_gestures")
                    .performSelectItemAtIndex(static_cast<int>(action) + 1);
                next.push_back(shownChoice());
            }
        }
        return next;
    }

    /// Those gestures whose choice can change that of others.
    [[nodiscard]] static bool canCollide(std::size_t row) {
        static const std::set<std::string> names{"SwipeBetweenPages", "FullScreenApps", "MissionControl",
                                                 "AppExpos\u00e9", "ShowDesktop"};
        return names.contains(gSettings.objectAtIndex(row).dictionary().objectForKey(keys::name).string().value_or(""));
    }

    [[nodiscard]] static touch::Settings understood() {
        auto settings = NSMutableDictionary::dictionary();
        settings.setObjectForKey(gSettings, keys::gestureArray);
        auto allOn = NSMutableDictionary::dictionary();
        for (const auto key : {systemKeys::appExpose, systemKeys::showDesktop, systemKeys::missionControl,
                               systemKeys::launchpad, systemKeys::swipeNavigateWithScrolls}) {
            allOn.setObjectForKey(true, key);
        }
        return kelvo::touchSettingsOf("Desk", settings, {allOn, allOn, GetParam()});
    }

    support::FakePlatform platform_;
    std::vector<std::shared_ptr<TDGesturesCellView>> rows_;
};

TEST_P(RowsAndFingers, GiveEachShapeToOneGestureAndEachEnabledGestureItsShapes) {
    Choice first;
    for (std::size_t i = 0; i < gestureCatalogueForVersion(GetParam()).count(); ++i) first.emplace_back(0, true);
    std::set<Choice> seen{first};
    std::deque<Choice> open{first};
    std::size_t withoutItsShapes = 0;
    while (!open.empty()) {
        const Choice choice = open.front();
        open.pop_front();
        show(choice);
        const touch::GestureChoice meant(understood().gestures, understood().switches);
        std::map<Gesture, int> shapes;
        for (std::size_t i = 0; i < touch::kShapeCount; ++i) {
            if (const auto gesture = meant.gestureOf(static_cast<Shape>(i))) ++shapes[*gesture];
        }
        for (std::size_t row = 0; row < choice.size(); ++row) {
            const auto gesture = touch::gestureNamed(
                gSettings.objectAtIndex(row).dictionary().objectForKey(keys::name).string().value());
            ASSERT_TRUE(gesture);
            if (*gesture == Gesture::ScrollDirection) continue;
            EXPECT_EQ(choice[row].second || shapes[*gesture] == 0, true) << nameOf(*gesture);
            if (choice[row].second && shapes[*gesture] == 0) ++withoutItsShapes;
        }
        for (const Choice& next : nextChoices(choice)) {
            // The others only go on and off by themselves; one of each is enough.
            bool isOfInterest = true;
            for (std::size_t row = 0; row < next.size(); ++row) {
                isOfInterest = isOfInterest && (canCollide(row) || next[row] == first[row]);
            }
            if (isOfInterest && seen.insert(next).second) open.push_back(next);
        }
    }
    EXPECT_EQ(withoutItsShapes, 0U) << "of " << seen.size() << " lists";
    EXPECT_GT(seen.size(), 8U);
}

INSTANTIATE_TEST_SUITE_P(OfEachSystem, RowsAndFingers, testing::Values(0x1068, 0x1074, 0x1090));

} // namespace
