#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <plist/plist.h>

/// The property-list library called directly, for what the program does through its own types: a gesture record as a
/// plain struct goes to the library's nodes and back without a check.
namespace bare {

struct Gesture {
    std::string name;
    std::vector<std::string> descriptor;
    std::uint64_t selectedIndex = 0;
    bool isEnabled = false;
    bool isMore = false;
};

[[nodiscard]] std::string encode(const std::vector<Gesture>& gestures, const std::string& deviceName);
[[nodiscard]] std::vector<Gesture> decode(const std::string& payload);

/// Reads the file, sets the range in it and puts it back whole, as the program does.
void merge(const std::string& path, std::uint64_t range);

} // namespace bare
