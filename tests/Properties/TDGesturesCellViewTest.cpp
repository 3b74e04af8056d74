#include "Properties/TDGesturesCellView.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <variant>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// As wide as the forms of these tests draw a text.
double widthOf(std::string_view text) { return 10.0 * static_cast<double>(text.size()); }

constexpr char kDriver[] = "TouchDisplayDriverMessagePort";

/// The rows of a gesture list, without the tab around them.
class Rows : public testing::Test {
protected:
    Rows() {
        platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Answers;
        setModelType("A");
        for (const char* key :
             {"SwipeBetweenPages", "FullScreenApps", "FullScreenAppsForSnowLeopard", "SecondaryClick",
              "ClickOrTapWithTwoFingers", "ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers",
              "SwipeWithTwoOrThreeFingers", "SwipeLeftOrRightWithThreeFingers", "SwipeLeftOrRightWithFourFingers"}) {
            platform.bundle.strings[key] = std::string("text of ") + key;
        }
    }

    void show(const NSMutableArray& list) {
        gSettings = list;
        rows.clear();
        for (std::size_t i = 0; i < list.count(); ++i) {
            rows.push_back(std::make_shared<TDGesturesCellView>());
            (void)rows.back()->view();
            rows.back()->initCurrentStateWithActionInformation(list.objectAtIndex(i).dictionary());
        }
    }

    [[nodiscard]] NSMutableDictionary record(std::string_view name) const {
        for (std::size_t i = 0; i < gSettings.count(); ++i) {
            const NSMutableDictionary candidate = gSettings.objectAtIndex(i).dictionary();
            if (candidate.objectForKey("Name").isEqual(name)) return candidate;
        }
        throw std::out_of_range(std::string(name));
    }
    [[nodiscard]] int indexOf(std::string_view name) const {
        return record(name).objectForKey("SelectedIndex").intValue();
    }
    [[nodiscard]] bool isOn(std::string_view name) const { return record(name).objectForKey("IsEnable").boolValue(); }

    TDGesturesCellView& row(std::string_view name) {
        for (const auto& candidate : rows) {
            if (candidate->actionInfo().isIdenticalTo(record(name))) return *candidate;
        }
        throw std::out_of_range(std::string(name));
    }
    platform::NSButton& box(std::string_view name) {
        return support::outlet<platform::NSButton>(row(name), "clickBtn");
    }
    TDCustemorPopUpButton& menu(std::string_view name) {
        return support::outlet<TDCustemorPopUpButton>(row(name), "m_gestures");
    }
    /// The user picks an action by its place in the record.
    void pick(std::string_view name, int action) { menu(name).performSelectItemAtIndex(action + 1); }

    support::FakePlatform platform;
    std::vector<std::shared_ptr<TDGesturesCellView>> rows;
};

using RowSetUp = Rows;

TEST_F(RowSetUp, ShowsTitleStateAndActionsBehindAnEmptyEntry) {
    show(initGesturesInformationForLion());
    const auto& title = support::outlet<platform::NSTextField>(row("SwipeBetweenPages"), "m_title");

    EXPECT_EQ(title.stringValue(), "text of SwipeBetweenPages");
    EXPECT_EQ(box("SwipeBetweenPages").state(), 1);
    EXPECT_TRUE(menu("SwipeBetweenPages").isEnabled());
    EXPECT_TRUE(menu("SwipeBetweenPages").isRespond());
    const auto titles = ElementsAre("", "text of ScrollLeftOrRightWithTwoFingers", "text of SwipeWithThreeFingers",
                                    "text of SwipeWithTwoOrThreeFingers");
    EXPECT_THAT(row("SwipeBetweenPages").itemsString(), titles);
    EXPECT_THAT(menu("SwipeBetweenPages").itemTitles(), titles);
    EXPECT_EQ(menu("SwipeBetweenPages").indexOfSelectedItem(), 1);
    EXPECT_EQ(menu("SwipeBetweenPages").title(), "text of ScrollLeftOrRightWithTwoFingers");
    EXPECT_TRUE(menu("SwipeBetweenPages").cell().isBordered());
    EXPECT_TRUE(menu("SwipeBetweenPages").cell().hasArrow());
}

