#pragma once

#include "peers/driver/DriverCore.h"

#include <functional>
#include <string>
#include <vector>

namespace kelvo {

/// A driver whose displays are names: they come and go by command, and nobody touches them.
class DriverSimulator : public Displays {
public:
    /// `printLine` gets each message received as one line of JSON.
    explicit DriverSimulator(std::function<void(const std::string&)> printLine);

    [[nodiscard]] DriverCore& core() { return core_; }

    void setSettings(const std::string& name, const platform::NSMutableDictionary& settings) override;
    void forget(const std::string& name) override;
    void setDriverEnabled(bool isEnabled) override;
    void setWatched(const std::string& name, bool isWatched) override;
    void beginRecording(const std::string& name, const std::string& path) override;
    void endRecording(const std::string& name) override;

private:
    [[nodiscard]] std::vector<ControlCommand> ownCommands();
    void layFingers(const std::string& name, const std::vector<std::string>& places);

    DriverCore core_;
};

} // namespace kelvo
