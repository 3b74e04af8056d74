#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// Finds out which processes are behind names on the bus. Nothing waits here.
class BusProcesses {
public:
    /// The process of each name that was asked for, in that order; none for a name that nobody has.
    using Tell = std::function<void(const std::vector<std::optional<std::uint32_t>>& processes)>;

    /// `loop` outlives this object. `address` is the bus to use; when it is empty, the one that the environment names.
    explicit BusProcesses(platform::CFRunLoop& loop, std::string address = {});
    ~BusProcesses();
    BusProcesses(const BusProcesses&) = delete;
    BusProcesses& operator=(const BusProcesses&) = delete;

    /// Calls `tell` once, later or at once; it may do as it likes. Without a bus nobody has a name. What is still to be
    /// told when this object goes is not told.
    void ask(const std::vector<std::string>& names, Tell tell);

private:
    struct Question;

    static int onAnswer(sd_bus_message* answer, void* name, sd_bus_error* error) noexcept;

    [[nodiscard]] bool connect();
    [[nodiscard]] bool send(Question& question);
    void tellWhatIsKnown();

    platform::CFRunLoop& loop_;
    std::string address_;
    std::shared_ptr<BusConnection> connection_;
    std::list<Question> questions_;
};

} // namespace kelvo
