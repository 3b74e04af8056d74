#pragma once

#include "platform/PropertyList.h"

namespace kelvo {

/// Property lists through libplist.
///
/// What cannot be carried: fractions of a second, dates outside the years 0 to 9999, a negative zero, and NUL in a
/// text, which ends the text on the way in and makes the whole list unencodable on the way out.
class PlistCoder final : public platform::PropertyLists {
public:
    /// None for a missing value, for a text with NUL, for a date out of range, and for nesting deeper than 512.
    [[nodiscard]] std::optional<platform::NSData> createXMLData(const platform::Value& root) override;
    [[nodiscard]] platform::Value createFromXMLData(std::span<const std::uint8_t> data) override;
    /// Nesting deeper than 512 counts as damage. A unique identifier, which only the binary format knows, becomes the
    /// dictionary { CF$UID = number; } that stands for it in XML.
    [[nodiscard]] platform::Value createFromFileData(std::span<const std::uint8_t> data) override;
};

} // namespace kelvo
