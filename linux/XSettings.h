#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

/// The number of that name among the settings that a desktop gives to X clients, as they stand in the property of its
/// settings manager. None where it is not there, is no number, or the property ends before it should.
[[nodiscard]] std::optional<std::int32_t> xSetting(std::span<const std::uint8_t> settings, std::string_view name);

/// The number that a resource of that last component has in X's resource database, a line "*COMPONENT: VALUE" each.
[[nodiscard]] std::optional<std::int32_t> xResource(std::string_view database, std::string_view component);

} // namespace kelvo
