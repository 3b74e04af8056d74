#include "peers/driver/DisplayNames.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace kelvo {

namespace {

/// With the names that the settings files add, a file name on Linux ends at 255 bytes.
constexpr std::size_t kLongestName = 200;

} // namespace

bool isFitDisplayName(const std::string& name) {
    const auto isUnfit = [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20; };
    return !name.empty() && name.size() <= kLongestName && std::none_of(name.begin(), name.end(), isUnfit);
}

void checkDisplayName(const std::string& name) {
    if (isFitDisplayName(name)) return;
    throw std::runtime_error("a display's name has 1 to 200 bytes, none of them \"/\" or a control character");
}

} // namespace kelvo
