#include "linux/XSettings.h"

#include "linux/Trimmed.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace kelvo {

namespace {

// The types of settings.
constexpr std::uint8_t kInteger = 0;
constexpr std::uint8_t kString = 1;
constexpr std::uint8_t kColour = 2;

/// Reads the bytes of the property; past the end, everything is 0.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), isBigEndian_(!bytes.empty() && bytes[0] == 1) {}

    [[nodiscard]] std::uint32_t number(std::size_t size) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::uint32_t byte = place_ + i < bytes_.size() ? bytes_[place_ + i] : 0U;
            const std::size_t shift = isBigEndian_ ? size - 1 - i : i;
            value |= byte << (8 * shift);
        }
        skip(size);
        return value;
    }
    [[nodiscard]] std::string_view text(std::size_t size) {
        if (size > left()) {
            place_ = bytes_.size() + 1;
            return {};
        }
        const std::string_view read(reinterpret_cast<const char*>(bytes_.data()) + place_, size);
        skip(padded(size));
        return read;
    }
    void skip(std::size_t size) { place_ += size; }
    [[nodiscard]] bool isWhole() const { return place_ <= bytes_.size(); }

    [[nodiscard]] static std::size_t padded(std::size_t size) { return (size + 3) / 4 * 4; }

private:
    [[nodiscard]] std::size_t left() const { return place_ < bytes_.size() ? bytes_.size() - place_ : 0; }

    std::span<const std::uint8_t> bytes_;
    std::size_t place_ = 0;
    bool isBigEndian_;
};

std::optional<std::int32_t> numberIn(std::string_view text) {
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

} // namespace

std::optional<std::int32_t> xSetting(std::span<const std::uint8_t> settings, std::string_view name) {
    Reader reader(settings);
    // The byte order and the serial number.
    reader.skip(8);
    for (std::uint32_t count = reader.number(4); count > 0 && reader.isWhole(); --count) {
        const auto kind = static_cast<std::uint8_t>(reader.number(1));
        reader.skip(1);
        const std::string_view found = reader.text(reader.number(2));
        reader.skip(4);
        if (kind == kInteger) {
            const auto value = static_cast<std::int32_t>(reader.number(4));
            if (found == name && reader.isWhole()) return value;
        } else if (kind == kString) {
            (void)reader.text(reader.number(4));
        } else if (kind == kColour) {
            reader.skip(8);
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::int32_t> xResource(std::string_view database, std::string_view component) {
    std::optional<std::int32_t> value;
    while (!database.empty()) {
        const std::size_t end = std::min(database.find('\n'), database.size());
        const std::string_view line = database.substr(0, end);
        database.remove_prefix(std::min(end + 1, database.size()));
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) continue;
        const std::string_view key = trimmed(line.substr(0, colon));
        const bool isMeant = key.ends_with(component) &&
                             (key.size() == component.size() || key[key.size() - component.size() - 1] == '*' ||
                              key[key.size() - component.size() - 1] == '.');
        if (isMeant) value = numberIn(trimmed(line.substr(colon + 1)));
    }
    return value;
}

} // namespace kelvo
