#pragma once

#include "peers/driver/ContactFrame.h"
#include "peers/driver/DisplayTimer.h"
#include "peers/driver/OutputPrinter.h"
#include "touch/TouchDisplay.h"

#include <functional>
#include <string>
#include <vector>

namespace kelvo {

/// A display of 24 inches without a panel: its fingers are made up, and what they come to is printed. Timeouts come
/// when they are due.
class SimulatedDisplay {
public:
    SimulatedDisplay(const std::string& name, std::function<void(const std::string&)> printLine);
    ~SimulatedDisplay();
    SimulatedDisplay(const SimulatedDisplay&) = delete;
    SimulatedDisplay& operator=(const SimulatedDisplay&) = delete;

    void setSettings(const touch::Settings& settings) { display_.setSettings(settings); }
    /// Whether fingers lead to anything. What is down is lifted either way.
    void setGiving(bool isGiving);

    /// These contacts, now.
    [[nodiscard]] static ContactFrame frameOf(std::vector<ContactFrame::Contact> contacts);
    void see(const ContactFrame& frame);
    [[nodiscard]] bool hasFingers() const { return hasFingers_; }

private:
    OutputPrinter printer_;
    touch::TouchDisplay display_;
    DisplayTimer timer_{display_};
    bool hasFingers_ = false;
};

} // namespace kelvo
