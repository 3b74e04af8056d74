#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"
#include "touch/Frame.h"
#include "touch/Units.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// The raw contacts of a display, from the running driver; while this lives, the display gives nothing else out.
class DisplayWatch {
public:
    /// Why there are no more contacts.
    enum class End { NoBus, NoDriver, Refused, DisplayGone };
    struct Handlers {
        /// From now on contacts come.
        std::function<void()> began;
        /// `glass` is in millimetres, 0 where the driver does not know it.
        std::function<void(const touch::Frame& frame, touch::Size glass)> seen;
        /// Comes once, and last; it may destroy the watch. `text` is what the driver said, if anything.
        std::function<void(End end, const std::string& text)> ended;
    };

    /// `loop` outlives this object. `address` is the bus to use; when it is empty, the one that the environment names.
    DisplayWatch(platform::CFRunLoop& loop, std::string display, Handlers handlers, std::string address = {});
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;
    ~DisplayWatch();

    /// Begins to ask; nothing waits here.
    void begin();

private:
    struct Seen {
        touch::Frame frame;
        touch::Size glass;
    };
    struct Ending {
        End end;
        std::string text;
    };

    static int onAnswer(sd_bus_message* answer, void* watch, sd_bus_error* error) noexcept;
    static int onMessage(sd_bus_message* message, void* watch, sd_bus_error* error) noexcept;

    [[nodiscard]] bool ask();
    void take(sd_bus_message* message);
    void tell();

    platform::CFRunLoop& loop_;
    std::string display_;
    Handlers handlers_;
    std::string address_;
    std::shared_ptr<BusConnection> connection_;
    BusSlot call_;
    BusSlot filter_;
    BusSlot departure_;
    // What came, to be told outside of sd-bus.
    bool hasBegun_ = false;
    std::vector<Seen> seen_;
    std::optional<Ending> ending_;
    std::shared_ptr<platform::NSTimer> patience_;
};

} // namespace kelvo
