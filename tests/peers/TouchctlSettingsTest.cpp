#include "peers/touchctl/Settings.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class TouchctlSettings : public testing::Test {
protected:
    TouchctlSettings() { setModelType("Desk"); }

    /// The message that "set" would send for these words.
    [[nodiscard]] static Message messageOf(std::string_view key, const Words& words,
                                           const NSMutableDictionary& stored = {}) {
        return settingKey(key).messageOf(words, stored);
    }

    /// What is said of these words; empty when they are taken.
    [[nodiscard]] static std::string refusalOf(std::string_view key, const Words& words) {
        try {
            (void)settingKey(key).messageOf(words, NSMutableDictionary());
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), Status::Usage);
            return failure.what();
        }
        return "";
    }

    /// What is said of a profile; empty when it is taken.
    [[nodiscard]] static std::string refusalOf(const NSMutableDictionary& profile) {
        try {
            (void)messagesOfProfile(profile);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), Status::Failure);
            return failure.what();
        }
        return "";
    }

    static void expectMessage(const Message& message, std::int32_t id, const NSMutableDictionary& payload) {
        EXPECT_EQ(message.id, id);
        EXPECT_TRUE(message.payload.isEqual(payload)) << Value(message.payload).description();
    }

    support::FakePlatform platform_;
};

NSMutableDictionary rightClickOf(const Value& isEnabled, const Value& seconds) {
    return dictionaryOf({{isEnabled, "RightClickIsEnable"}, {seconds, "RightClickTimeIntelval"}});
}

NSMutableDictionary resolutionOf(const Value& width, const Value& height) {
    return dictionaryOf({{width, "OSDWidth"}, {height, "OSDHeight"}});
}

TEST_F(TouchctlSettings, EachKeyMakesTheMessageThatThePaneSends) {
    expectMessage(messageOf("double-click-rate", {"0.25"}), 0,
                  dictionaryOf({{0.25, "DoubleClickRate"}, {"Desk", "DeviceName"}}));
    expectMessage(messageOf("double-click-range", {"40"}), 1,
                  dictionaryOf({{40, "DoubleClickRange"}, {"Desk", "DeviceName"}}));
    expectMessage(messageOf("rotation", {"270"}), 3, dictionaryOf({{3, "RotateMode"}, {"Desk", "DeviceName"}}));
    expectMessage(messageOf("right-click", {"on", "1.5"}), 5,
                  dictionaryOf({{rightClickOf(true, 1.5), "RightClick"}, {"Desk", "DeviceName"}}));
    expectMessage(messageOf("calibration", {"auto"}), 6,
                  dictionaryOf({{true, "AutoCalibration"}, {"Desk", "DeviceName"}}));
    expectMessage(
        messageOf("calibration", {"manual", "1024.5", "0"}), 6,
        dictionaryOf(
            {{false, "AutoCalibration"}, {resolutionOf(1024.5, 0.0), "ManualCalibration"}, {"Desk", "DeviceName"}}));
}

TEST_F(TouchctlSettings, NumbersAreOfTheKindsThatThePaneSends) {
    using Kind = Value::Kind;
    EXPECT_EQ(messageOf("double-click-rate", {"1"}).payload.objectForKey("DoubleClickRate").kind(), Kind::Real);
    EXPECT_EQ(messageOf("double-click-range", {"8"}).payload.objectForKey("DoubleClickRange").kind(), Kind::Integer);
    EXPECT_EQ(messageOf("rotation", {"0"}).payload.objectForKey("RotateMode").kind(), Kind::Integer);
    const auto rightClick = messageOf("long-press", {"3"}).payload.objectForKey("RightClick").dictionary();
    EXPECT_EQ(rightClick.objectForKey("RightClickTimeIntelval").kind(), Kind::Real);
}

