#include "touch/Gestures.h"

#include <algorithm>

namespace touch {

namespace {

constexpr std::array<std::string_view, kGestureCount> kGestureNames{
    "SecondaryClick", "LookUp",
    "Scroll",         "ScrollDirection",
    "ZoomInOrOut",    "SmartZoom",
    "Rotate",         "SwipeBetweenPages",
    "FullScreenApps", "NotificationCenter",
    "MissionControl", "AppExpos\u00e9",
    "Launchpad",      "ShowDesktop",
};

struct ShapeFacts {
    std::string_view name;
    std::int32_t fingers;
};

constexpr std::array<ShapeFacts, kShapeCount> kShapes{{
    {"tap of two", 2},
    {"double tap of two", 2},
    {"tap of three", 3},
    {"two moving together", 2},
    {"sideways flick of two", 2},
    {"pinch of two", 2},
    {"rotation of two", 2},
    {"three sideways", 3},
    {"three up", 3},
    {"three down", 3},
    {"four sideways", 4},
    {"four up", 4},
    {"four down", 4},
    {"thumb and three together", 4},
    {"thumb and three apart", 4},
    {"two from the right edge", 2},
}};

constexpr std::array<std::string_view, 5> kDirectionNames{"", "left", "right", "up", "down"};

constexpr std::string_view kContentTracksFingers = "ContentTracksFingerMovement";

/// An action that a catalogue offers for a gesture, and the shapes that perform it.
struct Offer {
    Gesture gesture;
    std::string_view action;
    Shape shape;
    std::optional<Shape> secondShape = std::nullopt;
};

constexpr std::array kOffers{
    Offer{Gesture::SecondaryClick, "ClickOrTapWithTwoFingers", Shape::TapWithTwo},
    Offer{Gesture::LookUp, "TapWithThreeFingers", Shape::TapWithThree},
    Offer{Gesture::Scroll, "ScrollWithTwoFingers", Shape::ScrollWithTwo},
    Offer{Gesture::ZoomInOrOut, "PinchWithTwoFingers", Shape::PinchWithTwo},
    Offer{Gesture::SmartZoom, "DoubleTapWithTwoFingers", Shape::DoubleTapWithTwo},
    Offer{Gesture::Rotate, "RotateWithTwoFingers", Shape::RotateWithTwo},
    Offer{Gesture::SwipeBetweenPages, "ScrollLeftOrRightWithTwoFingers", Shape::FlickSidewaysWithTwo},
    Offer{Gesture::SwipeBetweenPages, "SwipeWithThreeFingers", Shape::SidewaysWithThree},
    Offer{Gesture::SwipeBetweenPages, "SwipeWithTwoOrThreeFingers", Shape::FlickSidewaysWithTwo,
          Shape::SidewaysWithThree},
    Offer{Gesture::FullScreenApps, "SwipeLeftOrRightWithThreeFingers", Shape::SidewaysWithThree},
    Offer{Gesture::FullScreenApps, "SwipeLeftOrRightWithFourFingers", Shape::SidewaysWithFour},
    Offer{Gesture::NotificationCenter, "SwipeLeftFromTheRightEdgeWithTwoFingers", Shape::LeftFromRightEdgeWithTwo},
    Offer{Gesture::MissionControl, "SwipeUpWithThreeFingers", Shape::UpWithThree},
    Offer{Gesture::MissionControl, "SwipeUpWithFourFingers", Shape::UpWithFour},
    Offer{Gesture::AppExpose, "SwipeDownWithThreeFingers", Shape::DownWithThree},
    Offer{Gesture::AppExpose, "SwipeDownWithFourFingers", Shape::DownWithFour},
    Offer{Gesture::Launchpad, "PinchWithThumbAndThreeFingers", Shape::FourTogether},
    Offer{Gesture::ShowDesktop, "SpreadWithThumbAndThreeFingers", Shape::FourApart},
    Offer{Gesture::ShowDesktop, "SwipeUpWithFourFingers", Shape::UpWithFour},
};

/// The action that the user has chosen in a record; none if the choice is not in the list.
std::optional<std::string_view> chosenAction(const GestureRecord& record) {
    const auto index = record.selectedIndex;
    if (index < 0 || static_cast<std::uint64_t>(index) >= record.descriptor.size()) return std::nullopt;
    return record.descriptor[static_cast<std::size_t>(index)];
}

bool hasRecordOf(Gesture gesture, const std::vector<GestureRecord>& records) {
    return std::any_of(records.begin(), records.end(),
                       [&](const GestureRecord& record) { return record.name == nameOf(gesture); });
}

/// Whether the corresponding system gesture is on; if it is off, the pane shows the row as off.
bool isOnInSystem(Gesture gesture, std::int64_t selectedIndex, const SystemSwitches& switches) {
    switch (gesture) {
    case Gesture::AppExpose:
        return switches.appExpose;
    case Gesture::ShowDesktop:
        return switches.showDesktop;
    case Gesture::MissionControl:
        return switches.missionControl;
    case Gesture::Launchpad:
        return switches.launchpad;
    case Gesture::SwipeBetweenPages:
        // The switch belongs to scrolling with two fingers, which does not affect the second choice.
        return switches.pagesNeedNoSwitch || switches.swipeNavigateWithScrolls ||
               (selectedIndex != 0 && selectedIndex != 2);
    case Gesture::SecondaryClick:
    case Gesture::LookUp:
    case Gesture::Scroll:
    case Gesture::ScrollDirection:
    case Gesture::ZoomInOrOut:
    case Gesture::SmartZoom:
    case Gesture::Rotate:
    case Gesture::FullScreenApps:
    case Gesture::NotificationCenter:
        return true;
    }
    return true;
}

} // namespace

std::string_view nameOf(Gesture gesture) { return kGestureNames[static_cast<std::size_t>(gesture)]; }

std::optional<Gesture> gestureNamed(std::string_view name) {
    const auto* const found = std::find(kGestureNames.begin(), kGestureNames.end(), name);
    if (found == kGestureNames.end()) return std::nullopt;
    return static_cast<Gesture>(found - kGestureNames.begin());
}

bool hasWays(Gesture gesture) { return gesture == Gesture::SwipeBetweenPages || gesture == Gesture::FullScreenApps; }

std::string_view nameOf(Shape shape) { return kShapes[static_cast<std::size_t>(shape)].name; }

std::string_view nameOf(Direction direction) { return kDirectionNames[static_cast<std::size_t>(direction)]; }

std::int32_t fingersOf(Shape shape) { return kShapes[static_cast<std::size_t>(shape)].fingers; }

GestureChoice::GestureChoice(const std::vector<GestureRecord>& records, const SystemSwitches& switches) {
    for (const GestureRecord& record : records) add(record, switches);
    // Newer systems have no record for scrolling, because it cannot be switched off there.
    if (!hasRecordOf(Gesture::Scroll, records)) {
        gestures_[static_cast<std::size_t>(Shape::ScrollWithTwo)] = Gesture::Scroll;
    }
    if (!hasRecordOf(Gesture::ScrollDirection, records)) contentFollowsFingers_ = true;
}

void GestureChoice::add(const GestureRecord& record, const SystemSwitches& switches) {
    const auto gesture = gestureNamed(record.name);
    const auto action = chosenAction(record);
    if (!gesture || !action || !record.isEnabled || !isOnInSystem(*gesture, record.selectedIndex, switches)) return;
    if (*gesture == Gesture::ScrollDirection && *action == kContentTracksFingers) contentFollowsFingers_ = true;
    for (const Offer& offer : kOffers) {
        if (offer.gesture != *gesture || offer.action != *action) continue;
        for (const auto shape : {std::optional(offer.shape), offer.secondShape}) {
            if (shape && !wants(*shape)) gestures_[static_cast<std::size_t>(*shape)] = *gesture;
        }
    }
}

bool GestureChoice::wantsAtLeast(std::int32_t count) const {
    for (std::size_t i = 0; i < kShapeCount; ++i) {
        if (gestures_[i] && kShapes[i].fingers >= count) return true;
    }
    return false;
}

bool GestureChoice::wantsFingers(std::int32_t count) const {
    for (std::size_t i = 0; i < kShapeCount; ++i) {
        if (gestures_[i] && kShapes[i].fingers == count) return true;
    }
    return false;
}

} // namespace touch
