#include "support/RememberingCoder.h"

namespace support {

using platform::NSData;
using platform::Value;

namespace {

Value copyOf(const Value& value) {
    if (const auto array = value.array()) {
        auto copy = platform::NSMutableArray::arrayWithCapacity(array.count());
        for (const Value& each : array.objects()) copy.addObject(copyOf(each));
        return copy;
    }
    if (const auto dictionary = value.dictionary()) {
        auto copy = platform::NSMutableDictionary::dictionaryWithCapacity(dictionary.count());
        for (const auto& [key, each] : dictionary.entries()) copy.setObjectForKey(copyOf(each), key);
        return copy;
    }
    return value;
}

} // namespace

std::optional<NSData> RememberingCoder::createXMLData(const Value& root) { return coder_.createXMLData(root); }

Value RememberingCoder::createFromXMLData(std::span<const std::uint8_t> data) {
    return remembered(messages_, data, &kelvo::PlistCoder::createFromXMLData);
}

Value RememberingCoder::createFromFileData(std::span<const std::uint8_t> data) {
    return remembered(files_, data, &kelvo::PlistCoder::createFromFileData);
}

Value RememberingCoder::remembered(Read& read, std::span<const std::uint8_t> data, Reader reader) {
    NSData text(data.begin(), data.end());
    auto known = read.find(text);
    if (known == read.end()) known = read.emplace(std::move(text), (coder_.*reader)(data)).first;
    return copyOf(known->second);
}

} // namespace support
