#include "platform/Drawing.h"

namespace platform {

namespace {

/// Drawing is the main thread's.
NSGraphicsContext* theContext = nullptr;

} // namespace

void NSColor::set() const {
    if (theContext) theContext->setColor(*this);
}

bool NSBezierPath::containsPoint(NSPoint point) const {
    if (!(oval_.width > 0.0 && oval_.height > 0.0)) return false;
    // Distances from the centre as parts of the half axes.
    const double dx = (point.x - oval_.x) / oval_.width * 2.0 - 1.0;
    const double dy = (point.y - oval_.y) / oval_.height * 2.0 - 1.0;
    return dx * dx + dy * dy <= 1.0;
}

void NSBezierPath::stroke() const {
    if (theContext) theContext->strokePath(*this);
}

NSGraphicsContext::~NSGraphicsContext() = default;

NSGraphicsContext* NSGraphicsContext::currentContext() { return theContext; }

NSGraphicsContext::Current::Current(NSGraphicsContext& context) : previous_(theContext) { theContext = &context; }

NSGraphicsContext::Current::~Current() { theContext = previous_; }

void NSRectFill(NSRect rect) {
    if (theContext) theContext->fillRect(rect);
}

} // namespace platform
