#pragma once

#include "platform/PropertyList.h"

namespace kelvo {

/// Property lists: XML read and written, binary ones read. A list is read wholly right or not at all, and what was read
/// can be written again; docs/ARCHITECTURE.md lists what is not the same then.
class PlistCoder final : public platform::PropertyLists {
public:
    /// None for what `xmlOfValue` cannot write, and for nesting deeper than 512.
    [[nodiscard]] std::optional<platform::NSData> createXMLData(const platform::Value& root) override;
    [[nodiscard]] platform::Value createFromXMLData(std::span<const std::uint8_t> data) override;
    /// Nesting deeper than 512 counts as damage.
    [[nodiscard]] platform::Value createFromFileData(std::span<const std::uint8_t> data) override;
};

} // namespace kelvo
