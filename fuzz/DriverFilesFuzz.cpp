// A user's actions and calibrations of any bytes come to what a driver can do, or to nothing.

#include "TDUtilities.h"
#include "fuzz/Input.h"
#include "fuzz/PlistMutator.h"
#include "fuzz/Require.h"
#include "peers/actions/ActionTexts.h"
#include "peers/driver/TouchSettings.h"
#include "support/FakePlatform.h"
#include "touch/Mapping.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using touch::Direction;
using touch::Gesture;

void requirePossible(const kelvo::ActionsInForce& actions) {
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        if (gesture == Gesture::ScrollDirection) continue;
        fuzzing::require(!textOf(actions, gesture).empty(), "each gesture has words");
        for (const auto direction : {Direction::Left, Direction::Right}) {
            const kelvo::DesktopAction& action = actions.actionFor(gesture, direction);
            fuzzing::require(reasonAgainst(action.action, gesture).empty(), "only what can be is in force");
            const kelvo::DesktopAction read = kelvo::storedActionIn(storedFormOf(action), gesture);
            fuzzing::require(read.action == action.action, "what is stored reads back");
        }
    }
}

bool isOnScreen(touch::Point place) { return place.x >= 0.0 && place.x <= 1.0 && place.y >= 0.0 && place.y <= 1.0; }

void requirePlaces(const touch::Settings& settings) {
    const touch::Size glass{300.0, 200.0};
    const touch::Mapping mapping(glass, settings, {});
    for (const touch::Point place : {touch::Point{0.0, 0.0}, touch::Point{300.0, 10.0}, touch::Point{150.0, 100.0}}) {
        const touch::Point hand = mapping.handOf(place);
        fuzzing::require(std::isfinite(hand.x) && std::isfinite(hand.y), "a finger is somewhere");
        fuzzing::require(isOnScreen(mapping.touchOf(hand)) && isOnScreen(mapping.pointerOf(hand)),
                         "what is given out is on the screen");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    support::FakePlatform platform;
    const bool isWayland = input.byte() % 2 == 0;
    const auto rest = input.rest();
    platform.files.files[kelvo::userActionsPath()] = {rest.begin(), rest.end()};
    platform.files.files[getAdvanceCalibrationFilePath()] = {rest.begin(), rest.end()};

    requirePossible(kelvo::ActionsInForce({{"GNOME"}, "6", isWayland}));
    for (const std::string name : {"", "Kelvo 24"}) {
        requirePlaces(kelvo::touchSettingsOf(name, {}, kelvo::currentSettingsContext()));
    }
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    return fuzzing::mutatePlist(data, size, maxSize, 1, seed);
}
