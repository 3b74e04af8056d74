#pragma once

#include "peers/PortProbe.h"
#include "peers/touchctl/Report.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::touchctl {

/// What there is between a touch display and its driver, as far as this user can see it.
struct TouchHardware {
    /// A display that is plugged in.
    struct Screen {
        std::string node;
        std::string seat;
        /// Whether this user's session is the active one on the seat.
        bool isAtActiveSession = false;
        /// Whether this user may open it without the service.
        bool isPermitted = false;
        /// The programs that have it open, "NAME (PROCESS)", but for our own.
        std::vector<std::string> users;
    };
    /// What the real driver says of its displays. Those that are not used have the reason, and how to mend it.
    struct Driver {
        std::map<std::string, std::string> displays;
        std::map<std::string, std::string> refused;
        /// Those that are set to a slower double click than the desktop's, with the command that lengthens that.
        std::map<std::string, std::string> slowDoubleClick;
    };
    /// What the service manager says of the driver's unit.
    struct Unit {
        std::string result;
        std::uint32_t restarts = 0;
    };
    enum class Service { Installed, Missing, NoBus };

    /// None where the system does not say.
    std::optional<std::vector<Screen>> screens;
    bool hasUinput = false;
    Service service = Service::Missing;
    /// Another driver answers, which has displays in its own way.
    bool hasOtherDriver = false;
    std::optional<Driver> driver;
    std::optional<Unit> unit;
};

/// As it is at the moment. `driver` is what the driver's port did when it was called.
[[nodiscard]] TouchHardware touchHardware(PortAnswer driver);

/// Writes what there is to say of it.
void reportTouchHardware(Report& report, const TouchHardware& hardware);

} // namespace kelvo::touchctl
