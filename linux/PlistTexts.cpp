#include "linux/PlistTexts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace kelvo::plisttexts {

using platform::NSData;
using platform::NSDate;
using platform::Value;

namespace {

/// Property lists count from the start of 2001.
constexpr std::chrono::sys_days kReferenceDate{std::chrono::year(2001) / 1 / 1};
constexpr std::chrono::sys_days kFirstDay{std::chrono::year(1) / 1 / 1};
constexpr std::chrono::sys_days kDayAfterTheLast{std::chrono::year(10000) / 1 / 1};

bool isBlankCharacter(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutBlanksAround(std::string_view text) {
    while (!text.empty() && isBlankCharacter(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlankCharacter(text.back())) text.remove_suffix(1);
    return text;
}

/// Parses all of `text` as a number. std::from_chars accepts neither blanks nor a plus sign.
template <typename Number, typename Format>
std::optional<Number> numberOfAll(std::string_view text, Format format) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number, format);
    return error == std::errc() && next == end ? std::optional(number) : std::nullopt;
}

/// Removes this many digits from the start of `text`.
std::optional<unsigned> takeDigits(std::string_view& text, std::size_t count) {
    const std::string_view digits = text.substr(0, count);
    if (digits.size() < count || !std::all_of(digits.begin(), digits.end(), isDigit)) return std::nullopt;
    text.remove_prefix(count);
    return numberOfAll<unsigned>(digits, 10);
}

/// 64 for an invalid base64 digit.
constexpr std::array<std::uint8_t, 256> sextets() {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> table{};
    table.fill(64);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        table[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    }
    return table;
}

} // namespace

bool isBlank(std::string_view text) { return std::all_of(text.begin(), text.end(), isBlankCharacter); }

std::optional<Value> integer(std::string_view text) {
    text = withoutBlanksAround(text);
    if (text.starts_with("0x") || text.starts_with("0X")) return numberOfAll<std::uint64_t>(text.substr(2), 16);
    if (text.starts_with('-')) return numberOfAll<std::int64_t>(text, 10);
    if (text.starts_with('+')) text.remove_prefix(1);
    return numberOfAll<std::uint64_t>(text, 10);
}

std::optional<double> real(std::string_view text) {
    text = withoutBlanksAround(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    // After "nan", C++ also accepts text in parentheses.
    if (text.ends_with(')')) return std::nullopt;
    return numberOfAll<double>(text, std::chars_format::general);
}

std::optional<NSDate> date(std::string_view text) {
    text = withoutBlanksAround(text);
    const std::optional<unsigned> year = takeDigits(text, 4);
    if (!year || *year == 0) return std::nullopt;
    constexpr std::string_view kSignsBeforeUnits = "--T::";
    std::array<unsigned, kSignsBeforeUnits.size()> units{};
    for (std::size_t i = 0; i < units.size() && text.starts_with(kSignsBeforeUnits[i]); ++i) {
        text.remove_prefix(1);
        const std::optional<unsigned> unit = takeDigits(text, 2);
        if (!unit) return std::nullopt;
        units[i] = *unit;
    }
    const auto [month, day, hour, minute, second] = units;
    const std::chrono::year_month_day calendarDay{std::chrono::year(static_cast<int>(*year)), std::chrono::month(month),
                                                  std::chrono::day(day)};
    if (text != "Z" || !calendarDay.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    const std::chrono::seconds moment = std::chrono::sys_days(calendarDay) - kReferenceDate + std::chrono::hours(hour) +
                                        std::chrono::minutes(minute) + std::chrono::seconds(second);
    return NSDate{static_cast<double>(moment.count())};
}

std::optional<NSData> data(std::string_view text) {
    static constexpr auto kSextets = sextets();
    NSData bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char c : text) {
        if (isBlankCharacter(c)) continue;
        const std::uint8_t sextet = kSextets[static_cast<unsigned char>(c)];
        if (c == '=') {
            ++padding;
        } else if (sextet == 64 || padding > 0) {
            return std::nullopt;
        } else {
            bits = (bits << 6U) | sextet;
            // The first digit of four completes no byte.
            const std::size_t place = digits++ % 4;
            if (place != 0) bytes.push_back(static_cast<std::uint8_t>(bits >> (6 - 2 * place)));
        }
    }
    const std::size_t missing = (4 - digits % 4) % 4;
    return missing == padding && missing < 3 ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string textOf(double real) {
    // NaN has no sign here, although its bits have one.
    if (std::isnan(real)) return "nan";
    std::array<char, 32> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), real);
    return {buffer.data(), end};
}

bool hasText(NSDate date) {
    const double seconds = date.timeIntervalSinceReferenceDate;
    constexpr std::chrono::seconds first = kFirstDay - kReferenceDate;
    constexpr std::chrono::seconds beyond = kDayAfterTheLast - kReferenceDate;
    // NaN is never within bounds.
    return seconds >= static_cast<double>(first.count()) && seconds < static_cast<double>(beyond.count());
}

std::optional<std::string> textOf(NSDate date) {
    if (!hasText(date)) return std::nullopt;
    const std::chrono::sys_seconds moment =
        kReferenceDate + std::chrono::seconds(static_cast<std::int64_t>(date.timeIntervalSinceReferenceDate));
    const auto midnight = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day day(midnight);
    const std::chrono::hh_mm_ss time(moment - midnight);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                        static_cast<int>(time.seconds().count()));
    return text.data();
}

} // namespace kelvo::plisttexts