TEST_F(TouchctlSettings, BoundsAreThoseOfThePanesForms) {
    for (const auto& [key, text] :
         std::initializer_list<std::pair<const char*, const char*>>{{"double-click-rate", "0.1"},
                                                                    {"double-click-rate", "1.0"},
                                                                    {"double-click-range", "8"},
                                                                    {"double-click-range", "128"},
                                                                    {"long-press", "0.3"},
                                                                    {"long-press", "3.0"}}) {
        EXPECT_EQ(refusalOf(key, {text}), "") << key << ' ' << text;
    }
    for (const char* text : {"0.09", "1.01", "-0.5", "nan", "inf", "0.5s", "", "0,5", " 0.5", "1e400"}) {
        EXPECT_THAT(refusalOf("double-click-rate", {text}), HasSubstr("from 0.1 to 1")) << text;
    }
    for (const char* text : {"7", "129", "32.5", "2147483648", "x"}) {
        EXPECT_THAT(refusalOf("double-click-range", {text}), HasSubstr("from 8 to 128")) << text;
    }
    for (const char* text : {"0.29", "3.1"}) {
        EXPECT_THAT(refusalOf("long-press", {text}), HasSubstr("from 0.3 to 3")) << text;
        EXPECT_THAT(refusalOf("right-click", {"on", text}), HasSubstr("from 0.3 to 3")) << text;
    }
    for (const char* text : {"1", "45", "360", "-90", "090", "90 "}) {
        EXPECT_THAT(refusalOf("rotation", {text}), HasSubstr("0, 90, 180 or 270")) << text;
    }
    EXPECT_EQ(refusalOf("calibration", {"manual", "4096", "2160"}), "");
    EXPECT_THAT(refusalOf("calibration", {"manual", "4096.5", "0"}), HasSubstr("from 0 to 4096"));
    EXPECT_THAT(refusalOf("calibration", {"manual", "0", "2161"}), HasSubstr("from 0 to 2160"));
}

TEST_F(TouchctlSettings, AnotherNumberOfWordsIsRefusedWithWhatIsRight) {
    EXPECT_THAT(refusalOf("double-click-rate", {"0.5", "0.6"}), HasSubstr("takes a number"));
    EXPECT_THAT(refusalOf("rotation", {"0", "90"}), HasSubstr("takes a number"));
    EXPECT_THAT(refusalOf("right-click", {"maybe"}), HasSubstr("on or off"));
    EXPECT_THAT(refusalOf("right-click", {"on", "1", "2"}), HasSubstr("on or off"));
    EXPECT_THAT(refusalOf("calibration", {"auto", "1", "2"}), HasSubstr("alone"));
    EXPECT_THAT(refusalOf("calibration", {"manual", "1"}), HasSubstr("width and the height"));
    EXPECT_THAT(refusalOf("calibration", {"never"}), HasSubstr("auto or manual"));
    EXPECT_THROW((void)settingKey("DoubleClickRate"), Failure);
}

TEST_F(TouchctlSettings, WhatTheWordsLeaveOutIsTakenFromTheFileWithinTheBounds) {
    const auto stored = [](const Value& isEnabled, const Value& seconds) {
        return dictionaryOf({{rightClickOf(isEnabled, seconds), "RightClick"}});
    };
    const auto sent = [](const Message& message) { return message.payload.objectForKey("RightClick").dictionary(); };

    EXPECT_TRUE(sent(messageOf("right-click", {"off"}, stored(true, 2.0))).isEqual(rightClickOf(false, 2.0)));
    EXPECT_TRUE(sent(messageOf("right-click", {"on"}, stored(true, 99.0))).isEqual(rightClickOf(true, 3.0)));
    EXPECT_TRUE(sent(messageOf("right-click", {"on"})).isEqual(rightClickOf(true, 0.3)));
    EXPECT_TRUE(sent(messageOf("right-click", {"on"}, stored("x", "y"))).isEqual(rightClickOf(true, 0.3)));
    EXPECT_TRUE(sent(messageOf("long-press", {"1"}, stored(true, 2.0))).isEqual(rightClickOf(true, 1.0)));
    EXPECT_TRUE(sent(messageOf("long-press", {"1"})).isEqual(rightClickOf(false, 1.0)));
}

TEST_F(TouchctlSettings, GesturesByDefaultAreThoseOfTheSystem) {
    platform_.systemVersion.version = 0x1074;
    const Message message = messageOf("gestures", {"default"});
    EXPECT_EQ(message.id, 2);
    EXPECT_TRUE(message.payload.objectForKey("GestureArray").array().isEqual(initGesturesInformationForLion()));

    platform_.systemVersion.version = 0x1059;
    EXPECT_THROW((void)messageOf("gestures", {"default"}), Failure);
}

