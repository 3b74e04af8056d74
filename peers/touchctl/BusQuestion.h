#pragma once

#include "linux/BusService.h"

#include <string>
#include <vector>

namespace kelvo::touchctl {

/// A call whose arguments are texts.
struct BusCall {
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    std::vector<std::string> arguments;
};

/// The answer to a call on the bus at `address`, or on the user's own where that is empty. Null where there is no such
/// bus, an error came, or no answer within two seconds. Nothing is started to answer.
[[nodiscard]] BusMessage answerOf(const std::string& address, const BusCall& call);

} // namespace kelvo::touchctl
