#include "cocoa/CocoaBundle.h"

#include "cocoa/Text.h"

namespace kelvo {

namespace {

/// Stands for "no entry": an empty fallback value would make Foundation answer with the key.
NSString* const kNoEntry = @"\x01";

} // namespace

std::string CocoaBundle::localizedStringForKey(std::string_view key, std::string_view value) {
    NSString* const text = [bundle_.get() localizedStringForKey:platformText(key) value:kNoEntry table:nil];
    return [text isEqualToString:kNoEntry] ? std::string(value) : textOf(text);
}

platform::NSBundle* CocoaBundle::bundleWithIdentifier(std::string_view identifier) {
    return identifier == textOf([bundle_.get() bundleIdentifier]) ? this : nullptr;
}

} // namespace kelvo