TEST_F(TouchctlSettings, ProfileBecomesOneMessageForEachOfItsSettings) {
    const auto profile = dictionaryOf({{initGesturesInformationForLion(), "GestureArray"},
                                       {"0.8.0.3", "DriverVersion"},
                                       {false, "RotateMode"},
                                       {40.0, "DoubleClickRange"},
                                       {true, "AutoCalibration"},
                                       {resolutionOf("damaged", 1), "ManualCalibration"},
                                       {rightClickOf(true, 1), "RightClick"},
                                       {1, "DoubleClickRate"}});
    const std::vector<Message> messages = messagesOfProfile(profile);
    ASSERT_EQ(messages.size(), 6U);
    expectMessage(messages[0], 0, dictionaryOf({{1.0, "DoubleClickRate"}, {"Desk", "DeviceName"}}));
    expectMessage(messages[1], 1, dictionaryOf({{40, "DoubleClickRange"}, {"Desk", "DeviceName"}}));
    expectMessage(messages[2], 5, dictionaryOf({{rightClickOf(true, 1.0), "RightClick"}, {"Desk", "DeviceName"}}));
    expectMessage(messages[3], 3, dictionaryOf({{0, "RotateMode"}, {"Desk", "DeviceName"}}));
    // What an automatic calibration leaves lying is not sent, and so is not looked at.
    expectMessage(messages[4], 6, dictionaryOf({{true, "AutoCalibration"}, {"Desk", "DeviceName"}}));
    EXPECT_EQ(messages[5].id, 2);
}

TEST_F(TouchctlSettings, ProfileOfWrongKindsIsRefusedByTheKey) {
    const std::pair<NSMutableDictionary, const char*> refused[] = {
        {dictionaryOf({{"0.5", "DoubleClickRate"}}), "DoubleClickRate must be a number"},
        {dictionaryOf({{true, "DoubleClickRate"}}), "DoubleClickRate must be a number"},
        {dictionaryOf({{5.0, "DoubleClickRate"}}), "from 0.1 to 1"},
        {dictionaryOf({{32.5, "DoubleClickRange"}}), "a whole number"},
        {dictionaryOf({{true, "RotateMode"}}), "RotateMode must be"},
        {dictionaryOf({{4, "RotateMode"}}), "RotateMode must be"},
        {dictionaryOf({{-1, "RotateMode"}}), "RotateMode must be"},
        {dictionaryOf({{1, "RightClick"}}), "RightClick must be a dictionary"},
        {dictionaryOf({{dictionaryOf({{true, "RightClickIsEnable"}}), "RightClick"}}), "RightClickTimeIntelval"},
        {dictionaryOf({{rightClickOf(1, 1.0), "RightClick"}}), "RightClickIsEnable in RightClick must be true or"},
        {dictionaryOf({{1, "AutoCalibration"}}), "AutoCalibration must be true or false"},
        {dictionaryOf({{false, "AutoCalibration"}}), "ManualCalibration must be a dictionary"},
        {dictionaryOf({{resolutionOf(1, Value()), "ManualCalibration"}}), "OSDHeight in ManualCalibration"},
        {dictionaryOf({{"x", "GestureArray"}}), "GestureArray must be a list"},
        {dictionaryOf({{1.0, "DoubleClickRat"}}),
         "unknown setting \"DoubleClickRat\"; the settings are DoubleClickRate,"},
        {dictionaryOf({{1.0, ""}}), "unknown setting \"\""},
        {dictionaryOf(
             {{"1", "DriverVersion"}, {"pointer", "FingerMode"}, {1920, "NativeWidth"}, {1080, "NativeHeight"}}),
         "contains no settings"},
        {NSMutableDictionary::dictionary(), "contains no settings"},
    };
    for (const auto& [profile, reason] : refused) EXPECT_THAT(refusalOf(profile), HasSubstr(reason));
}

TEST_F(TouchctlSettings, GestureRecordOfAProfileHasAllItsPartsAndAnActionItHas) {
    const auto refusalOfRecord = [](const char* key, const Value& value) {
        auto record = newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, false);
        record.setObjectForKey(value, key);
        return refusalOf(dictionaryOf({{arrayOf({record}), "GestureArray"}}));
    };
    EXPECT_EQ(refusalOfRecord("Own", 7), "") << "what a driver adds of its own stays";
    for (const auto& [key, value] :
         std::initializer_list<std::pair<const char*, Value>>{{"Name", ""},
                                                              {"Name", 7},
                                                              {"Descriptor", "RotateWithTwoFingers"},
                                                              {"Descriptor", arrayOf({})},
                                                              {"Descriptor", arrayOf({1})},
                                                              {"SelectedIndex", 1},
                                                              {"SelectedIndex", -1},
                                                              {"SelectedIndex", 0.0},
                                                              {"IsEnable", 1},
                                                              {"MoreGesture", "YES"}}) {
        EXPECT_THAT(refusalOfRecord(key, value), HasSubstr(std::string(key) + " in gesture 1 of GestureArray")) << key;
    }
    EXPECT_THAT(refusalOf(dictionaryOf({{arrayOf({"Rotate"}), "GestureArray"}})), HasSubstr("gesture 1"));
}

