#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace touch {

/// The gestures that a settings file can hold a record of, by the records' names.
enum class Gesture : std::uint8_t {
    SecondaryClick,
    LookUp,
    Scroll,
    ScrollDirection,
    ZoomInOrOut,
    SmartZoom,
    Rotate,
    SwipeBetweenPages,
    FullScreenApps,
    NotificationCenter,
    MissionControl,
    AppExpose,
    Launchpad,
    ShowDesktop,
};
constexpr std::size_t kGestureCount = 14;

/// What several fingers can do on the glass.
enum class Shape : std::uint8_t {
    TapWithTwo,
    DoubleTapWithTwo,
    TapWithThree,
    ScrollWithTwo,
    FlickSidewaysWithTwo,
    PinchWithTwo,
    RotateWithTwo,
    SidewaysWithThree,
    UpWithThree,
    DownWithThree,
    SidewaysWithFour,
    UpWithFour,
    DownWithFour,
    FourTogether,
    FourApart,
    LeftFromRightEdgeWithTwo,
};
constexpr std::size_t kShapeCount = 16;

enum class Direction : std::uint8_t { None, Left, Right, Up, Down };

/// The name of a gesture's record, "AppExposé" with its accent.
[[nodiscard]] std::string_view nameOf(Gesture gesture);
[[nodiscard]] std::optional<Gesture> gestureNamed(std::string_view name);
/// Whether what it does may differ by the way it goes, left or right.
[[nodiscard]] bool hasWays(Gesture gesture);
[[nodiscard]] std::string_view nameOf(Shape shape);
[[nodiscard]] std::string_view nameOf(Direction direction);
/// How many fingers a shape has.
[[nodiscard]] std::int32_t fingersOf(Shape shape);

/// One record of the stored list of gestures.
struct GestureRecord {
    std::string name;
    /// The identifiers of the actions to choose from.
    std::vector<std::string> descriptor;
    std::int64_t selectedIndex = 0;
    bool isEnabled = true;
};

/// Which of the system's own gestures are on. A gesture that mirrors one of them is on only where that one is.
struct SystemSwitches {
    bool appExpose = true;
    bool showDesktop = true;
    bool missionControl = true;
    bool launchpad = true;
    bool swipeNavigateWithScrolls = true;
    /// The oldest of the systems that gestures come from asks no switch for pages.
    bool pagesNeedNoSwitch = false;
};

/// Which gesture each shape means: at most one.
class GestureChoice {
public:
    GestureChoice() = default;
    /// Where two enabled records want one shape, the first has it. A record that no catalogue has, or with an action
    /// that none offers for it, wants nothing.
    GestureChoice(const std::vector<GestureRecord>& records, const SystemSwitches& switches);

    [[nodiscard]] std::optional<Gesture> gestureOf(Shape shape) const {
        return gestures_[static_cast<std::size_t>(shape)];
    }
    [[nodiscard]] bool wants(Shape shape) const { return gestureOf(shape).has_value(); }
    /// Whether any gesture wants a shape of so many fingers.
    [[nodiscard]] bool wantsFingers(std::int32_t count) const;
    /// Whether any gesture wants a shape of so many fingers or more.
    [[nodiscard]] bool wantsAtLeast(std::int32_t count) const;
    /// Content goes with the fingers that scroll it.
    [[nodiscard]] bool contentFollowsFingers() const { return contentFollowsFingers_; }

private:
    void add(const GestureRecord& record, const SystemSwitches& switches);

    std::array<std::optional<Gesture>, kShapeCount> gestures_{};
    bool contentFollowsFingers_ = false;
};

} // namespace touch
