#pragma once

#include "platform/MessagePorts.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

/// Stands in for the driver process: owns its message port, keeps the device list and the driver's flag in the
/// utilities file, stores what the pane sends into the settings file of the device it is for, and tells the pane of
/// each change.
class DriverSimulator {
public:
    /// `printLine` gets each message received as one line of JSON.
    explicit DriverSimulator(std::function<void(const std::string&)> printLine);

    /// Takes the port, and begins with no display connected, whatever an earlier driver left in the utilities file.
    /// False when another driver has the port or there is no bus.
    [[nodiscard]] bool start();
    /// Disconnects every display, as the end of a driver does.
    void stop();

    // Each of these makes its change and tells the pane. What cannot be done is a std::runtime_error that names the
    // fix.

    /// Connects a display, whose settings file is made first.
    void connect(const std::string& name);
    void disconnect(const std::string& name);
    void setDriverEnabled(bool enabled);
    /// Asks the pane to show a tab.
    void showTab(std::int64_t index);

    /// The state as one line of JSON.
    [[nodiscard]] std::string status() const;

private:
    void receive(std::int32_t messageId, std::span<const std::uint8_t> data);
    void store(const platform::NSMutableDictionary& payload) const;
    [[nodiscard]] bool isConnected(const std::string& name) const;
    void saveState() const;
    void tellOfDisconnection() const;
    void tellPane(std::int32_t messageId, const platform::NSMutableDictionary& payload) const;
    [[nodiscard]] platform::NSMutableArray deviceList() const;

    std::function<void(const std::string&)> printLine_;
    std::vector<std::string> devices_;
    bool isDriverEnabled_ = true;
    std::unique_ptr<platform::CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
};

} // namespace kelvo
