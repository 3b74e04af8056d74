#pragma once

#include "linux/Descriptor.h"
#include "linux/TouchScreenMonitor.h"
#include "linux/VirtualDevices.h"
#include "peers/devices/Hardware.h"
#include "peers/devices/Seats.h"

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

/// Why a display is not handed out.
class Refusal : public std::runtime_error {
public:
    enum class Reason { NoSuchDisplay, NotActive, NotAuthorised, Busy, Failed };

    Refusal(Reason reason, const std::string& text) : std::runtime_error(text), reason_(reason) {}
    [[nodiscard]] Reason reason() const { return reason_; }

private:
    Reason reason_;
};

/// Knows which displays there are and who has them, and takes them away again. A display has one holder at a time, who
/// is a program of the user that is active on the display's seat.
class DeviceKeeper {
public:
    using Id = std::uint32_t;
    struct Handlers {
        /// A display can be had: it has come, or its holder has gone, or another user is active where it is.
        std::function<void(Id id, const std::string& name)> added;
        std::function<void(Id id)> removed;
        /// It was taken from its holder, who is still there.
        std::function<void(Id id, const std::string& holder)> revoked;
    };
    /// Open files to hand out; the keeper's own, good until its next call.
    struct Files {
        const Descriptor& display;
        const VirtualNodes& devices;
    };

    /// `hardware` and `seats` outlive the keeper.
    DeviceKeeper(Hardware& hardware, const Seats& seats, Handlers handlers);

    void come(const TouchScreen& screen);
    void go(const std::string& node);
    [[nodiscard]] std::vector<std::pair<Id, std::string>> displays() const;

    /// A Refusal unless the display may be handed out to this user now.
    void check(Id id, uid_t user) const;
    /// Hands it out to `caller`, a program of this user; else a Refusal.
    [[nodiscard]] Files open(Id id, const std::string& caller, uid_t user);
    /// Takes back whatever that program has.
    void leave(const std::string& caller);
    /// Takes back whatever anybody has.
    void leaveAll();
    /// Somebody else may be active on a seat.
    void seatsChanged();

private:
    struct Holding {
        std::string holder;
        uid_t user = 0;
        Descriptor file;
        VirtualNodes nodes;
    };
    struct Display {
        Id id = 0;
        TouchScreen screen;
        std::optional<uid_t> activeUser;
        /// Made for the first holder, and anew when something is taken back.
        touch::PanelDescription panel;
        std::unique_ptr<Hardware::Devices> devices;
        std::optional<Holding> holding;
    };

    [[nodiscard]] const Display& displayWith(Id id) const;
    [[nodiscard]] std::string placeOf(const Display& display) const;
    void hold(Display& display, const std::string& caller, uid_t user);
    void makeDevicesAnew(Display& display);
    void takeBack(Display& display);
    void takeBackAll(const std::function<bool(const Holding& holding)>& isMeant);

    Hardware& hardware_;
    const Seats& seats_;
    Handlers handlers_;
    std::vector<Display> displays_;
    Id nextId_ = 1;
};

/// What a display's open file is called where it is stored.
[[nodiscard]] std::string storedNameOf(DeviceKeeper::Id id);

} // namespace kelvo
