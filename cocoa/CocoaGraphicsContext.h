#pragma once

#include "platform/Drawing.h"

namespace kelvo {

/// Draws into the view that AppKit has focused.
class CocoaGraphicsContext final : public platform::NSGraphicsContext {
public:
    void setColor(platform::NSColor color) override;
    void fillRect(platform::NSRect rect) override;
    void strokePath(const platform::NSBezierPath& path) override;
};

} // namespace kelvo
