#include "linux/PlistCoder.h"

#include "linux/BinaryPlist.h"
#include "linux/BinaryPlistCheck.h"
#include "linux/XMLPlistReader.h"
#include "linux/XMLPlistWriter.h"

namespace kelvo {

using platform::NSData;
using platform::Value;

namespace {

constexpr std::size_t kLargestMessage = std::size_t{1} << 20U;
constexpr std::size_t kDeepestMessage = 64;
/// Deeper than any real file, and far below the stack limit for the recursion that writes, compares and frees
/// values.
constexpr std::size_t kDeepestFile = 512;

} // namespace

std::optional<NSData> PlistCoder::createXMLData(const Value& root) { return xmlOfValue(root, kDeepestFile); }

Value PlistCoder::createFromXMLData(std::span<const std::uint8_t> data) {
    return data.size() <= kLargestMessage ? valueOfXML(data, kDeepestMessage) : Value();
}

Value PlistCoder::createFromFileData(std::span<const std::uint8_t> data) {
    return isBinaryPropertyList(data) ? valueOfBinary(data, kDeepestFile) : valueOfXML(data, kDeepestFile);
}

} // namespace kelvo
