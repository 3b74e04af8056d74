#pragma once

#include "linux/Descriptor.h"
#include "platform/RunLoop.h"

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// A program that is run for what it prints. Nothing here waits.
class CommandOutput {
public:
    /// Calls `tell` once with all that it printed, which is empty where it cannot be run. That may destroy this object.
    /// The loop outlives it. `words` are the program, which is looked for where a shell would, and its arguments.
    CommandOutput(platform::CFRunLoop& loop, std::vector<std::string> words,
                  std::function<void(const std::string& text)> tell);
    /// Ends it, if it has not ended yet.
    ~CommandOutput();
    CommandOutput(const CommandOutput&) = delete;
    CommandOutput& operator=(const CommandOutput&) = delete;

private:
    void read();
    void finish();
    void end();

    std::function<void(const std::string& text)> tell_;
    std::string text_;
    pid_t process_ = -1;
    Descriptor output_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::shared_ptr<platform::NSTimer> failure_;
};

} // namespace kelvo
