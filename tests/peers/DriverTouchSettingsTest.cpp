#include "peers/driver/TouchSettings.h"

#include "TDGestureCatalogue.h"
#include "support/FakePlatform.h"
#include "touch/Rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using namespace std::chrono_literals;

constexpr char kName[] = "Desk";
constexpr std::int32_t kMountainLion = 0x1090;
constexpr std::int32_t kSnowLeopard = 0x1068;

SettingsContext allOn(std::int32_t version = kMountainLion) {
    return {dictionaryOf({{true, "showAppExposeGestureEnabled"},
                          {true, "showDesktopGestureEnabled"},
                          {true, "showMissionControlGestureEnabled"},
                          {true, "showLaunchpadGestureEnabled"}}),
            dictionaryOf({{true, "AppleEnableSwipeNavigateWithScrolls"}}), version};
}

touch::Settings settingsOf(const NSMutableDictionary& file) { return touchSettingsOf(kName, file, allOn()); }

/// What is in force for the fingers, where the settings are held to their bounds.
touch::Rules rulesOf(const NSMutableDictionary& file) {
    return {touch::Size{200.0, 120.0}, settingsOf(file), touch::Desktop()};
}

NSMutableDictionary rightClick(const Value& isOn, const Value& seconds) {
    auto inner = NSMutableDictionary::dictionary();
    inner.setObjectForKey(isOn, "RightClickIsEnable");
    inner.setObjectForKey(seconds, "RightClickTimeIntelval");
    return dictionaryOf({{inner, "RightClick"}});
}

std::vector<std::string> namesOf(const std::vector<touch::GestureRecord>& records) {
    std::vector<std::string> names;
    names.reserve(records.size());
    for (const touch::GestureRecord& record : records) names.push_back(record.name);
    return names;
}

/// Which of the gestures that the system has switches for are on.
std::vector<std::string> switchedOn(const SettingsContext& context, std::int64_t pagesIndex = 0) {
    std::vector<std::string> on;
    for (const char* name : {"AppExpos\u00e9", "ShowDesktop", "MissionControl", "Launchpad", "SwipeBetweenPages"}) {
        touch::Settings settings = touchSettingsOf(kName, NSMutableDictionary(), context);
        std::erase_if(settings.gestures, [&](const touch::GestureRecord& record) { return record.name != name; });
        for (touch::GestureRecord& record : settings.gestures) {
            if (record.name == "SwipeBetweenPages") record.selectedIndex = pagesIndex;
        }
        const touch::GestureChoice choice(settings.gestures, settings.switches);
        for (std::size_t i = 0; i < touch::kShapeCount; ++i) {
            const auto gesture = choice.gestureOf(static_cast<touch::Shape>(i));
            if (gesture && touch::nameOf(*gesture) == name) {
                on.emplace_back(name);
                break;
            }
        }
    }
    return on;
}

TEST(DriverTouchSettings, WithoutAnythingChosenAreTheUsualOnes) {
    for (const auto& file : {NSMutableDictionary(), NSMutableDictionary::dictionary()}) {
        const touch::Settings settings = settingsOf(file);
        EXPECT_EQ(settings.fingerMode, touch::FingerMode::Touch);
        EXPECT_EQ(settings.longPress, std::nullopt);
        EXPECT_EQ(settings.doubleClickRate, 500ms);
        EXPECT_EQ(settings.doubleClickRange, 32.0);
        EXPECT_EQ(settings.manualPicture, std::nullopt);
        EXPECT_EQ(settings.rotateMode, 0);
        EXPECT_EQ(settings.gestures.size(), 13U);
        for (const touch::GestureRecord& record : settings.gestures) EXPECT_TRUE(record.isEnabled) << record.name;
    }
}

TEST(DriverTouchSettings, AreThoseThatTheMessagesBring) {
    auto file = rightClick(true, 1.5);
    file.setObjectForKey(0.25, "DoubleClickRate");
    file.setObjectForKey(40, "DoubleClickRange");
    file.setObjectForKey(3, "RotateMode");
    file.setObjectForKey("pointer", "FingerMode");
    file.setObjectForKey(false, "AutoCalibration");
    file.setObjectForKey(dictionaryOf({{1280.0, "OSDWidth"}, {720.0, "OSDHeight"}}), "ManualCalibration");
    const touch::Settings settings = settingsOf(file);
    EXPECT_EQ(settings.longPress, 1500ms);
    EXPECT_EQ(settings.doubleClickRate, 250ms);
    EXPECT_EQ(settings.doubleClickRange, 40.0);
    EXPECT_EQ(settings.rotateMode, 3);
    EXPECT_EQ(settings.fingerMode, touch::FingerMode::Pointer);
    EXPECT_EQ(settings.manualPicture, (touch::Size{1280.0, 720.0}));
}

