#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// The control channel of a driver on the session bus, beside its message port: `kPerformMethod` of `kDriverName` at
/// `kDriverPath` takes a command's words and answers whether it was done, and what there is to say.
inline constexpr const char* kDriverName = "com.kelvo.TouchDisplay.Driver";
inline constexpr const char* kDriverPath = "/com/kelvo/TouchDisplay/Driver";
inline constexpr const char* kPerformMethod = "Perform";
inline constexpr const char* kPerformSignature = "as";
inline constexpr const char* kPerformedSignature = "bs";

/// What a command to the driver came to.
struct DriverAnswer {
    enum class Outcome { Done, Refused, NoBus, NotRunning, NotAnswering };

    Outcome outcome = Outcome::NotAnswering;
    /// What the driver said: the answer, or what is wrong and how to mend it. Empty where no driver said anything.
    std::string text;
};

/// Has the running driver perform one command after the other. Nothing waits here.
class DriverCommand {
public:
    /// `loop` outlives this object. `address` is the bus to use; when it is empty, the one that the environment names.
    explicit DriverCommand(platform::CFRunLoop& loop, std::string address = {});
    ~DriverCommand();
    DriverCommand(const DriverCommand&) = delete;
    DriverCommand& operator=(const DriverCommand&) = delete;

    /// Calls `tell` once, within five seconds; a command tells the pane, which may take its two time-outs. Another
    /// command takes the place of one that is still to be answered: that one is carried out, but tells nothing.
    void perform(const std::vector<std::string>& words, std::function<void(const DriverAnswer&)> tell);

private:
    static int onReply(sd_bus_message* reply, void* command, sd_bus_error* error) noexcept;

    [[nodiscard]] bool call(const std::vector<std::string>& words);
    void tellWhenKnown();
    void finish(const DriverAnswer& answer);
    void forget();

    platform::CFRunLoop& loop_;
    std::string address_;
    std::function<void(const DriverAnswer&)> tell_;
    std::shared_ptr<BusConnection> connection_;
    BusSlot slot_;
    std::shared_ptr<platform::NSTimer> deadline_;
    std::optional<DriverAnswer> answer_;
};

/// Performs one command and waits for the answer, running the loop meanwhile.
[[nodiscard]] DriverAnswer performAndWait(platform::CFRunLoop& loop, const std::vector<std::string>& words);

} // namespace kelvo
