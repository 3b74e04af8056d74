#pragma once

#include "linux/PlistCoder.h"

#include <map>

namespace support {

/// The real coder, which reads each text once: the pane reads its few small files again and again, and that would be
/// most of the time of a run without a system. Whoever reads gets a value of his own.
class RememberingCoder final : public platform::PropertyLists {
public:
    [[nodiscard]] std::optional<platform::NSData> createXMLData(const platform::Value& root) override;
    [[nodiscard]] platform::Value createFromXMLData(std::span<const std::uint8_t> data) override;
    [[nodiscard]] platform::Value createFromFileData(std::span<const std::uint8_t> data) override;

private:
    using Read = std::map<platform::NSData, platform::Value>;
    using Reader = platform::Value (kelvo::PlistCoder::*)(std::span<const std::uint8_t> data);

    [[nodiscard]] platform::Value remembered(Read& read, std::span<const std::uint8_t> data, Reader reader);

    kelvo::PlistCoder coder_;
    Read messages_;
    Read files_;
};

} // namespace support