TEST_F(RowSetUp, ShowsARecordThatIsOffAsOff) {
    const NSMutableArray list = initGesturesInformationForLion();
    list.objectAtIndex(6).dictionary().setObjectForKey(false, "IsEnable");
    list.objectAtIndex(6).dictionary().setObjectForKey(2, "SelectedIndex");
    show(list);

    EXPECT_EQ(box("SwipeBetweenPages").state(), 0);
    EXPECT_FALSE(menu("SwipeBetweenPages").isEnabled());
    EXPECT_EQ(menu("SwipeBetweenPages").indexOfSelectedItem(), 3);
}

TEST_F(RowSetUp, ShowsASingleActionAsPlainTextThatDoesNotOpen) {
    const NSMutableArray list = initGesturesInformationForLion();
    list.objectAtIndex(0).dictionary().setObjectForKey(false, "IsEnable");
    show(list);

    const auto& popUp = menu("SecondaryClick");
    EXPECT_FALSE(popUp.cell().isBordered());
    EXPECT_FALSE(popUp.cell().hasArrow());
    EXPECT_TRUE(popUp.isEnabled());
    EXPECT_FALSE(popUp.isRespond());
    EXPECT_FALSE(popUp.opensMenu());
    EXPECT_EQ(popUp.frame().x, platform.nibs.popUpFrame.x - 2.0);
    EXPECT_EQ(popUp.title(), "text of ClickOrTapWithTwoFingers");
}

TEST_F(RowSetUp, MakesThePopUpAsWideAsItsTitleAndTwentyFivePoints) {
    show(initGesturesInformationForLion());

    const platform::NSRect frame = menu("SwipeBetweenPages").frame();
    const double titleWidth = widthOf("text of ScrollLeftOrRightWithTwoFingers");
    EXPECT_EQ(frame, (platform::NSRect{60.0, 2.0, titleWidth + 25.0, 26.0}));
}

TEST_F(RowSetUp, OfFullScreenHasItsOwnTitleUnderSnowLeopardAndDoesNotObserve) {
    platform.systemVersion.version = 0x1068;
    const NSMutableArray list = initGesturesInformationForLion();
    show(list);
    const auto& title = support::outlet<platform::NSTextField>(row("FullScreenApps"), "m_title");
    EXPECT_EQ(title.stringValue(), "text of FullScreenAppsForSnowLeopard");

    pick("SwipeBetweenPages", 1);

    EXPECT_EQ(indexOf("FullScreenApps"), 0);
    EXPECT_THAT(platform.ports.received, SizeIs(1));
}

TEST_F(RowSetUp, OfAnyOtherGestureHasItsUsualTitleUnderSnowLeopard) {
    platform.systemVersion.version = 0x1068;
    show(initGesturesInformationForLion());

    EXPECT_EQ(support::outlet<platform::NSTextField>(row("SwipeBetweenPages"), "m_title").stringValue(),
              "text of SwipeBetweenPages");
}

TEST_F(RowSetUp, OfDamagedRecordsShowsWhatMakesSense) {
    show(arrayOf(
        {dictionaryOf({}), dictionaryOf({{"SwipeBetweenPages", "Name"}, {arrayOf({}), "Descriptor"}}),
         dictionaryOf({{"MissionControl", "Name"}, {arrayOf({"a", 5, "b"}), "Descriptor"}, {99, "SelectedIndex"}}),
         dictionaryOf({{7, "Name"}, {"none", "Descriptor"}, {-5, "SelectedIndex"}, {"YES", "IsEnable"}}),
         dictionaryOf(
             {{arrayOf({"x", "y"}), "Descriptor"}, {std::numeric_limits<std::int64_t>::max(), "SelectedIndex"}})}));

    for (const auto& each : rows) {
        auto& popUp = support::outlet<TDCustemorPopUpButton>(*each, "m_gestures");
        EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
        EXPECT_EQ(popUp.title(), "");
    }
    EXPECT_EQ(support::outlet<platform::NSButton>(*rows[3], "clickBtn").state(), 1);
    for (const std::size_t nameless : {0U, 3U, 4U}) {
        EXPECT_EQ(support::outlet<platform::NSTextField>(*rows[nameless], "m_title").stringValue(), "");
    }
}

