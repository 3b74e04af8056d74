#include "peers/actions/ActionsInForce.h"

#include "peers/actions/ActionTexts.h"
#include "support/EnvironmentVariable.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

using kelvo::ActionsInForce;
using kelvo::DesktopSession;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using touch::Direction;
using touch::Gesture;
using Kind = touch::Action::Kind;

constexpr char kShipped[] = "/machine/Library/Application Support/KelvoTouchDisplay/Actions/";
constexpr char kAdministrators[] = "/machine/Library/Preferences/KelvoTouchDisplay/Actions/";

platform::NSMutableDictionary fingers(std::int32_t count) {
    return dictionaryOf({{"Fingers", "Kind"}, {count, "Fingers"}});
}

platform::NSMutableDictionary chord(std::initializer_list<platform::Value> keys) {
    return dictionaryOf({{"Chord", "Kind"}, {platform::NSMutableArray::arrayWithObjects(keys), "Keys"}});
}

class ActionsInForceTest : public testing::Test {
protected:
    void put(const std::string& path, const platform::Value& contents) {
        platform_.files.files[path] = *platform_.propertyLists.createXMLData(contents);
    }
    void putShipped() {
        for (const auto& entry : std::filesystem::directory_iterator(KELVO_ACTION_FILES)) {
            std::ifstream file(entry.path(), std::ios::binary);
            platform_.files.files[kShipped + entry.path().filename().string()] =
                platform::NSData(std::istreambuf_iterator<char>(file), {});
            names_.push_back(entry.path().stem().string());
        }
    }
    static const touch::Action& does(const ActionsInForce& actions, Gesture gesture,
                                     Direction direction = Direction::None) {
        return actions.actionFor(gesture, direction).action;
    }

    support::FakePlatform platform_;
    std::vector<std::string> names_;
};

TEST_F(ActionsInForceTest, WithoutAnyFileThePlainTableIsInForce) {
    const ActionsInForce actions({{"GNOME"}, "", true});
    EXPECT_EQ(actions.desktop(), "Default");
    EXPECT_THAT(actions.complaints(), IsEmpty());
    EXPECT_EQ(actions.actionFor(Gesture::MissionControl, Direction::None).file, "");
    const touch::ActionTable plain;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        for (const auto direction : {Direction::Left, Direction::Right, Direction::None}) {
            EXPECT_EQ(actions.table().actionFor(gesture, direction), plain.actionFor(gesture, direction));
        }
    }
}

TEST_F(ActionsInForceTest, TheShippedDefaultIsThePlainTable) {
    putShipped();
    const ActionsInForce actions({{}, "", false});
    const touch::ActionTable plain;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        EXPECT_EQ(does(actions, gesture), plain.actionFor(gesture, Direction::None)) << nameOf(gesture);
    }
}

TEST_F(ActionsInForceTest, WhatIsShippedIsWhollyRightOnEveryDesktop) {
    putShipped();
    EXPECT_THAT(names_,
                testing::UnorderedElementsAre("Default", "GNOME", "KDE", "LXQt", "MATE", "X-Cinnamon", "XFCE", "sway"));
    for (const std::string& name : names_) {
        for (const std::string version : {"", "5", "6"}) {
            for (const bool isWayland : {false, true}) {
                const ActionsInForce actions({{name}, version, isWayland});
                EXPECT_EQ(actions.desktop(), name);
                EXPECT_THAT(actions.complaints(), IsEmpty());
            }
        }
    }
}

TEST_F(ActionsInForceTest, WhatEachShippedFilePromisesHasWords) {
    putShipped();
    for (const std::string& name : names_) {
        if (name == "Default") continue;
        const ActionsInForce actions({{name}, "6", true});
        for (const Gesture gesture :
             {Gesture::LookUp, Gesture::FullScreenApps, Gesture::NotificationCenter, Gesture::MissionControl,
              Gesture::AppExpose, Gesture::Launchpad, Gesture::ShowDesktop}) {
            for (const auto direction : {Direction::Left, Direction::Right}) {
                const kelvo::DesktopAction& action = actions.actionFor(gesture, direction);
                if (action.action.kind == Kind::Nothing) continue;
                EXPECT_THAT(textOf(action), HasSubstr(" (")) << name << " " << nameOf(gesture);
            }
        }
    }
}

TEST_F(ActionsInForceTest, GnomeFollowsFingersUnderWaylandAndTakesKeysUnderX11) {
    putShipped();
    const ActionsInForce wayland({{"ubuntu", "GNOME"}, "", true});
    EXPECT_EQ(wayland.desktop(), "GNOME");
    EXPECT_EQ(textOf(wayland, Gesture::MissionControl), "Overview (3 fingers on a touchpad)");
    EXPECT_EQ(textOf(wayland, Gesture::ShowDesktop), "Show the desktop (Super+D)");
    const ActionsInForce x11({{"GNOME"}, "", false});
    EXPECT_EQ(textOf(x11, Gesture::FullScreenApps),
              "left: Next workspace (Super+PageDown); right: Previous workspace (Super+PageUp)");
}