TEST(DriverTouchSettings, RightClickIsOffUnlessItIsSwitchedOnAndItsTimeIsHeldToItsBounds) {
    for (const Value& isOn : {Value(), Value(false), Value("maybe")}) {
        EXPECT_EQ(settingsOf(rightClick(isOn, 1.0)).longPress, std::nullopt);
    }
    EXPECT_EQ(settingsOf(dictionaryOf({{"on", "RightClick"}})).longPress, std::nullopt);
    const std::pair<Value, touch::Time> times[] = {{0.3, 300ms},
                                                   {3, 3s},
                                                   {0.29, 300ms},
                                                   {3.1, 3s},
                                                   {-1.0, 300ms},
                                                   {1e300, 3s},
                                                   {"1.5", 1500ms},
                                                   {Value(), 300ms},
                                                   {"soon", 300ms},
                                                   {std::nan(""), 300ms},
                                                   {std::numeric_limits<double>::infinity(), 3s}};
    for (const auto& [seconds, time] : times) {
        EXPECT_EQ(rulesOf(rightClick(true, seconds)).longPress, time) << seconds.description();
    }
}

TEST(DriverTouchSettings, RateIsHeldToItsBoundsAndTheUsualOneWhereItIsMissingOrUnfit) {
    const std::pair<Value, touch::Time> rates[] = {{0.1, 100ms},
                                                   {1, 1s},
                                                   {0.05, 100ms},
                                                   {0, 100ms},
                                                   {7.0, 1s},
                                                   {-1e300, 100ms},
                                                   {"0.4", 400ms},
                                                   {Value(), 500ms},
                                                   {"fast", 500ms},
                                                   {std::nan(""), 500ms},
                                                   {NSMutableArray::arrayWithObjects(), 500ms}};
    for (const auto& [stored, rate] : rates) {
        auto file = NSMutableDictionary::dictionary();
        file.setObjectForKey(stored, "DoubleClickRate");
        EXPECT_EQ(rulesOf(file).doubleClickRate, rate) << stored.description();
    }
}

TEST(DriverTouchSettings, RangeIsTheUsualOneWhereItIsMissingOrUnfit) {
    const std::pair<Value, double> ranges[] = {
        {40.0, 40.0}, {"64", 64.0}, {Value(), 32.0}, {"wide", 32.0}, {dictionaryOf({}), 32.0}};
    for (const auto& [stored, range] : ranges) {
        auto file = NSMutableDictionary::dictionary();
        file.setObjectForKey(stored, "DoubleClickRange");
        EXPECT_EQ(settingsOf(file).doubleClickRange, range) << stored.description();
    }
}

TEST(DriverTouchSettings, CalibrationIsManualOnlyWhereTheFileSaysSo) {
    const auto sizes = dictionaryOf({{640, "OSDWidth"}, {"480", "OSDHeight"}});
    const std::pair<Value, bool> states[] = {{Value(), false}, {true, false},
                                             {false, true},    {0, true},
                                             {"NO", true},     {NSMutableArray::arrayWithObjects(), false}};
    for (const auto& [stored, isManual] : states) {
        auto file = dictionaryOf({{sizes, "ManualCalibration"}});
        file.setObjectForKey(stored, "AutoCalibration");
        EXPECT_EQ(settingsOf(file).manualPicture.has_value(), isManual) << stored.description();
    }
    const auto manualWithoutSizes = dictionaryOf({{false, "AutoCalibration"}, {"?", "ManualCalibration"}});
    EXPECT_EQ(settingsOf(manualWithoutSizes).manualPicture, (touch::Size{0.0, 0.0})) << "a side of 0 is the whole side";
}

TEST(DriverTouchSettings, FingerModeIsATouchUnlessItIsThePointer) {
    for (const Value& mode : {Value("touch"), Value("Pointer"), Value("mouse"), Value(1)}) {
        auto file = NSMutableDictionary::dictionary();
        file.setObjectForKey(mode, "FingerMode");
        EXPECT_EQ(settingsOf(file).fingerMode, touch::FingerMode::Touch) << mode.description();
    }
}

TEST(DriverTouchSettings, GesturesAreThoseOfTheFileElseTheSystems) {
    auto record = newGestureDictionary("FullScreenApps", {"A", 7, "C"}, true);
    record.setObjectForKey(2, "SelectedIndex");
    record.setObjectForKey(false, "IsEnable");
    const auto list = NSMutableArray::arrayWithObjects({record, "damaged", NSMutableDictionary::dictionary()});
    const auto gestures = settingsOf(dictionaryOf({{list, "GestureArray"}})).gestures;
    ASSERT_EQ(gestures.size(), 2U);
    EXPECT_EQ(gestures[0].name, "FullScreenApps");
    EXPECT_THAT(gestures[0].descriptor, ElementsAre("A", "", "C"));
    EXPECT_EQ(gestures[0].selectedIndex, 2);
    EXPECT_FALSE(gestures[0].isEnabled);
    EXPECT_EQ(gestures[1].name, "");

    EXPECT_TRUE(settingsOf(dictionaryOf({{NSMutableArray::arrayWithObjects(), "GestureArray"}})).gestures.empty());
    EXPECT_EQ(settingsOf(dictionaryOf({{"damaged", "GestureArray"}})).gestures.size(), 13U);
    const auto nothing = NSMutableDictionary::dictionary();
    EXPECT_EQ(namesOf(touchSettingsOf(kName, nothing, allOn(kSnowLeopard)).gestures),
              namesOf(settingsOf(dictionaryOf({{initGesturesInformationForSnowLeopard(), "GestureArray"}})).gestures));
    EXPECT_TRUE(touchSettingsOf(kName, nothing, allOn(0x1059)).gestures.empty());
}

