#pragma once

#include "linux/BusService.h"
#include "platform/RunLoop.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>

namespace support {

/// Stands in for polkit: says what the test says, and keeps what it was asked.
class FakePolkit {
public:
    FakePolkit(platform::CFRunLoop& loop, const std::string& address)
        : service_(std::make_shared<kelvo::BusService>(loop, address,
                                                       kelvo::BusService::Offer{"org.freedesktop.PolicyKit1",
                                                                                "/org/freedesktop/PolicyKit1/Authority",
                                                                                "org.freedesktop.PolicyKit1.Authority",
                                                                                vtable,
                                                                                this,
                                                                                {}})) {}

    [[nodiscard]] bool open() { return service_->open(); }

    bool isWilling = true;
    std::string subject;
    std::string action;
    std::uint32_t flags = 99;

private:
    static int onCheck(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
        auto& polkit = *static_cast<FakePolkit*>(self);
        const char* kind = nullptr;
        const char* key = nullptr;
        const char* name = nullptr;
        const char* action = nullptr;
        sd_bus_message_enter_container(call, 'r', "sa{sv}");
        sd_bus_message_read(call, "s", &kind);
        sd_bus_message_enter_container(call, 'a', "{sv}");
        sd_bus_message_enter_container(call, 'e', "sv");
        sd_bus_message_read(call, "sv", &key, "s", &name);
        sd_bus_message_exit_container(call);
        sd_bus_message_exit_container(call);
        sd_bus_message_exit_container(call);
        sd_bus_message_read(call, "s", &action);
        sd_bus_message_skip(call, "a{ss}");
        sd_bus_message_read(call, "u", &polkit.flags);
        polkit.subject = std::string(kind) + " " + key + " " + name;
        polkit.action = action;
        return sd_bus_reply_method_return(call, "(bba{ss})", polkit.isWilling ? 1 : 0, 0, 0);
    }

    static inline const sd_bus_vtable vtable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})", onCheck, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };

    std::shared_ptr<kelvo::BusService> service_;
};

} // namespace support
