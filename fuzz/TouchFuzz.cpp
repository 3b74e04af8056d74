#include "Input.h"
#include "Require.h"

#include "touch/TouchDisplay.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// A hand that does anything at all: frames, timeouts, settings and switching, in any order and at any times. What is
// given out must keep to its grammar, and nothing may stay down.

namespace {

using namespace std::chrono_literals;

/// Actions that catalogues offer, and one that none does.
constexpr std::array<std::array<const char*, 2>, 20> kRecords{{
    {"SecondaryClick", "ClickOrTapWithTwoFingers"},
    {"LookUp", "TapWithThreeFingers"},
    {"Scroll", "ScrollWithTwoFingers"},
    {"ScrollDirection", "ContentTracksFingerMovement"},
    {"ZoomInOrOut", "PinchWithTwoFingers"},
    {"SmartZoom", "DoubleTapWithTwoFingers"},
    {"Rotate", "RotateWithTwoFingers"},
    {"SwipeBetweenPages", "ScrollLeftOrRightWithTwoFingers"},
    {"SwipeBetweenPages", "SwipeWithThreeFingers"},
    {"SwipeBetweenPages", "SwipeWithTwoOrThreeFingers"},
    {"FullScreenApps", "SwipeLeftOrRightWithThreeFingers"},
    {"FullScreenApps", "SwipeLeftOrRightWithFourFingers"},
    {"NotificationCenter", "SwipeLeftFromTheRightEdgeWithTwoFingers"},
    {"MissionControl", "SwipeUpWithThreeFingers"},
    {"MissionControl", "SwipeUpWithFourFingers"},
    {"AppExpos\u00e9", "SwipeDownWithThreeFingers"},
    {"Launchpad", "PinchWithThumbAndThreeFingers"},
    {"ShowDesktop", "SpreadWithThumbAndThreeFingers"},
    {"ShowDesktop", "SwipeUpWithFourFingers"},
    {"LookUp", "SwipeUpWithFourFingers"},
}};

class Sink final : public touch::Outputs {
public:
    void give(const touch::Output& /*output*/, touch::Time /*now*/) override {}
};

touch::Settings anySettings(fuzzing::Input& input) {
    touch::Settings settings;
    const std::uint8_t flags = input.byte();
    settings.fingerMode = (flags & 1U) != 0 ? touch::FingerMode::Pointer : touch::FingerMode::Touch;
    if ((flags & 2U) != 0) settings.longPress = touch::Time(static_cast<std::int64_t>(input.byte()) * 16'000);
    settings.doubleClickRate = touch::Time(static_cast<std::int64_t>(input.byte()) * 8'000);
    settings.doubleClickRange = input.byte();
    settings.rotateMode = (flags >> 2U) & 3U;
    if ((flags & 16U) != 0) settings.manualPicture = touch::Size{input.byte() * 16.0, input.byte() * 16.0};
    settings.switches.appExpose = (flags & 32U) != 0;
    const std::uint32_t chosen = static_cast<std::uint32_t>(input.int32());
    for (std::size_t i = 0; i < kRecords.size(); ++i) {
        if (((chosen >> i) & 1U) == 0) continue;
        settings.gestures.push_back({.name = kRecords[i][0], .descriptor = {kRecords[i][1]}});
    }
    return settings;
}

touch::Desktop anyDesktop(fuzzing::Input& input) {
    touch::Desktop desktop;
    const std::uint8_t flags = input.byte();
    desktop.takesTouchesBack = (flags & 1U) != 0;
    desktop.scrollsNaturally = (flags & 2U) != 0;
    desktop.turnsTouches = (flags & 4U) != 0;
    desktop.turns = (flags >> 3U) & 3U;
    if ((flags & 32U) != 0) desktop.nativePixels = touch::Size{2000, 1000};
    desktop.doubleClickInterval = touch::Time(static_cast<std::int64_t>(input.byte()) * 4'000);
    return desktop;
}

/// Fingers that come, go and move a little, which is what gets past the first glance.
class Fingers {
public:
    void change(fuzzing::Input& input) {
        const std::uint8_t what = input.byte();
        Finger& finger = fingers_[what % fingers_.size()];
        if ((what & 0x80U) == 0) {
            // All of them move, each by what the byte says and a little for itself.
            const double x = static_cast<double>(input.byte()) / 16.0 - 8.0;
            const double y = static_cast<double>(input.byte()) / 16.0 - 8.0;
            for (Finger& each : fingers_) each.place = each.place + touch::Point{x, y} * each.share;
            finger.share = -finger.share;
        } else if (finger.isDown && (what & 0x40U) != 0) {
            finger.isDown = false;
        } else {
            finger.isDown = true;
            finger.id = (what & 0x20U) != 0 ? finger.id : nextId_++;
            finger.place = {static_cast<double>(input.byte()), static_cast<double>(input.byte()) / 2.0};
        }
    }

    [[nodiscard]] touch::Frame frame(touch::Time now) const {
        touch::Frame frame{.time = now, .contacts = {}};
        for (const Finger& finger : fingers_) {
            if (finger.isDown) frame.contacts.add({finger.id, finger.place, false});
        }
        return frame;
    }

    void liftAll() {
        for (Finger& finger : fingers_) finger.isDown = false;
    }

private:
    struct Finger {
        bool isDown = false;
        std::int32_t id = 0;
        touch::Point place;
        double share = 1.0;
    };
    std::array<Finger, 17> fingers_{};
    std::int32_t nextId_ = 1;
};

void play(fuzzing::Input input) {
    Sink sink;
    touch::TouchDisplay display(
        {200, 120}, sink, [](touch::Fault fault) { fuzzing::require(false, std::string(nameOf(fault)).c_str()); });
    display.setSettings(anySettings(input));
    display.setDesktop(anyDesktop(input));
    Fingers fingers;
    touch::Time now = 0ms;
    while (!input.isEmpty()) {
        const std::uint8_t act = input.byte();
        now += touch::Time(static_cast<std::int64_t>(act & 0x1fU) * 4'000);
        switch (act >> 5U) {
        case 0:
            display.timeout(now);
            break;
        case 1:
            if (input.byte() < 16) display.setSettings(anySettings(input));
            break;
        case 2:
            if (input.byte() < 16) display.setEnabled(!display.isEnabled(), now);
            break;
        case 3:
            // Late, early, or the same again.
            display.frame(fingers.frame(now - touch::Time(static_cast<std::int64_t>(input.byte()) * 1'000)));
            break;
        default:
            fingers.change(input);
            display.frame(fingers.frame(now));
            break;
        }
    }
    if (!display.isEnabled()) display.setEnabled(true, now);
    fingers.liftAll();
    display.frame(fingers.frame(now));
    for (int i = 0; display.deadline(); ++i) {
        fuzzing::require(i < 10'000, "timers end");
        display.timeout(*display.deadline());
    }
    // An empty glass with no timer: the judge looks whether anything is down.
    display.frame(fingers.frame(now + 60s));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    play(fuzzing::Input({data, size}));
    return 0;
}