TEST(DriverTouchSettings, GestureIsOnOnlyWhereTheSystemsSwitchIsOn) {
    EXPECT_THAT(switchedOn(allOn()),
                ElementsAre("AppExpos\u00e9", "ShowDesktop", "MissionControl", "Launchpad", "SwipeBetweenPages"));
    const std::tuple<std::string, const char*> switches[] = {{"AppExpos\u00e9", "showAppExposeGestureEnabled"},
                                                             {"ShowDesktop", "showDesktopGestureEnabled"},
                                                             {"MissionControl", "showMissionControlGestureEnabled"},
                                                             {"Launchpad", "showLaunchpadGestureEnabled"}};
    for (const auto& [name, key] : switches) {
        SettingsContext context = allOn();
        context.dockPreferences.setObjectForKey(false, key);
        const auto on = switchedOn(context);
        EXPECT_EQ(on.size(), 4U) << name;
        EXPECT_EQ(std::count(on.begin(), on.end(), name), 0) << name;
    }
    EXPECT_THAT(switchedOn({NSMutableDictionary(), NSMutableDictionary(), kMountainLion}), ElementsAre())
        << "a file that cannot be read says off";
}

TEST(DriverTouchSettings, PagesNeedTheSwitchOfScrollingWhereTwoFingersTakePart) {
    SettingsContext context = allOn();
    context.globalPreferences.setObjectForKey(false, "AppleEnableSwipeNavigateWithScrolls");
    for (const auto& [index, isOn] : {std::pair{0, false}, {1, true}, {2, false}}) {
        const auto on = switchedOn(context, index);
        EXPECT_EQ(std::count(on.begin(), on.end(), "SwipeBetweenPages"), isOn ? 1 : 0) << index;
    }
    context.systemVersion = kSnowLeopard;
    const auto on = switchedOn(context);
    EXPECT_EQ(std::count(on.begin(), on.end(), "SwipeBetweenPages"), 1) << "10.6 asks no switch";
}

TEST(DriverTouchSettings, NativeSizeIsThatOfTheFileIfBothSidesAreThere) {
    EXPECT_EQ(nativePixelsOf(dictionaryOf({{1920, "NativeWidth"}, {1080.0, "NativeHeight"}})),
              (touch::Size{1920.0, 1080.0}));
    for (const auto& file : {NSMutableDictionary(), dictionaryOf({{1920, "NativeWidth"}}),
                             dictionaryOf({{1920, "NativeWidth"}, {0, "NativeHeight"}}),
                             dictionaryOf({{1920, "NativeWidth"}, {"tall", "NativeHeight"}})}) {
        EXPECT_EQ(nativePixelsOf(file), std::nullopt);
    }
}

touch::Matrix calibrationOf(const Value& entry) {
    SettingsContext context = allOn();
    context.calibrations =
        dictionaryOf({{dictionaryOf({{arrayOf({2, 0, 0, 0, 2, 0}), "Matrix"}}), "Other"}, {entry, kName}});
    return touchSettingsOf(kName, NSMutableDictionary::dictionary(), context).calibration;
}

TEST(DriverTouchSettings, CalibrationIsTheMatrixUnderTheDisplaysName) {
    EXPECT_EQ(calibrationOf(dictionaryOf({{arrayOf({1.5, 0, -0.25, 0, 1, 0.125}), "Matrix"}, {"HDMI-1", "Output"}})),
              (touch::Matrix{1.5, 0, -0.25, 0, 1, 0.125}));
}

TEST(DriverTouchSettings, CalibrationThatIsMissingOrDamagedIsNone) {
    EXPECT_EQ(calibrationOf(Value()), touch::kIdentity);
    EXPECT_EQ(calibrationOf("damaged"), touch::kIdentity);
    EXPECT_EQ(calibrationOf(NSMutableDictionary::dictionary()), touch::kIdentity);
    for (const Value& matrix :
         {Value("2 0 0 0 2 0"), Value(arrayOf({2, 0, 0, 0, 2})), Value(arrayOf({2, 0, 0, 0, 2, 0, 0})),
          Value(arrayOf({2, 0, 0, 0, 2, NSMutableDictionary::dictionary()})),
          Value(arrayOf({2, 0, 0, 0, 2, std::nan("")}))}) {
        EXPECT_EQ(calibrationOf(dictionaryOf({{matrix, "Matrix"}})), touch::kIdentity);
    }
}

} // namespace

} // namespace kelvo
