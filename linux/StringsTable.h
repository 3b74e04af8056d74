#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

/// The texts of one language: a table of entries `"key" = "value";` with comments like those of C between them. A key
/// that is a plain word may stand without quotes.
class StringsTable {
public:
    StringsTable() = default;
    /// Reads UTF-8, or UTF-16 that begins with a byte order mark. Of a damaged table, the entries before the damage; of
    /// two entries with one key, the later.
    explicit StringsTable(std::span<const std::uint8_t> data);

    /// The text of `key`; none when the table has no such entry.
    [[nodiscard]] std::optional<std::string> textForKey(std::string_view key) const;

private:
    std::map<std::string, std::string, std::less<>> texts_;
};

} // namespace kelvo
