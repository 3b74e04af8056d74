#include "touch/TouchDisplay.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

// What the driver's judgement takes for a frame of so many contacts, which move in each.

namespace {

constexpr touch::Size kGlass{600.0, 340.0};
constexpr touch::Time kFrame = std::chrono::milliseconds(8);
/// Fingers lift now and then, as they do.
constexpr std::int64_t kFramesOfAHand = 100;

class Sink final : public touch::Outputs {
public:
    void give(const touch::Output& output, touch::Time now) override {
        benchmark::DoNotOptimize(output.at.x);
        benchmark::DoNotOptimize(now);
    }
};

touch::Settings allGestures() {
    touch::Settings settings;
    for (const auto& [name, action] : std::vector<std::pair<const char*, const char*>>{
             {"SecondaryClick", "ClickOrTapWithTwoFingers"},
             {"LookUp", "TapWithThreeFingers"},
             {"ScrollDirection", "ContentTracksFingerMovement"},
             {"ZoomInOrOut", "PinchWithTwoFingers"},
             {"SmartZoom", "DoubleTapWithTwoFingers"},
             {"Rotate", "RotateWithTwoFingers"},
             {"SwipeBetweenPages", "ScrollLeftOrRightWithTwoFingers"},
             {"FullScreenApps", "SwipeLeftOrRightWithThreeFingers"},
             {"NotificationCenter", "SwipeLeftFromTheRightEdgeWithTwoFingers"},
             {"MissionControl", "SwipeUpWithThreeFingers"},
             {"AppExpos\u00e9", "SwipeDownWithThreeFingers"},
             {"Launchpad", "PinchWithThumbAndThreeFingers"},
             {"ShowDesktop", "SpreadWithThumbAndThreeFingers"}}) {
        settings.gestures.push_back({.name = name, .descriptor = {action}});
    }
    settings.longPress = std::chrono::milliseconds(600);
    return settings;
}

/// All fingers go down together and come back.
touch::Frame frameOf(std::int64_t number, std::int64_t contacts) {
    touch::Frame frame{.time = kFrame * number, .contacts = {}};
    const std::int64_t inHand = number % kFramesOfAHand;
    if (inHand == kFramesOfAHand - 1) return frame;
    const auto id = static_cast<std::int32_t>(number / kFramesOfAHand * contacts % 60'000);
    for (std::int64_t i = 0; i < contacts; ++i) {
        const touch::Point place{40.0 + 50.0 * static_cast<double>(i), 60.0 + 1.5 * static_cast<double>(inHand)};
        frame.contacts.add({id + static_cast<std::int32_t>(i), place, false});
    }
    return frame;
}

void judgeFrames(benchmark::State& state) {
    Sink sink;
    touch::TouchDisplay display(kGlass, sink, [](touch::Fault /*fault*/) {});
    display.setSettings(allGestures());
    std::int64_t number = 0;
    while (state.KeepRunning()) {
        display.frame(frameOf(number++, state.range(0)));
        benchmark::DoNotOptimize(display.deadline());
    }
}

BENCHMARK(judgeFrames)->Name("touch:frame")->Arg(1)->Arg(2)->Arg(5)->Arg(10);

} // namespace

BENCHMARK_MAIN();