TEST_F(TouchctlSettings, ProfileOfAFileLeavesOutWhatThePaneCannotSend) {
    const auto settings =
        dictionaryOf({{"0.8.0.3", "DriverVersion"}, {0.5, "DoubleClickRate"}, {7, "Own"}, {false, "RotateMode"}});
    EXPECT_THAT(profileOf(settings).allKeys(), ElementsAre("DoubleClickRate", "RotateMode"));
    EXPECT_THROW((void)profileOf(dictionaryOf({{9.0, "DoubleClickRate"}})), Failure);
}

TEST_F(TouchctlSettings, FaultsOfAFileAreNamedEachByItsKey) {
    EXPECT_THAT(faultsIn(dictionaryOf({{0.5, "DoubleClickRate"}, {"?", "Own"}})), IsEmpty());
    EXPECT_THAT(faultsIn(dictionaryOf({{0.0, "DoubleClickRate"}, {"?", "RotateMode"}})),
                ElementsAre(HasSubstr("DoubleClickRate"), HasSubstr("RotateMode")));
}

TEST_F(TouchctlSettings, WhatSetWouldRefuseIsNotShownAsAValue) {
    const auto shown = [](std::string_view key, std::string_view fileKey, const Value& value) {
        return settingKey(key).shown(dictionaryOf({{value, fileKey}})).text();
    };
    EXPECT_EQ(shown("double-click-rate", "DoubleClickRate", 1.01), "(invalid)");
    EXPECT_EQ(shown("double-click-rate", "DoubleClickRate", std::nan("")), "(invalid)");
    EXPECT_EQ(shown("double-click-range", "DoubleClickRange", 32.5), "(invalid)");
    EXPECT_EQ(shown("double-click-range", "DoubleClickRange", arrayOf({})), "(not set)");
    EXPECT_EQ(shown("double-click-range", "DoubleClickRange", "40 mm"), "40") << "read as the pane reads it";
    EXPECT_EQ(shown("double-click-range", "DoubleClickRange", "hello"), "(not set)");
    EXPECT_EQ(shown("double-click-rate", "DoubleClickRate", ""), "(not set)");
    EXPECT_EQ(shown("rotation", "RotateMode", "hello"), "(not set)");
    EXPECT_EQ(shown("rotation", "RotateMode", -1), "(invalid)");
    EXPECT_EQ(shown("rotation", "RotateMode", false), "0");
    EXPECT_EQ(shown("calibration", "ManualCalibration", resolutionOf(4097, 10)), "(invalid)");
    EXPECT_EQ(shown("calibration", "ManualCalibration", resolutionOf(Value(), 10)), "(not set)");
    EXPECT_EQ(shown("right-click", "RightClick", rightClickOf(false, 1.0)), "off");
    EXPECT_EQ(shown("long-press", "RightClick", rightClickOf(false, 3.1)), "(invalid)");
}

TEST_F(TouchctlSettings, WhatIsShownIsWhatSetTakes) {
    const auto stored = dictionaryOf({{0.3, "DoubleClickRate"},
                                      {40.0, "DoubleClickRange"},
                                      {3, "RotateMode"},
                                      {rightClickOf(true, 1.0), "RightClick"},
                                      {false, "AutoCalibration"},
                                      {resolutionOf(1024.5, 768.0), "ManualCalibration"},
                                      {"pointer", "FingerMode"}});
    std::vector<std::string> lines;
    for (const Key& key : settingKeys()) {
        if (key.shown) lines.push_back(std::string(key.name) + " " + key.shown(stored).text());
    }
    EXPECT_THAT(lines, ElementsAre("double-click-rate 0.3", "double-click-range 40", "right-click on", "long-press 1",
                                   "rotation 270", "calibration manual 1024.5 768", "finger pointer"));
    for (const Key& key : settingKeys()) {
        if (!key.shown) continue;
        EXPECT_EQ(key.shown(NSMutableDictionary()).text(), "(not set)") << key.name;
    }
    EXPECT_EQ(settingKey("finger").shown(dictionaryOf({{"mouse", "FingerMode"}})).text(), "(invalid)");
}

} // namespace

} // namespace kelvo::touchctl
