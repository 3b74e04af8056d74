#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

/// How the XML form of property lists spells what is no text. What is not spelt so, or is no value of ours, is none;
/// blanks around a spelling are no part of it.
namespace kelvo::plisttexts {

[[nodiscard]] bool isBlank(std::string_view text);

/// Decimal, or hexadecimal behind "0x", from -2^63 to 2^64 - 1.
[[nodiscard]] std::optional<platform::Value> integer(std::string_view text);
/// Also infinite, or none ("nan"). A number that no real holds, as 1e400, is not the nearest that one does.
[[nodiscard]] std::optional<double> real(std::string_view text);
/// YYYY-MM-DDTHH:MM:SSZ of the years 1 to 9999, with its smaller units left out at will down to the day.
[[nodiscard]] std::optional<platform::NSDate> date(std::string_view text);
/// Base 64 with its padding, among blanks.
[[nodiscard]] std::optional<platform::NSData> data(std::string_view text);

/// The shortest that reads back.
[[nodiscard]] std::string textOf(double real);
/// Without the fraction of its second; none outside of the years 1 to 9999.
[[nodiscard]] std::optional<std::string> textOf(platform::NSDate date);
/// Whether `date` lies in the years 1 to 9999, which have a spelling.
[[nodiscard]] bool hasText(platform::NSDate date);

} // namespace kelvo::plisttexts
