#pragma once

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

/// The running simulator's end of its command line: takes commands over the session bus, one at a time.
class ControlChannel {
public:
    using Perform = std::function<CommandResult(const std::vector<std::string>& words)>;
    class Server;

    /// `perform` may run the loop; the next command waits for it. Null when another simulator runs already or there is
    /// no bus.
    static std::unique_ptr<ControlChannel> open(platform::CFRunLoop& loop, Perform perform);
    explicit ControlChannel(std::shared_ptr<Server> server);
    ~ControlChannel();

private:
    std::shared_ptr<Server> server_;
};

/// Has the running simulator perform a command, and waits for it. Fails when none runs or it does not answer.
[[nodiscard]] CommandResult sendCommand(const std::vector<std::string>& words);

} // namespace kelvo
