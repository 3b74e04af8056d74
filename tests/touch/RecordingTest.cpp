#include "touch/Recording.h"

#include "tests/touch/Script.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

using touching::gesturesIn;
using touching::only;
using touching::Stage;

const std::filesystem::path kRecordings = KELVO_TOUCH_RECORDINGS;

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("no file " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

touch::Recording recordingNamed(const std::string& panel, const std::string& fingers) {
    return touch::readRecording(contentsOf(kRecordings / (panel + "." + fingers + ".events")),
                                contentsOf(kRecordings / (panel + ".desc")));
}

std::string play(const touch::Recording& recording, Stage stage) {
    const touch::Glass glass(recording.x, recording.y);
    touching::Transcript transcript(glass.size());
    touch::TouchDisplay display(glass.size(), transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    display.setDesktop(stage.desktop);
    recording.play(glass, [&](const touch::Frame& frame) { display.frame(frame); });
    while (display.deadline()) display.timeout(*display.deadline());
    return transcript.text();
}

std::string playNamed(const std::string& panel, const std::string& fingers, const Stage& stage = {}) {
    return play(recordingNamed(panel, fingers), stage);
}

std::size_t count(const std::string& text, std::string_view what) {
    std::size_t found = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++found;
    return found;
}

constexpr char kAtmel[] = "Atmel maXTouch Touchscreen";
constexpr char kEdt[] = "EP0430M09";
constexpr char kElan[] = "ELAN CANDO Windows7";

TEST(Fingers, ThatDragUpAndDownAreOneTouch) {
    for (const char* const panel : {kAtmel, kEdt, kElan}) {
        const std::string output = playNamed(panel, "1-finger-drag-up-down");
        EXPECT_EQ(gesturesIn(output), "") << panel;
        EXPECT_EQ(count(output, "touch +"), 1U) << panel;
        EXPECT_EQ(count(output, "touch -"), 1U) << panel;
        EXPECT_GT(count(output, "touch ~"), 100U) << panel;
        EXPECT_EQ(only("pointer pad key gesture", output), "") << panel;
    }
}

TEST(Fingers, ThatTapFastAreAsManyTouches) {
    const std::string output = playNamed(kAtmel, "1-finger-fast-taps");
    EXPECT_EQ(count(output, "touch +"), 9U);
    EXPECT_EQ(count(output, "touch -"), 9U);
    EXPECT_EQ(only("pointer pad key gesture", output), "");
}

TEST(Fingers, ThatTouchAndAreReleasedDoNothing) {
    for (const char* const panel : {kAtmel, kEdt}) {
        const std::string output = playNamed(panel, "2-fingers-touch-release");
        EXPECT_EQ(gesturesIn(output), "") << panel;
        EXPECT_EQ(count(output, "touch -"), 0U) << panel;
        EXPECT_EQ(only("pointer pad key", output), "") << panel;
    }
}

TEST(Fingers, OfTwoThatScrollScroll) {
    // So that content goes down, as the recording is called, they go up.
    EXPECT_EQ(gesturesIn(playNamed(kEdt, "2-finger-scroll-down")), "Scroll up");
}

TEST(Fingers, OfFourThatDragAreWhateverFourAreToMean) {
    Stage stage;
    EXPECT_EQ(gesturesIn(playNamed(kAtmel, "4-finger-drag-down", stage)), "");
    EXPECT_EQ(gesturesIn(playNamed(kEdt, "4-finger-drag-down", stage)), "");
    stage.choose("AppExpos\u00e9", "SwipeDownWithFourFingers");
    stage.choose("MissionControl", "SwipeUpWithFourFingers");
    EXPECT_EQ(gesturesIn(playNamed(kAtmel, "4-finger-drag-down", stage)), "AppExpos\u00e9 down");
    EXPECT_EQ(gesturesIn(playNamed(kEdt, "4-finger-drag-down", stage)), "MissionControl up");
}

TEST(Fingers, PlayTheSameWhereTouchesCannotBeTakenBackButForThose) {
    Stage stage;
    stage.desktop.takesTouchesBack = false;
    EXPECT_EQ(only("touch", playNamed(kEdt, "2-finger-scroll-down", stage)), "");
    EXPECT_EQ(gesturesIn(playNamed(kEdt, "2-finger-scroll-down", stage)), "Scroll up");
    EXPECT_EQ(playNamed(kAtmel, "2-fingers-touch-release", stage), "");
}

constexpr std::string_view kPanel = "N: A panel\nI: 0003 1234 abcd 0111\nP: 02 00\nA: 2f 0 9 0 0\n"
                                    "A: 35 0 1000 0 0 10\nA: 36 0 500 0 0 10\n";

TEST(Recording, HasItsPanelsNameNumbersAndAxes) {
    const touch::Recording recording = touch::readRecording(kPanel);
    EXPECT_EQ(recording.name, "A panel");
    EXPECT_EQ(recording.vendor, 0x1234);
    EXPECT_EQ(recording.product, 0xabcd);
    EXPECT_EQ(recording.slots, 10U);
    EXPECT_EQ(recording.x.maximum, 1000);
    EXPECT_EQ(recording.y.resolution, 10);
    EXPECT_EQ(touch::Glass(recording.x, recording.y).size(), (touch::Size{100, 50}));
}

TEST(Recording, KeepsASlotsPlaceFromOneFingerToTheNext) {
    const touch::Recording recording =
        touch::readRecording(std::string(kPanel) + "E: 0.000000 0003 0039 7\nE: 0.000000 0003 0035 100\n"
                                                   "E: 0.000000 0003 0036 200\nE: 0.000000 0000 0000 0\n"
                                                   "E: 0.010000 0003 0039 -1\nE: 0.010000 0000 0000 0\n"
                                                   "E: 0.020000 0003 0039 8\nE: 0.020000 0003 0035 110\n"
                                                   "E: 0.020000 0000 0000 0\n");
    std::vector<touch::Frame> frames;
    recording.play(touch::Glass(recording.x, recording.y), [&](const touch::Frame& frame) { frames.push_back(frame); });
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[0].contacts[0].place, (touch::Point{10, 20}));
    EXPECT_TRUE(frames[1].contacts.empty());
    ASSERT_EQ(frames[2].contacts.size(), 1U);
    EXPECT_EQ(frames[2].contacts[0].id, 8);
    EXPECT_EQ(frames[2].contacts[0].place, (touch::Point{11, 20}));
    EXPECT_EQ(frames[2].time, touch::Time(20'000));
}

TEST(Recording, LeavesOutAReportThatTheKernelLostEventsOf) {
    const touch::Recording recording =
        touch::readRecording(std::string(kPanel) + "E: 0.000000 0003 0039 7\nE: 0.000000 0000 0003 0\n"
                                                   "E: 0.000000 0003 0035 900\nE: 0.000000 0000 0000 0\n"
                                                   "E: 0.010000 0000 0000 0\n");
    std::vector<touch::Frame> frames;
    recording.play(touch::Glass(recording.x, recording.y), [&](const touch::Frame& frame) { frames.push_back(frame); });
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0].contacts[0].place.x, 0.0);
}

std::string refusalOf(const std::string& text) {
    try {
        static_cast<void>(touch::readRecording(text));
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(Recording, NamesTheLineThatCannotBeRead) {
    const std::string panel(kPanel);
    EXPECT_EQ(refusalOf(panel + "E: 0.000000 0003"), "line 7: the code is missing");
    EXPECT_EQ(refusalOf(panel + "E: 0.000000 0003 0035 12x"), "line 7: the value is not a number");
    EXPECT_EQ(refusalOf(panel + "E: 0.000000 0003 0035 99999999999"), "line 7: the value is not a number");
    EXPECT_EQ(refusalOf(panel + "E: 1 0003 0035 1"), "line 7: the time is invalid");
    EXPECT_EQ(refusalOf(panel + "E: -1.000000 0003 0035 1"), "line 7: the time is invalid");
    EXPECT_EQ(refusalOf("N: x\nA: 35 0"), "line 2: the maximum is missing");
}

TEST(Recording, RefusesWhatIsNoTouchScreenWithSlots) {
    EXPECT_NE(refusalOf(""), "");
    EXPECT_NE(refusalOf("N: Pad\nP: 01\nA: 2f 0 9 0 0\nA: 35 0 9 0 0\nA: 36 0 9 0 0\n"), "");
    EXPECT_NE(refusalOf("N: Old\nP: 02\nA: 35 0 9 0 0\nA: 36 0 9 0 0\n"), "");
}

TEST(Glass, TakesItsSizeFromThePanelElseFromWhoKnowsItElseFromItsLongerSide) {
    const touch::Axis x{.minimum = 0, .maximum = 4000, .resolution = 0};
    const touch::Axis y{.minimum = 0, .maximum = 2000, .resolution = 0};
    EXPECT_EQ(touch::Glass(x, y).size(), (touch::Size{200, 100}));
    EXPECT_EQ(touch::Glass(x, y, touch::Size{300, 170}).size(), (touch::Size{300, 170}));
    EXPECT_EQ(touch::Glass(x, y, touch::Size{300, 0}).size(), (touch::Size{200, 100}));
    const touch::Axis fineX{.minimum = 0, .maximum = 4000, .resolution = 10};
    const touch::Axis fineY{.minimum = 0, .maximum = 2000, .resolution = 20};
    EXPECT_EQ(touch::Glass(fineX, fineY, touch::Size{300, 170}).size(), (touch::Size{400, 100}));
    EXPECT_EQ(touch::Glass(fineX, y, touch::Size{300, 170}).size(), (touch::Size{300, 170}));
}

TEST(Glass, HasItsEdgesWhereTheAxesEnd) {
    const touch::Glass glass({.minimum = -100, .maximum = 100, .resolution = 1}, {.minimum = 5, .maximum = 5});
    EXPECT_EQ(glass.placeOf(-100, 5).x, 0.0);
    EXPECT_EQ(glass.placeOf(100, 5).x, glass.size().width);
    EXPECT_EQ(glass.placeOf(5000, 5).x, glass.size().width);
    EXPECT_EQ(glass.placeOf(-5000, 4).x, 0.0);
    EXPECT_GT(glass.size().height, 0.0);
}

TEST(Glass, OfAResolutionThatNoPanelHasIsOfUnknownSize) {
    for (const std::int32_t resolution : {1, 2'147'483'647, 1'000}) {
        const touch::Glass glass({0, 16'383, resolution}, {0, 9'215, resolution});
        EXPECT_NEAR(glass.size().width, 200.0, 1e-9) << resolution;
        EXPECT_NEAR(glass.size().height, 200.0 * 9'215 / 16'383, 1e-9) << resolution;
        EXPECT_EQ(touch::Glass({0, 16'383, resolution}, {0, 9'215, resolution}, touch::Size{530, 300}).size(),
                  (touch::Size{530, 300}));
    }
    EXPECT_NEAR(touch::Glass({0, 16'383, 2}, {0, 9'215, 2}).size().width, 8191.5, 1e-9);
    EXPECT_NEAR(touch::Glass({0, 16'383, 800}, {0, 9'215, 800}).size().width, 20.47875, 1e-9);
}

TEST(ARecording, IsReadAsItWasWritten) {
    const touch::PanelDescription panel{.name = "Panel\nE: 0",
                                        .bus = 3,
                                        .vendor = 0x04f3,
                                        .product = 0xa10c,
                                        .version = 1,
                                        .x = {-5, 2000, 10},
                                        .y = {0, 1000, 7},
                                        .slots = 10};
    const touch::KernelEvent event{touch::Time(12'000'034), 3, 0x39, -1};
    const touch::KernelEvent later{touch::Time(13'000'004), 0, 0, 0};
    const touch::Recording read = touch::readRecording(textOf(panel) + textOf(event) + textOf(later));
    EXPECT_EQ(read.name, "Panel E: 0");
    EXPECT_EQ(read.bus, 3);
    EXPECT_EQ(read.vendor, 0x04f3);
    EXPECT_EQ(read.product, 0xa10c);
    EXPECT_EQ(read.slots, 10U);
    EXPECT_EQ(read.x.minimum, -5);
    EXPECT_EQ(read.y.resolution, 7);
    ASSERT_EQ(read.events.size(), 2U);
    EXPECT_EQ(read.events[1].time - read.events[0].time, later.time - event.time);
    EXPECT_EQ(read.events[0].type, 3);
    EXPECT_EQ(read.events[0].code, 0x39);
    EXPECT_EQ(read.events[0].value, -1);
}

} // namespace
