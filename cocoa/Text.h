#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace kelvo {

/// UTF-8 as the platform's text; what is no UTF-8 becomes the empty text.
[[nodiscard]] inline NSString* platformText(std::string_view text) {
    NSString* const converted = [[[NSString alloc] initWithBytes:text.data()
                                                          length:text.size()
                                                        encoding:NSUTF8StringEncoding] autorelease];
    return converted ? converted : @"";
}

/// The platform's text as UTF-8; nil is the empty text.
[[nodiscard]] inline std::string textOf(NSString* text) {
    const char* const bytes = [text UTF8String];
    return bytes ? bytes : "";
}

} // namespace kelvo
