#include "linux/BinaryPlist.h"

#include "linux/BinaryPlistCheck.h"
#include "linux/PlistTexts.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <plist/plist.h>

namespace kelvo {

using platform::NSData;
using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

struct Deallocator {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Allocated = std::unique_ptr<T, Deallocator>;

Node nodeFromBinary(std::span<const std::uint8_t> data) {
    plist_t node = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(data.data()), static_cast<std::uint32_t>(data.size()), &node);
    return Node(node);
}

/// The text between <tag> and </tag> when the library writes `node`, for what its accessors do not provide; empty if
/// it writes nothing.
std::string textOfElement(plist_t node, std::string_view tag) {
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const Allocated<char> owner(xml);
    const std::string_view text = xml ? std::string_view(xml, length) : std::string_view();
    const std::string opening = '<' + std::string(tag) + '>';
    const std::size_t start = text.find(opening);
    if (start == std::string_view::npos) return {};
    const std::size_t content = start + opening.size();
    return std::string(text.substr(content, text.find('<', content) - content));
}

Value decoded(plist_t node);

Value decodedBoolean(plist_t node) {
    std::uint8_t boolean = 0;
    plist_get_bool_val(node, &boolean);
    return boolean != 0;
}

/// The accessor of the library returns 64 bits without saying whether they are signed.
Value decodedInteger(plist_t node) {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    const bool isLarge = bits > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    if (isLarge && !textOfElement(node, "integer").starts_with('-')) return bits;
    return static_cast<std::int64_t>(bits);
}

Value decodedReal(plist_t node) {
    double real = 0.0;
    plist_get_real_val(node, &real);
    return real;
}

Value decodedString(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string();
}

Value decodedData(plist_t node) {
    std::uint64_t length = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
    return bytes ? NSData(bytes, bytes + length) : NSData();
}

/// Reads its text, because the accessor of the library is silently limited to the year 2069. The text has whole
/// seconds, and as many digits for the year as it needs.
Value decodedDate(plist_t node) {
    std::string text = textOfElement(node, "date");
    constexpr std::size_t kDigitsOfYear = 4;
    text.insert(0, kDigitsOfYear - std::min(text.find('-'), kDigitsOfYear), '0');
    const auto date = plisttexts::date(text);
    return date ? Value(*date) : Value();
}

Value decodedArray(plist_t node) {
    NSMutableArray array = NSMutableArray::arrayWithCapacity(plist_array_get_size(node));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator, &item); item; plist_array_next_item(node, iterator, &item)) {
        Value value = decoded(item);
        if (!value) return {};
        array.addObject(std::move(value));
    }
    return array;
}

Value decodedDictionary(plist_t node) {
    NSMutableDictionary dictionary = NSMutableDictionary::dictionaryWithCapacity(plist_dict_get_size(node));
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Allocated<char> keyOwner(key);
        if (!item) return dictionary;
        Value value = decoded(item);
        if (!value || !key) return {};
        dictionary.setObjectForKey(std::move(value), key);
    }
}

/// The value of a node; none if it contains anything that a property list cannot hold.
Value decoded(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return decodedBoolean(node);
    case PLIST_UINT:
        return decodedInteger(node);
    case PLIST_REAL:
        return decodedReal(node);
    case PLIST_STRING:
        return decodedString(node);
    case PLIST_DATA:
        return decodedData(node);
    case PLIST_DATE:
        return decodedDate(node);
    case PLIST_ARRAY:
        return decodedArray(node);
    case PLIST_DICT:
        return decodedDictionary(node);
    default:
        return {};
    }
}

} // namespace

Value valueOfBinary(std::span<const std::uint8_t> data, std::size_t deepest) {
    // The library uses 32-bit sizes.
    if (!std::in_range<std::uint32_t>(data.size())) return {};
    const std::optional<std::size_t> nesting = nestingOfBinary(data);
    if (!nesting || *nesting > deepest) return {};
    const Node root = nodeFromBinary(data);
    return root ? decoded(root.get()) : Value();
}

} // namespace kelvo
