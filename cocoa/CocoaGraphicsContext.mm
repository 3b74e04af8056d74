#include "cocoa/CocoaGraphicsContext.h"

#include "cocoa/Frames.h"

#import <AppKit/AppKit.h>

namespace kelvo {

void CocoaGraphicsContext::setColor(platform::NSColor color) {
    [[::NSColor colorWithCalibratedRed:color.red green:color.green blue:color.blue alpha:1.0] set];
}

void CocoaGraphicsContext::fillRect(platform::NSRect rect) { ::NSRectFill(rectOf(rect)); }

void CocoaGraphicsContext::strokePath(const platform::NSBezierPath& path) {
    ::NSBezierPath* const oval = [::NSBezierPath bezierPathWithOvalInRect:rectOf(path.bounds())];
    [oval setLineWidth:path.lineWidth()];
    [oval stroke];
}

} // namespace kelvo
