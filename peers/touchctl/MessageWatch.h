#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo::touchctl {

/// Looks on as messages pass between the product's ports, whoever sends them; takes none and sends none.
class MessageWatch {
public:
    /// Calls `tell` with one line of JSON for each message, for each port that is open, and for each that opens or
    /// closes; `lost` when the bus goes away. Null when there is no bus or it lets nobody look on.
    [[nodiscard]] static std::unique_ptr<MessageWatch>
    open(platform::CFRunLoop& loop, std::function<void(const std::string& line)> tell, std::function<void()> lost);

    MessageWatch(Bus bus, std::function<void(const std::string& line)> tell, std::function<void()> lost);
    MessageWatch(const MessageWatch&) = delete;
    MessageWatch& operator=(const MessageWatch&) = delete;
    ~MessageWatch();

private:
    void learnOwners(sd_bus* bus);
    void tellOpenPorts();
    void read();
    [[nodiscard]] std::string lineOf(sd_bus_message* message);
    [[nodiscard]] std::string portAt(std::string_view destination) const;
    [[nodiscard]] std::string lineOfChange(sd_bus_message* message);

    Bus bus_;
    std::function<void(const std::string& line)> tell_;
    std::function<void()> lost_;
    /// A message may be addressed to the connection that has a port, or several, instead of to the port.
    std::map<std::string, std::string> ownersOfPorts_;
    /// Goes before the connection that it watches.
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::shared_ptr<platform::NSTimer> firstRead_;
};

} // namespace kelvo::touchctl
