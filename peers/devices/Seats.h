#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace kelvo {

/// Who sits where.
class Seats {
public:
    Seats() = default;
    Seats(const Seats&) = delete;
    Seats& operator=(const Seats&) = delete;
    virtual ~Seats() = default;

    /// The user whose session is active on the seat; none where that is no user's session, or a remote one.
    [[nodiscard]] virtual std::optional<uid_t> activeUser(const std::string& seat) const = 0;
};

} // namespace kelvo
