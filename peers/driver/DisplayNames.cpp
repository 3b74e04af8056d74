#include "peers/driver/DisplayNames.h"

#include "TDUtilities.h"
#include "peers/Utf8.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

#include <cstddef>
#include <stdexcept>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

/// Leaves room for the additions of settings files; file names on Linux are limited to 255 bytes.
constexpr std::size_t kLongestName = 200;
constexpr std::string_view kNameOfNamelessDisplay = "Touch Display";

// The keys of an entry; the key of the entry itself is the name of the display.
constexpr std::string_view kKernelName = "KernelName";
constexpr std::string_view kSerialOrPath = "SerialOrPath";

/// The length of a UTF-8 character, or of invalid bytes.
bool isFit(std::string_view character) {
    const bool isControl =
        (character.size() == 1 && (character[0] == 0x7F || (character[0] >= 0 && character[0] < ' '))) ||
        (character >= "\u0080" && character <= "\u009F");
    // The last two are not permitted in a property list.
    return !character.empty() && !isControl && character != "/" && character != "\uFFFE" && character != "\uFFFF";
}

std::string cutTo(std::size_t length, std::string_view name) {
    std::size_t end = 0;
    while (end < name.size() && end + lengthOfFirstCharacter(name.substr(end)) <= length) {
        end += lengthOfFirstCharacter(name.substr(end));
    }
    const std::size_t last = name.substr(0, end).find_last_not_of(' ');
    return std::string(name.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

/// Removes what a name cannot contain, but does not limit its length.
std::string cleaned(std::string_view text) {
    std::string clean;
    while (!text.empty()) {
        const std::size_t length = lengthOfFirstCharacter(text);
        const std::string_view character = text.substr(0, length);
        const bool isBlank = !isFit(character) || character == " ";
        if (!isBlank) {
            clean += character;
        } else if (!clean.empty() && clean.back() != ' ') {
            clean += ' ';
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return clean;
}

/// The bare name for the first display with that name, followed by a number for others.
std::string numberedName(std::string_view name, std::size_t number) {
    if (number == 1) return std::string(name);
    const std::string ending = std::string(" ").append(std::to_string(number));
    return cutTo(kLongestName - ending.size(), name) + ending;
}

std::string displaysFilePath() {
    return platform::stringByAppendingPathComponent(getPreferenceFolderPath(), "Displays.plist");
}

/// The previous name of such a display, if no other display is using it.
std::optional<std::string> knownName(const NSMutableDictionary& displays, const NSMutableDictionary& display,
                                     const std::function<bool(const std::string&)>& isInUse) {
    for (const std::string& name : displays.allKeys()) {
        if (displays.objectForKey(name).isEqual(display) && isFitDisplayName(name) && !isInUse(name)) return name;
    }
    return std::nullopt;
}

void remember(const std::string& name, const NSMutableDictionary& display) {
    const std::string path = displaysFilePath();
    if (!saveSettingItemsToPlist(NSMutableDictionary::dictionaryWithObjectsAndKeys({{display, name}}), path)) {
        platform::NSLog("%@ cannot be read or written; repair or remove it", path);
    }
}

} // namespace

bool isFitDisplayName(std::string_view name) {
    if (name.empty() || name.size() > kLongestName) return false;
    while (!name.empty()) {
        const std::size_t length = lengthOfFirstCharacter(name);
        if (!isFit(name.substr(0, length))) return false;
        name.remove_prefix(length);
    }
    return true;
}

void checkDisplayName(const std::string& name) {
    if (isFitDisplayName(name)) return;
    throw std::runtime_error(
        "a display name must have 1 to 200 bytes of UTF-8 and contain neither \"/\" nor control characters");
}

std::string cleanedDisplayName(std::string_view kernelName) {
    const std::string name = cutTo(kLongestName, cleaned(kernelName));
    return name.empty() ? std::string(kNameOfNamelessDisplay) : name;
}

std::string rememberedDisplayName(std::string_view kernelName, std::string_view serialOrPath,
                                  const std::function<bool(const std::string&)>& isInUse) {
    const std::string bareName = cleanedDisplayName(kernelName);
    const auto display = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{bareName, kKernelName}, {cleaned(serialOrPath), kSerialOrPath}});
    const auto displays = NSMutableDictionary::dictionaryWithContentsOfFile(displaysFilePath());
    if (const auto known = knownName(displays, display, isInUse)) return *known;
    std::size_t number = 1;
    while (displays.objectForKey(numberedName(bareName, number)).dictionary() ||
           isInUse(numberedName(bareName, number)))
        ++number;
    std::string name = numberedName(bareName, number);
    remember(name, display);
    return name;
}

} // namespace kelvo
