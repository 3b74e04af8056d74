#pragma once

#include "peers/status-bar/StatusIcon.h"
#include "platform/MessagePorts.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace kelvo {

/// To the status-bar utility, from a second start of it alone: show the icon. "HasPlace" boolean, whether the sender, a
/// new process, sees a place for it.
inline constexpr std::int32_t kMessageIDForShowingIcon = 100;
inline constexpr std::string_view kHasPlaceKey = "HasPlace";

/// What the status-bar utility does: owns its message port for as long as it lives, which makes it the only one of its
/// user, and shows and hides its icon.
class StatusBarUtility {
public:
    /// Who starts it: the pane or a person, who want to see the icon, or the session, which asks the utilities file.
    enum class Occasion { Launch, SessionStart };
    enum class Start {
        IsFirst,
        /// Another one has the port, and shows its icon if this one would have. Where this one would not, it was not
        /// asked, and may be nobody.
        OtherRuns,
        /// Another one has the port but does not answer.
        OtherIsHung,
        /// Nobody has the port, and still it cannot be had: there is no session bus.
        NoPort,
    };

    /// `icon` is hidden at first and outlives this object. `startAnew` replaces the process by a new one that shows its
    /// icon; it returns only when that fails.
    StatusBarUtility(StatusIcon& icon, std::function<void()> startAnew);
    ~StatusBarUtility();
    StatusBarUtility(const StatusBarUtility&) = delete;
    StatusBarUtility& operator=(const StatusBarUtility&) = delete;

    /// Takes the port, or tells whoever has it. Waits 6 seconds at most, in which the loop runs.
    [[nodiscard]] Start start(Occasion occasion);
    /// A place for icons has come: an icon that was wanted and had none is shown there.
    void takePlace();
    /// Whether another one has answered, and so is known to be there.
    [[nodiscard]] bool hasHeardFromOther() const { return hasHeardFromOther_; }
    /// The user has done with the menu: from now on it is off, as the pane's check box then says, and a pane that shows
    /// the one display there is says so at once.
    void switchOff();

private:
    [[nodiscard]] bool openPort();
    [[nodiscard]] Start askOtherToShowIcon();
    void receive(std::int32_t messageId, std::span<const std::uint8_t> data);
    void showIconInNewPlace();
    void showIcon();
    void hideIcon();
    void logChange(std::string_view change);

    StatusIcon& icon_;
    std::function<void()> startAnew_;
    std::unique_ptr<platform::CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
    std::string_view lastChange_;
    bool isWaitingForPlace_ = false;
    bool hasMissedTray_ = false;
    bool hasHeardFromOther_ = false;
};

} // namespace kelvo
