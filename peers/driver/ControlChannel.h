#pragma once

#include "peers/driver/ContactFrame.h"
#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// What a command came to.
struct CommandResult {
    bool succeeded = false;
    /// What to print: the answer, or what is wrong and how to mend it.
    std::string text;
};

/// The running driver's end of its control channel on the session bus: takes commands, one at a time, and gives the raw
/// contacts of a display to whoever watches it.
class ControlChannel {
public:
    /// Who does what is asked. None of them may destroy the channel.
    struct Handlers {
        /// May run the loop; the next command waits for it.
        std::function<CommandResult(const std::vector<std::string>& words)> perform;
        /// From now on frames of this display are asked for, and it is to give nothing else out. A std::runtime_error
        /// says why it cannot be watched.
        std::function<void(const std::string& display)> watchBegan;
        /// The watcher said so, or left the bus.
        std::function<void(const std::string& display)> watchEnded;
    };
    class Server;

    /// Null when another driver runs already or there is no bus.
    static std::unique_ptr<ControlChannel> open(platform::CFRunLoop& loop, Handlers handlers);
    explicit ControlChannel(std::shared_ptr<Server> server);
    ~ControlChannel();

    /// To the watcher of the display alone, if it has one.
    void sendFrame(const std::string& display, const ContactFrame& frame);
    /// The display can be watched no longer: tells its watcher, if it has one. `watchEnded` is not called.
    void refuseWatching(const std::string& display);

private:
    std::shared_ptr<Server> server_;
};

} // namespace kelvo
