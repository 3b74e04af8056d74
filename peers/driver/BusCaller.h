#pragma once

#include "linux/BusConnection.h"
#include "peers/actions/ActionsInForce.h"
#include "platform/RunLoop.h"

#include <memory>
#include <string>

namespace kelvo {

/// Makes calls on the session bus for which nobody waits. What cannot be called goes into the log.
class BusCaller {
public:
    /// `loop` outlives this object. `address` is the bus to use; when it is empty, the one that the environment names.
    explicit BusCaller(platform::CFRunLoop& loop, std::string address = {});
    BusCaller(const BusCaller&) = delete;
    BusCaller& operator=(const BusCaller&) = delete;

    /// Whoever has the service is started for it.
    void call(const BusCall& call);

private:
    [[nodiscard]] bool connect();

    platform::CFRunLoop& loop_;
    std::string address_;
    std::shared_ptr<BusConnection> connection_;
};

} // namespace kelvo