TEST_F(RowSetUp, OnceMoreForgetsTheRecordBefore) {
    show(arrayOf({dictionaryOf({{"Other", "Name"}, {arrayOf({"a"}), "Descriptor"}, {0, "SelectedIndex"}})}));
    auto& popUp = support::outlet<TDCustemorPopUpButton>(*rows[0], "m_gestures");

    rows[0]->initCurrentStateWithActionInformation(
        dictionaryOf({{"Other", "Name"}, {arrayOf({"b", "c"}), "Descriptor"}, {1, "SelectedIndex"}}));

    EXPECT_THAT(rows[0]->itemsString(), SizeIs(3));
    EXPECT_THAT(popUp.itemTitles(), SizeIs(3));
    EXPECT_EQ(popUp.indexOfSelectedItem(), 2);
    EXPECT_TRUE(popUp.isRespond());
}

TEST_F(RowSetUp, AnswersTheUserBeforeItHasARecord) {
    TDGesturesCellView one;

    EXPECT_TRUE(support::outlet<TDCustemorPopUpButton>(one, "m_gestures").isRespond());
}

TEST_F(RowSetUp, PublishesTheCellOfItsPopUp) {
    TDGesturesCellView one;
    const auto outlets = one.outlets();

    EXPECT_TRUE(std::any_of(outlets.begin(), outlets.end(), [&](const platform::NSOutlet& outlet) {
        return outlet.name == "PopUpBtnCell" && std::holds_alternative<platform::NSPopUpButtonCell*>(outlet.target);
    }));
}

TEST_F(RowSetUp, KeepsWhatItIsGiven) {
    TDGesturesCellView one;
    const auto target = std::make_shared<platform::NSView>();
    const NSMutableDictionary given = dictionaryOf({{"Other", "Name"}});

    one.setTargetView(target);
    one.setItemsString({"a", "b"});
    one.setActionInfo(given);

    EXPECT_EQ(one.targetView(), target);
    EXPECT_THAT(one.itemsString(), ElementsAre("a", "b"));
    EXPECT_TRUE(one.actionInfo().isIdenticalTo(given));
}

using RowChange = Rows;

TEST_F(RowChange, SwitchedOnEnablesTheMenuOfASingleActionToo) {
    show(initGesturesInformationForLion());
    box("SecondaryClick").performClick();
    menu("SecondaryClick").setEnabled(false);

    box("SecondaryClick").performClick();

    EXPECT_TRUE(menu("SecondaryClick").isEnabled());
}

TEST_F(RowChange, IsLoggedBeforeOthersHearOfItAndBeforeItIsSent) {
    show(initGesturesInformationForLion());
    std::vector<std::string> logged;
    std::size_t sent = 1;
    const platform::NSObject observer;
    platform::NSNotificationCenter::defaultCenter().addObserver(observer, "updateGesture", [&](const auto&) {
        logged = platform.log.lines;
        sent = platform.ports.received.size();
    });

    box("FullScreenApps").performClick();

    EXPECT_THAT(logged, ElementsAre("changeAction", "post Notification"));
    EXPECT_EQ(sent, 0U);
}

TEST_F(RowChange, IsLoggedAndStoredBeforeItIsSentAndFitsThePopUpAfterwards) {
    show(initGesturesInformationForLion());
    const double widthBefore = menu("FullScreenApps").frame().width;
    std::vector<std::string> logged;
    int stored = -1;
    double width = 0.0;
    platform.ports.duringSend = [&](const auto&) {
        logged = platform.log.lines;
        stored = indexOf("FullScreenApps");
        width = menu("FullScreenApps").frame().width;
    };

    pick("FullScreenApps", 1);

    EXPECT_THAT(logged, ElementsAre("changeAction", "post Notification", "resetDeviceParameter GestureArray"));
    EXPECT_EQ(stored, 1);
    EXPECT_EQ(width, widthBefore);
    EXPECT_EQ(menu("FullScreenApps").frame().width, widthOf("text of SwipeLeftOrRightWithFourFingers") + 25.0);
    EXPECT_NE(menu("FullScreenApps").frame().width, widthBefore);
}

