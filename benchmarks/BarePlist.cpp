#include "benchmarks/BarePlist.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace bare {

namespace {

std::string takeXml(plist_t node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    std::string xml(text, length);
    std::free(text);
    return xml;
}

plist_t newRecord(const Gesture& gesture) {
    plist_t descriptor = plist_new_array();
    for (const std::string& action : gesture.descriptor) {
        plist_array_append_item(descriptor, plist_new_string(action.c_str()));
    }
    plist_t record = plist_new_dict();
    plist_dict_set_item(record, "Name", plist_new_string(gesture.name.c_str()));
    plist_dict_set_item(record, "Descriptor", descriptor);
    plist_dict_set_item(record, "SelectedIndex", plist_new_uint(gesture.selectedIndex));
    plist_dict_set_item(record, "IsEnable", plist_new_bool(gesture.isEnabled ? 1 : 0));
    plist_dict_set_item(record, "MoreGesture", plist_new_bool(gesture.isMore ? 1 : 0));
    return record;
}

std::string stringOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return {text, length};
}

bool booleanIn(plist_t record, const char* key) {
    std::uint8_t value = 0;
    plist_get_bool_val(plist_dict_get_item(record, key), &value);
    return value != 0;
}

Gesture gestureOf(plist_t record) {
    Gesture gesture;
    gesture.name = stringOf(plist_dict_get_item(record, "Name"));
    plist_t descriptor = plist_dict_get_item(record, "Descriptor");
    for (std::uint32_t i = 0; i < plist_array_get_size(descriptor); ++i) {
        gesture.descriptor.push_back(stringOf(plist_array_get_item(descriptor, i)));
    }
    plist_get_uint_val(plist_dict_get_item(record, "SelectedIndex"), &gesture.selectedIndex);
    gesture.isEnabled = booleanIn(record, "IsEnable");
    gesture.isMore = booleanIn(record, "MoreGesture");
    return gesture;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void replace(const std::string& path, const std::string& contents) {
    std::string temporary = path + ".XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    const bool isWritten = write(file, contents.data(), contents.size()) == static_cast<ssize_t>(contents.size()) &&
                           fsync(file) == 0 && close(file) == 0;
    if (!isWritten || std::rename(temporary.c_str(), path.c_str()) != 0) throw std::runtime_error("cannot write");
    const int folder = open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    (void)fsync(folder);
    (void)close(folder);
}

} // namespace

std::string encode(const std::vector<Gesture>& gestures, const std::string& deviceName) {
    plist_t list = plist_new_array();
    for (const Gesture& gesture : gestures) plist_array_append_item(list, newRecord(gesture));
    plist_t payload = plist_new_dict();
    plist_dict_set_item(payload, "GestureArray", list);
    plist_dict_set_item(payload, "DeviceName", plist_new_string(deviceName.c_str()));
    std::string xml = takeXml(payload);
    plist_free(payload);
    return xml;
}

std::vector<Gesture> decode(const std::string& payload) {
    plist_t root = nullptr;
    plist_from_xml(payload.data(), static_cast<std::uint32_t>(payload.size()), &root);
    plist_t list = plist_dict_get_item(root, "GestureArray");
    std::vector<Gesture> gestures;
    for (std::uint32_t i = 0; i < plist_array_get_size(list); ++i) {
        gestures.push_back(gestureOf(plist_array_get_item(list, i)));
    }
    plist_free(root);
    return gestures;
}

void merge(const std::string& path, std::uint64_t range) {
    const std::string text = contentsOf(path);
    plist_t root = nullptr;
    plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &root);
    plist_dict_set_item(root, "DoubleClickRange", plist_new_uint(range));
    replace(path, takeXml(root));
    plist_free(root);
}

} // namespace bare
