#pragma once

#include "platform/Geometry.h"

#import <Foundation/Foundation.h>

namespace kelvo {

// The model's frames are the platform's own, in other words.

[[nodiscard]] inline ::NSRect rectOf(platform::NSRect frame) {
    return NSMakeRect(frame.x, frame.y, frame.width, frame.height);
}

[[nodiscard]] inline platform::NSRect frameOf(::NSRect rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

[[nodiscard]] inline platform::NSPoint pointOf(::NSPoint point) { return {point.x, point.y}; }

} // namespace kelvo