TEST_F(RowChange, OfAnActionIsStoredShownAndSentWithTheWholeList) {
    show(initGesturesInformationForLion());

    pick("FullScreenApps", 1);

    EXPECT_EQ(indexOf("FullScreenApps"), 1);
    EXPECT_EQ(record("FullScreenApps").objectForKey("SelectedIndex").kind(), Value::Kind::Integer);
    EXPECT_EQ(menu("FullScreenApps").title(), "text of SwipeLeftOrRightWithFourFingers");
    EXPECT_EQ(menu("FullScreenApps").frame().width, widthOf("text of SwipeLeftOrRightWithFourFingers") + 25.0);
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_EQ(platform.ports.received[0].id, 2);
    EXPECT_THAT(platform.ports.received[0].payload.allKeys(), ElementsAre("GestureArray", "DeviceName"));
    EXPECT_TRUE(platform.ports.received[0].payload.objectForKey("GestureArray").isEqual(gSettings));
    EXPECT_TRUE(platform.ports.received[0].payload.objectForKey("DeviceName").isEqual("A"));
    EXPECT_THAT(platform.log.lines,
                ElementsAre("changeAction", "post Notification", "resetDeviceParameter GestureArray"));
}

TEST_F(RowChange, OfARowThatCannotCollidePostsNothingButIsSent) {
    show(initGesturesInformationForLion());
    int posted = 0;
    const platform::NSObject observer;
    platform::NSNotificationCenter::defaultCenter().addObserver(observer, "updateGesture",
                                                                [&](const auto&) { ++posted; });

    box("SecondaryClick").performClick();

    EXPECT_EQ(posted, 0);
    EXPECT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_THAT(platform.log.lines, ElementsAre("changeAction", "resetDeviceParameter GestureArray"));
}

TEST_F(RowChange, SwitchedOffDisablesTheMenuOfSeveralActions) {
    show(initGesturesInformationForLion());

    box("FullScreenApps").performClick();
    EXPECT_FALSE(isOn("FullScreenApps"));
    EXPECT_EQ(record("FullScreenApps").objectForKey("IsEnable").kind(), Value::Kind::Boolean);
    EXPECT_FALSE(menu("FullScreenApps").isEnabled());
    pick("FullScreenApps", 1);
    EXPECT_EQ(indexOf("FullScreenApps"), 0);

    box("FullScreenApps").performClick();
    EXPECT_TRUE(isOn("FullScreenApps"));
    EXPECT_TRUE(menu("FullScreenApps").isEnabled());
}

