#pragma once

#include "peers/PortProbe.h"
#include "platform/NSObject.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// What the utility's menu says and does, for whoever shows it.
class StatusMenu : public platform::NSObject {
public:
    /// One line. Without an action it is there to be read.
    struct Item {
        std::string title;
        std::function<void()> choose;
        bool isSeparator = false;
        /// Whether there is anything to be read now.
        bool isShown = true;
        /// Whether it is ticked, of a line that is a switch.
        std::optional<bool> isTicked = {};
        /// Whether it can be chosen now, if it has an action at all.
        bool isOffered = true;
    };
    /// What choosing a line comes to, and where the driver's state comes from.
    struct Deeds {
        std::function<void(std::int32_t tab)> openPaneAtTab;
        /// Shows what gestures do on this desktop.
        std::function<void()> showGestures;
        std::function<void()> calibrate;
        std::function<void()> quit;
        /// Calls `tell` once, later or at once.
        std::function<void(std::function<void(PortAnswer)> tell)> askDriver;
        /// Has the driver switch itself on or off, and calls `done` once, later or at once, however that ended.
        std::function<void(bool isOn, std::function<void()> done)> switchDriver;
        /// From now on refresh() is called when the driver comes or goes.
        std::function<void()> watchDriver;
    };

    explicit StatusMenu(Deeds deeds);
    ~StatusMenu() override;
    StatusMenu(const StatusMenu&) = delete;
    StatusMenu& operator=(const StatusMenu&) = delete;

    /// The lines from top to bottom. Their number and actions never change; their titles, ticks and
    /// whether they are shown and offered may while it is open.
    [[nodiscard]] std::vector<Item> items();
    /// What to do about a driver that settings do not reach; empty while all is well, as far as is known.
    [[nodiscard]] const std::string& advice() const { return advice_; }

    /// The menu or its icon is about to be seen: finds out how the driver does, now and whenever it comes or goes, and
    /// calls `changed` after each change of what the menu says.
    void open(std::function<void()> changed);
    /// Finds out again. A driver that does not answer is looked at once more after a while: it may only have been slow.
    void refresh();

private:
    void tell(PortAnswer answer);

    Deeds deeds_;
    std::function<void()> changed_;
    /// As the pane reads the file.
    bool isDriverOn_ = false;
    bool isDriverThere_ = true;
    std::string displayName_;
    std::string driverTitle_;
    std::string advice_;
    std::shared_ptr<platform::NSTimer> nextLook_;
};

} // namespace kelvo