TEST_F(ActionsInForceTest, PlasmaFiveAndSixDiffer) {
    putShipped();
    const std::string call = "Overview (org.kde.kglobalaccel invokeShortcut \"Overview\")";
    EXPECT_EQ(textOf(ActionsInForce({{"KDE"}, "5", true}), Gesture::MissionControl), call);
    EXPECT_EQ(textOf(ActionsInForce({{"KDE"}, "6", false}), Gesture::MissionControl), call);
    EXPECT_EQ(textOf(ActionsInForce({{"KDE"}, "6", true}), Gesture::MissionControl),
              "Overview (4 fingers on a touchpad)");
}

TEST_F(ActionsInForceTest, LaterFilesWin) {
    put(std::string(kShipped) + "GNOME.plist",
        dictionaryOf({{fingers(3), "MissionControl"}, {fingers(3), "ShowDesktop"}, {fingers(3), "Launchpad"}}));
    put(std::string(kAdministrators) + "GNOME.plist",
        dictionaryOf({{fingers(4), "MissionControl"}, {fingers(4), "ShowDesktop"}}));
    put(kelvo::userActionsPath(), dictionaryOf({{chord({"Super"}), "MissionControl"}}));
    const ActionsInForce actions({{"GNOME"}, "", true});
    EXPECT_EQ(does(actions, Gesture::MissionControl).kind, Kind::Chord);
    EXPECT_EQ(does(actions, Gesture::ShowDesktop).fingers, 4);
    EXPECT_EQ(does(actions, Gesture::Launchpad).fingers, 3);
    EXPECT_EQ(actions.actionFor(Gesture::MissionControl, Direction::None).file, kelvo::userActionsPath());
    EXPECT_EQ(actions.actionFor(Gesture::ShowDesktop, Direction::None).file,
              std::string(kAdministrators) + "GNOME.plist");
}

TEST_F(ActionsInForceTest, AnAdministratorsFileAloneMakesADesktopKnown) {
    put(std::string(kAdministrators) + "River.plist", dictionaryOf({{fingers(4), "MissionControl"}}));
    EXPECT_EQ(ActionsInForce({{"Special", "River"}, "", true}).desktop(), "River");
}

TEST_F(ActionsInForceTest, PartsForOtherSessionsDoNotCount) {
    put(kelvo::userActionsPath(), dictionaryOf({{dictionaryOf({{fingers(4), "MissionControl"}}), "KDE"},
                                                {dictionaryOf({{fingers(3), "MissionControl"}}), "X11"},
                                                {dictionaryOf({{fingers(3), "ShowDesktop"}}), "Wayland"}}));
    const ActionsInForce actions({{"GNOME"}, "", true});
    EXPECT_EQ(does(actions, Gesture::MissionControl).fingers, 0);
    EXPECT_EQ(does(actions, Gesture::ShowDesktop).fingers, 3);
    EXPECT_THAT(actions.complaints(), IsEmpty());
}

TEST_F(ActionsInForceTest, EachWayCanBeAnother) {
    put(kelvo::userActionsPath(), dictionaryOf({{dictionaryOf({{chord({"Alt", "Left"}), "Left"}}), "FullScreenApps"},
                                                {dictionaryOf({{chord({"Alt"}), "Left"}}), "MissionControl"}}));
    const ActionsInForce actions({{}, "", true});
    EXPECT_EQ(does(actions, Gesture::FullScreenApps, Direction::Left).kind, Kind::Chord);
    EXPECT_EQ(does(actions, Gesture::FullScreenApps, Direction::Right).kind, Kind::Fingers);
    EXPECT_EQ(does(actions, Gesture::MissionControl).kind, Kind::Fingers);
    EXPECT_THAT(actions.complaints(),
                ElementsAre(HasSubstr("MissionControl: it has no separate actions for left and right")));
}

