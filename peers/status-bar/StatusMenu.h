#pragma once

#include "peers/PortProbe.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kelvo {

/// What the utility's menu says and does, for whoever shows it.
class StatusMenu {
public:
    /// One line. Without a title it is a separator; without an action it is there to be read.
    struct Item {
        std::string title;
        std::function<void()> choose;
    };
    /// What choosing a line comes to, and where the driver's state comes from.
    struct Deeds {
        std::function<void(std::int32_t tab)> openPaneAtTab;
        std::function<void()> quit;
        /// Calls `tell` once, later or at once.
        std::function<void(std::function<void(PortAnswer)> tell)> askDriver;
    };

    explicit StatusMenu(Deeds deeds);

    /// The lines from top to bottom. Their number and actions never change; their titles may while it is open.
    [[nodiscard]] std::vector<Item> items() const;
    /// The menu is about to open: finds out how the driver does, and calls `changed` after each change of a title.
    void open(const std::function<void()>& changed);

private:
    Deeds deeds_;
    std::string driverTitle_;
};

} // namespace kelvo
