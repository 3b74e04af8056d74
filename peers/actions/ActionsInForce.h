#pragma once

#include "peers/actions/DesktopSession.h"
#include "platform/PropertyList.h"
#include "touch/Actions.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// A call of a method on the session bus.
struct BusCall {
    std::string service;
    std::string path;
    std::string interface;
    std::string method;
    /// Texts, booleans, whole numbers and reals.
    std::vector<platform::Value> arguments;
};

/// What a gesture does on a desktop.
struct DesktopAction {
    touch::Action action;
    /// That of an action that is a call.
    BusCall call;
    /// What comes of it, as one of the names that texts know; empty where nobody said.
    std::string purpose;
    /// The file that says so; empty for what the driver knows of itself.
    std::string file;
};

/// What each gesture does on the desktop of a session, by the driver's own table and the files over it: those of the
/// product, of the administrator and of the user, the later over the earlier.
class ActionsInForce {
public:
    /// The driver's own table.
    ActionsInForce();
    /// Reads the files.
    explicit ActionsInForce(const DesktopSession& session);

    [[nodiscard]] const DesktopAction& actionFor(touch::Gesture gesture, touch::Direction direction) const;
    [[nodiscard]] touch::ActionTable table() const;
    /// The name of the desktop whose files are in force.
    [[nodiscard]] const std::string& desktop() const { return desktop_; }
    /// What of the files counts for nothing, and why.
    [[nodiscard]] const std::vector<std::string>& complaints() const { return complaints_; }

private:
    struct Ways {
        DesktopAction left;
        DesktopAction other;
    };

    void set(touch::Gesture gesture, const DesktopAction& action);
    void takeFile(const std::string& path, const std::vector<std::string>& sections);
    void takeSection(const platform::NSMutableDictionary& section, const std::string& path,
                     const std::vector<std::string>& sections);
    void takeGesture(touch::Gesture gesture, const platform::Value& stored, const std::string& path);

    std::array<Ways, touch::kGestureCount> ways_{};
    std::string desktop_;
    std::vector<std::string> complaints_;
};

/// When each file that says what gestures do was changed last; equal while nobody changes any.
[[nodiscard]] std::vector<std::optional<platform::NSDate>> actionFileDates(const DesktopSession& session);

/// The gesture of that name, "AppExpose" with or without its accent.
[[nodiscard]] std::optional<touch::Gesture> gestureWritten(std::string_view name);

/// The user's own actions.
[[nodiscard]] std::string userActionsPath();

// The form of an action in a file: a dictionary with its "Kind", and what that needs.

/// What a stored action is; a std::runtime_error says why it is none that the gesture can have.
[[nodiscard]] DesktopAction storedActionIn(const platform::Value& stored, touch::Gesture gesture);
[[nodiscard]] platform::NSMutableDictionary storedFormOf(const DesktopAction& action);

/// The keys under which a file has an action for each way.
inline constexpr std::string_view kLeftKey = "Left";
inline constexpr std::string_view kRightKey = "Right";

} // namespace kelvo
