#pragma once

#include "peers/driver/DriverCore.h"
#include "peers/driver/SimulatedDisplay.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// A driver whose displays are names: they come and go by command, and so do the fingers on them. What these come to is
/// printed, for want of devices to give it to.
class DriverSimulator : public Displays {
public:
    /// `printLine` gets each message received, and each step that would be given out, as one line of JSON.
    explicit DriverSimulator(std::function<void(const std::string&)> printLine);

    [[nodiscard]] DriverCore& core() { return core_; }

    void setSettings(const std::string& name, const touch::Settings& settings) override;
    /// Prints by the driver's own table, so that it says the same on every desktop.
    void setActions(const ActionsInForce& /*actions*/) override {}
    void forget(const std::string& name) override;
    void setDriverEnabled(bool isEnabled) override;
    void setWatched(const std::string& name, bool isWatched) override;
    [[nodiscard]] bool isActive(const std::string& name) const override { return displays_.contains(name); }
    void beginRecording(const std::string& name, const std::string& path) override;
    void endRecording(const std::string& name) override;

private:
    [[nodiscard]] std::vector<ControlCommand> ownCommands();
    void layFingers(const std::string& name, const std::vector<std::string>& places);

    std::function<void(const std::string&)> printLine_;
    bool isDriverEnabled_ = true;
    std::map<std::string, std::unique_ptr<SimulatedDisplay>> displays_;
    DriverCore core_;
};

} // namespace kelvo
