#include "peers/driver/KnownDevices.h"

#include "TDUtilities.h"
#include "peers/driver/TouchSettings.h"
#include "touch/Thresholds.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

constexpr std::string_view kName = "Name";
constexpr std::string_view kWidth = "Width";
constexpr std::string_view kHeight = "Height";
constexpr double kMostPixels = 65535.0;

std::string keyOf(std::uint16_t vendor, std::uint16_t product) {
    std::array<char, sizeof "VVVV:PPPP"> key{};
    (void)std::snprintf(key.data(), key.size(), "%04x:%04x", static_cast<unsigned>(vendor),
                        static_cast<unsigned>(product));
    return key.data();
}

char lowered(char character) {
    return character >= 'A' && character <= 'F' ? static_cast<char>(character - 'A' + 'a') : character;
}

/// Hexadecimal digits can be in upper or lower case.
NSMutableDictionary entryOf(const std::string& path, const std::string& key) {
    const auto list = NSMutableDictionary::dictionaryWithContentsOfFile(path);
    for (const auto& [name, value] : list.entries()) {
        if (std::ranges::equal(name, key, {}, lowered)) return value.dictionary();
    }
    return {};
}

/// None if a side is missing, too short or too long.
std::optional<touch::Size> sizeIn(const NSMutableDictionary& entry, double shortest, double longest) {
    const auto width = numberIn(entry.objectForKey(kWidth));
    const auto height = numberIn(entry.objectForKey(kHeight));
    const auto canBe = [&](const std::optional<double>& side) { return side && *side >= shortest && *side <= longest; };
    if (!canBe(width) || !canBe(height)) return std::nullopt;
    return touch::Size{*width, *height};
}

} // namespace

KnownDevice knownDevice(std::uint16_t vendor, std::uint16_t product) {
    const std::string key = keyOf(vendor, product);
    const auto device = entryOf(getSupportDeviceListFilePath(), key);
    const auto resolution = entryOf(getSupportResolutionListFilePath(), key);
    return {.name = device.objectForKey(kName).string().value_or(""),
            .size = sizeIn(device, touch::thresholds::kShortestPanel, touch::thresholds::kLongestPanel),
            .nativePixels = sizeIn(resolution, 1.0, kMostPixels)};
}

} // namespace kelvo