TEST_F(RowChange, SwitchedOffLeavesTheMenuOfASingleActionEnabledAndDeaf) {
    show(initGesturesInformationForLion());

    box("SecondaryClick").performClick();

    EXPECT_FALSE(isOn("SecondaryClick"));
    EXPECT_TRUE(menu("SecondaryClick").isEnabled());
    platform.ports.received.clear();
    pick("SecondaryClick", 0);
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(RowChange, DoesNotOfferTheEmptyEntry) {
    show(initGesturesInformationForLion());

    menu("FullScreenApps").performSelectItemAtIndex(0);

    EXPECT_EQ(indexOf("FullScreenApps"), 0);
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(RowChange, OfARecordWithAnUnfitIndexLeavesThatIndex) {
    show(arrayOf({dictionaryOf(
        {{"Other", "Name"}, {arrayOf({"a", "b"}), "Descriptor"}, {9, "SelectedIndex"}, {true, "IsEnable"}})}));

    support::outlet<platform::NSButton>(*rows[0], "clickBtn").performClick();

    EXPECT_EQ(Value(gSettings).description(),
              "( { Name = Other; Descriptor = ( a, b ); SelectedIndex = 9; IsEnable = 0; } )");
}

TEST_F(RowChange, WithNoDriverChangesTheRecordAllTheSame) {
    platform.ports.peers.clear();
    show(initGesturesInformationForLion());

    pick("FullScreenApps", 1);

    EXPECT_EQ(indexOf("FullScreenApps"), 1);
}

using Collision = Rows;

TEST_F(Collision, ThreeFingerPagesMoveFullScreenToFourFingersAndBothSend) {
    show(initGesturesInformationForLion());

    pick("SwipeBetweenPages", 1);

    EXPECT_EQ(indexOf("FullScreenApps"), 1);
    EXPECT_TRUE(isOn("FullScreenApps"));
    EXPECT_EQ(menu("FullScreenApps").title(), "text of SwipeLeftOrRightWithFourFingers");
    EXPECT_THAT(platform.ports.received, SizeIs(2));
}

TEST_F(Collision, ThreeFingerFullScreenSwitchesThreeFingerPagesOff) {
    show(initGesturesInformationForLion());
    pick("SwipeBetweenPages", 1);

    pick("FullScreenApps", 0);

    EXPECT_EQ(indexOf("SwipeBetweenPages"), 0);
    EXPECT_FALSE(isOn("SwipeBetweenPages"));
    EXPECT_EQ(box("SwipeBetweenPages").state(), 0);
    EXPECT_FALSE(menu("SwipeBetweenPages").isEnabled());
    EXPECT_EQ(menu("SwipeBetweenPages").title(), "text of ScrollLeftOrRightWithTwoFingers");
}

TEST_F(Collision, OfAnEqualRecordDoesNothingAtAll) {
    const NSMutableArray list = initGesturesInformationForLion();
    show(list);
    const double width = menu("MissionControl").frame().width;
    menu("MissionControl").setFrame({0, 0, 1, 1});

    row("MissionControl")
        .checkGesture({"updateGesture", initGesturesInformationForLion().objectAtIndex(8).dictionary()});
    EXPECT_EQ(menu("MissionControl").frame().width, 1.0);
    EXPECT_THAT(platform.ports.received, IsEmpty());

    row("MissionControl")
        .checkGesture({"updateGesture", initGesturesInformationForLion().objectAtIndex(6).dictionary()});
    EXPECT_EQ(menu("MissionControl").frame().width, width);
}

TEST_F(Collision, WithAnIndexThatThisRecordDoesNotHaveChangesNothing) {
    show(arrayOf({dictionaryOf({{"MissionControl", "Name"},
                                {arrayOf({"a", "b", "c"}), "Descriptor"},
                                {0, "SelectedIndex"},
                                {true, "IsEnable"}}),
                  dictionaryOf({{gestures::appExpose, "Name"},
                                {arrayOf({"d", "e"}), "Descriptor"},
                                {1, "SelectedIndex"},
                                {true, "IsEnable"}})}));

    pick("MissionControl", 2);

    EXPECT_EQ(indexOf(gestures::appExpose), 1);
    EXPECT_THAT(platform.ports.received, SizeIs(1));
}

TEST_F(Collision, WithAnIndexThatIsNoActionChangesNothing) {
    show(arrayOf({dictionaryOf({{"MissionControl", "Name"},
                                {arrayOf({"a", "b"}), "Descriptor"},
                                {-1, "SelectedIndex"},
                                {true, "IsEnable"}}),
                  dictionaryOf({{gestures::appExpose, "Name"},
                                {arrayOf({"d", "e"}), "Descriptor"},
                                {1, "SelectedIndex"},
                                {true, "IsEnable"}})}));

    box("MissionControl").performClick();

    EXPECT_EQ(menu(gestures::appExpose).indexOfSelectedItem(), 2);
    EXPECT_EQ(indexOf(gestures::appExpose), 1);
    EXPECT_THAT(platform.ports.received, SizeIs(1));
}

/// Gestures collide within their family alone, whatever a damaged list says of their actions.
TEST_F(Collision, BetweenFamiliesIsNoneThoughTheActionsWouldCollide) {
    show(arrayOf({dictionaryOf({{"SwipeBetweenPages", "Name"},
                                {arrayOf({"SwipeWithThreeFingers", "b"}), "Descriptor"},
                                {1, "SelectedIndex"},
                                {true, "IsEnable"}}),
                  dictionaryOf({{gestures::appExpose, "Name"},
                                {arrayOf({"SwipeLeftOrRightWithThreeFingers", "e"}), "Descriptor"},
                                {0, "SelectedIndex"},
                                {true, "IsEnable"}}),
                  dictionaryOf({{"MissionControl", "Name"},
                                {arrayOf({"SwipeWithThreeFingers"}), "Descriptor"},
                                {0, "SelectedIndex"},
                                {true, "IsEnable"}})}));

    pick("SwipeBetweenPages", 0);

    EXPECT_EQ(indexOf(gestures::appExpose), 0);
    EXPECT_THAT(platform.ports.received, SizeIs(1));

    show(arrayOf({dictionaryOf({{"FullScreenApps", "Name"},
                                {arrayOf({"SwipeLeftOrRightWithThreeFingers", "b"}), "Descriptor"},
                                {0, "SelectedIndex"},
                                {true, "IsEnable"}}),
                  dictionaryOf({{"MissionControl", "Name"},
                                {arrayOf({"c", "SwipeWithThreeFingers"}), "Descriptor"},
                                {0, "SelectedIndex"},
                                {true, "IsEnable"}})}));
    platform.ports.received.clear();

    pick("MissionControl", 1);

    EXPECT_EQ(indexOf("FullScreenApps"), 0);
    EXPECT_THAT(platform.ports.received, SizeIs(1));
}

/// What a row does when another one's action has been chosen, by the actions of both.
struct Rule {
    const char* sender;
    int senderAction;
    const char* mine;
    int myAction;
    /// My action afterwards, whether I was switched off, and whether I sent.
    int newAction;
    bool switchedOff;
    bool sends;
};

const char* const kPages = "SwipeBetweenPages";
const char* const kFullScreen = "FullScreenApps";
const char* const kMission = "MissionControl";
const char* const kExpose = "AppExpos\u00e9";

// Pages: 0 scrolls with two fingers, 1 swipes with three, 2 with two or three. Full screen: 0 three, 1 four. The other
// two: 0 three, 1 four.
const std::vector<Rule> kRules = {
    {kPages, 0, kFullScreen, 0, 0, false, false}, {kPages, 0, kFullScreen, 1, 1, false, false},
    {kPages, 1, kFullScreen, 0, 1, false, true},  {kPages, 1, kFullScreen, 1, 1, false, false},
    {kPages, 2, kFullScreen, 0, 1, false, true},  {kPages, 2, kFullScreen, 1, 1, false, false},
    {kFullScreen, 0, kPages, 0, 0, false, false}, {kFullScreen, 0, kPages, 1, 0, true, true},
    {kFullScreen, 0, kPages, 2, 0, false, true},  {kFullScreen, 1, kPages, 0, 0, false, false},
    {kFullScreen, 1, kPages, 1, 1, false, false}, {kFullScreen, 1, kPages, 2, 2, false, false},
    {kMission, 0, kExpose, 0, 0, false, true},    {kMission, 0, kExpose, 1, 0, false, true},
    {kMission, 1, kExpose, 0, 1, false, true},    {kMission, 1, kExpose, 1, 1, false, true},
    {kExpose, 0, kMission, 0, 0, false, true},    {kExpose, 0, kMission, 1, 0, false, true},
    {kExpose, 1, kMission, 0, 1, false, true},    {kExpose, 1, kMission, 1, 1, false, true},
};

class CollisionTable : public Rows, public testing::WithParamInterface<NSMutableArray (*)()> {
protected:
    /// Every record as it must be once `sender` stands at `action`, and how many messages that took.
    std::pair<NSMutableArray, std::size_t> expected(const NSMutableArray& before, const std::string& sender,
                                                    int action) {
        const NSMutableArray after = before;
        std::size_t messages = 1;
        for (std::size_t i = 0; i < after.count(); ++i) {
            NSMutableDictionary each = after.objectAtIndex(i).dictionary();
            const std::string name = each.objectForKey("Name").string().value();
            if (name == sender) each.setObjectForKey(action, "SelectedIndex");
            for (const Rule& rule : kRules) {
                if (rule.sender != sender || rule.senderAction != action || rule.mine != name ||
                    rule.myAction != each.objectForKey("SelectedIndex").intValue()) {
                    continue;
                }
                each.setObjectForKey(rule.newAction, "SelectedIndex");
                if (rule.switchedOff) each.setObjectForKey(false, "IsEnable");
                messages += rule.sends ? 1 : 0;
                break;
            }
        }
        return {after, messages};
    }

    NSMutableArray listAt(int pages, int fullScreen, int mission, int expose) {
        const NSMutableArray list = GetParam()();
        const std::map<std::string, int> indices = {
            {kPages, pages}, {kFullScreen, fullScreen}, {kMission, mission}, {kExpose, expose}};
        for (std::size_t i = 0; i < list.count(); ++i) {
            NSMutableDictionary each = list.objectAtIndex(i).dictionary();
            const auto index = indices.find(each.objectForKey("Name").string().value());
            if (index != indices.end()) each.setObjectForKey(index->second, "SelectedIndex");
        }
        return list;
    }

    void check(int pages, int fullScreen, int mission, int expose) {
        const NSMutableArray start = listAt(pages, fullScreen, mission, expose);
        for (std::size_t i = 0; i < start.count(); ++i) {
            const std::string name = start.objectAtIndex(i).dictionary().objectForKey("Name").string().value();
            const auto actions =
                static_cast<int>(start.objectAtIndex(i).dictionary().objectForKey("Descriptor").array().count());
            for (int action = 0; actions > 1 && action < actions; ++action) {
                SCOPED_TRACE(name + " to " + std::to_string(action) + " from " + Value(start).description());
                show(listAt(pages, fullScreen, mission, expose));
                platform.ports.received.clear();
                pick(name, action);
                const auto [after, messages] = expected(listAt(pages, fullScreen, mission, expose), name, action);
                EXPECT_EQ(Value(gSettings).description(), Value(after).description());
                ASSERT_EQ(platform.ports.received.size(), messages);
                // Whoever makes way has done so before it sends, and the chosen row sends last.
                for (const auto& message : platform.ports.received) {
                    EXPECT_TRUE(message.payload.objectForKey("GestureArray").isEqual(after));
                }
            }
        }
    }
};

TEST_P(CollisionTable, HoldsForEveryStartAndEveryChoice) {
    for (int pages = 0; pages < 3; ++pages) {
        for (int others = 0; others < 8; ++others) check(pages, others & 1, (others >> 1) & 1, (others >> 2) & 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, CollisionTable,
                         testing::Values(&initGesturesInformationForLion, &initGesturesInformationForMountainLion));

using RowInTheMiddleOfASend = Rows;

TEST_F(RowInTheMiddleOfASend, FinishesItsStepWhenItsListIsReplaced) {
    show(initGesturesInformationForLion());
    platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Hung;
    const NSMutableDictionary oldPages = record("SwipeBetweenPages");
    const NSMutableDictionary oldFullScreen = record("FullScreenApps");
    auto& popUp = menu("SwipeBetweenPages");
    platform.runLoop.scheduleTimer(0.5, [&] { show(initGesturesInformationForMountainLion()); });

    popUp.performSelectItemAtIndex(2);

    EXPECT_EQ(oldPages.objectForKey("SelectedIndex").intValue(), 1);
    EXPECT_EQ(oldFullScreen.objectForKey("SelectedIndex").intValue(), 1);
    EXPECT_EQ(gSettings.count(), 13U);
    EXPECT_EQ(indexOf("SwipeBetweenPages"), 0);
    EXPECT_EQ(indexOf("FullScreenApps"), 0);
}

} // namespace