TEST_F(ActionsInForceTest, ADamagedFileReadsAsNothingAndIsReported) {
    platform_.files.setText(kelvo::userActionsPath(), "<plist><dict>");
    const ActionsInForce actions({{}, "", true});
    EXPECT_EQ(does(actions, Gesture::MissionControl).kind, Kind::Fingers);
    EXPECT_THAT(actions.complaints(), ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(ActionsInForceTest, AFileThatIsNoDictionaryIsReportedToo) {
    put(kelvo::userActionsPath(), platform::NSMutableArray::arrayWithObjects({"Chord"}));
    EXPECT_THAT(ActionsInForce({{}, "", true}).complaints(), ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(ActionsInForceTest, WhatCannotBeCountsForNothingAndTheRestCounts) {
    const auto call = [](const char* service, const char* path, const platform::Value& arguments) {
        return dictionaryOf({{"Call", "Kind"},
                             {service, "Service"},
                             {path, "Path"},
                             {"a.B", "Interface"},
                             {"Do", "Method"},
                             {arguments, "Arguments"}});
    };
    const auto none = platform::NSMutableArray::arrayWithObjects();
    const std::vector<std::pair<platform::Value, std::string>> wrong{
        {"text", "must be a dictionary"},
        {dictionaryOf({{"Jump", "Kind"}}), "its Kind"},
        {dictionaryOf({{3, "Kind"}}), "its Kind"},
        {dictionaryOf({{"Fingers", "Kind"}, {"3", "Fingers"}}), "a whole number"},
        {fingers(5), "three or four fingers"},
        {chord({}), "the shortcut has no key"},
        {chord({"Q"}), "there is no key \"Q\""},
        {chord({7}), "there is no key"},
        {chord({"Alt", "Alt"}), "occurs twice"},
        {chord({"Alt", "Shift", "Super", "F1", "F2"}), "at most four"},
        {dictionaryOf({{"Chord", "Kind"}, {"Alt", "Keys"}}), "the shortcut has no key"},
        {dictionaryOf({{"Call", "Kind"}}), "its Service must be a string"},
        {call("no name", "/", none), "Service"},
        {call("a.b", "no path", none), "Path"},
        {call("a.b", "/", "text"), "must be a list"},
        {call("a.b", "/", platform::NSMutableArray::arrayWithObjects({std::int64_t{1} << 40})), "32-bit"},
        {call("a.b", "/", platform::NSMutableArray::arrayWithObjects({none})), "must be strings"},
    };
    for (const auto& [value, reason] : wrong) {
        put(kelvo::userActionsPath(), dictionaryOf({{value, "MissionControl"}, {fingers(4), "ShowDesktop"}}));
        const ActionsInForce actions({{}, "", true});
        EXPECT_EQ(does(actions, Gesture::MissionControl).kind, Kind::Fingers) << reason;
        EXPECT_EQ(does(actions, Gesture::ShowDesktop).fingers, 4) << reason;
        EXPECT_THAT(actions.complaints(), ElementsAre(HasSubstr(reason)));
    }
}

TEST_F(ActionsInForceTest, AGestureThatThereIsNotIsReported) {
    put(kelvo::userActionsPath(), dictionaryOf({{fingers(4), "MisionControl"}, {1, "Sway"}}));
    EXPECT_THAT(ActionsInForce({{}, "", true}).complaints(),
                ElementsAre(HasSubstr("\"MisionControl\""), HasSubstr("\"Sway\"")));
}

TEST_F(ActionsInForceTest, AppExposeMayBeWrittenWithoutItsAccent) {
    put(kelvo::userActionsPath(), dictionaryOf({{fingers(4), "AppExpose"}}));
    const ActionsInForce actions({{}, "", true});
    EXPECT_EQ(does(actions, Gesture::AppExpose).fingers, 4);
    EXPECT_THAT(actions.complaints(), IsEmpty());
}

TEST_F(ActionsInForceTest, WhatIsStoredReadsBackAsItWas) {
    kelvo::DesktopAction call;
    call.action.kind = Kind::Call;
    call.call = {"org.kde.kglobalaccel",
                 "/component/kwin",
                 "org.kde.kglobalaccel.Component",
                 "invokeShortcut",
                 {"Overview", true, 5, 0.5}};
    const auto read = kelvo::storedActionIn(storedFormOf(call), Gesture::MissionControl);
    EXPECT_EQ(read.action, call.action);
    EXPECT_EQ(storedFormOf(read).count(), storedFormOf(call).count());
    EXPECT_TRUE(storedFormOf(read).isEqual(storedFormOf(call)));
}

TEST(CurrentDesktopSession, IsToldByTheEnvironment) {
    const EnvironmentVariable desktops("XDG_CURRENT_DESKTOP", "ubuntu:GNOME:../x::.hidden");
    const EnvironmentVariable version("KDE_SESSION_VERSION", "6");
    const EnvironmentVariable type("XDG_SESSION_TYPE", "x11");
    const EnvironmentVariable display("WAYLAND_DISPLAY", "wayland-0");
    const DesktopSession session = kelvo::currentDesktopSession();
    EXPECT_THAT(session.names, ElementsAre("ubuntu", "GNOME"));
    EXPECT_EQ(session.version, "6");
    EXPECT_FALSE(session.isWayland);
}

TEST(CurrentDesktopSession, IsWaylandsWhereADisplayOfItIsNamed) {
    const EnvironmentVariable type("XDG_SESSION_TYPE", "tty");
    const EnvironmentVariable display("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_TRUE(kelvo::currentDesktopSession().isWayland);
    const EnvironmentVariable none("WAYLAND_DISPLAY", std::nullopt);
    EXPECT_FALSE(kelvo::currentDesktopSession().isWayland);
}

} // namespace
