#pragma once

#include <cstdint>

namespace platform {

/// The four-character code 'sysv': the version of the operating system as a binary-coded decimal, 0x1068 for 10.6.8.
inline constexpr std::uint32_t gestaltSystemVersion = 0x73797376;

/// What the host says of itself.
class SystemVersion {
public:
    SystemVersion() = default;
    SystemVersion(const SystemVersion&) = delete;
    SystemVersion& operator=(const SystemVersion&) = delete;
    virtual ~SystemVersion();

    /// The answer to `selector`; 0 when it is unknown.
    [[nodiscard]] virtual std::int32_t gestalt(std::uint32_t selector) = 0;
};

/// The answer of the current platform.
[[nodiscard]] std::int32_t Gestalt(std::uint32_t selector);

} // namespace platform
