#pragma once

#include "platform/Geometry.h"

namespace platform {

/// Opaque, in parts of 1.
struct NSColor {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;

    static constexpr NSColor whiteColor() { return {1.0, 1.0, 1.0}; }
    static constexpr NSColor redColor() { return {1.0, 0.0, 0.0}; }
    static constexpr NSColor greenColor() { return {0.0, 1.0, 0.0}; }

    /// Makes this the colour that the current context fills and strokes with.
    void set() const;
    bool operator==(const NSColor&) const = default;
};

/// An outline: the oval inscribed in a rectangle.
class NSBezierPath {
public:
    static NSBezierPath bezierPathWithOvalInRect(NSRect rect) { return NSBezierPath(rect); }

    [[nodiscard]] NSRect bounds() const { return oval_; }
    [[nodiscard]] double lineWidth() const { return lineWidth_; }
    void setLineWidth(double width) { lineWidth_ = width; }
    /// Whether the oval itself, whatever its line is wide, contains the point. An oval without width or height contains
    /// none.
    [[nodiscard]] bool containsPoint(NSPoint point) const;
    /// Strokes the outline in the current context.
    void stroke() const;

private:
    explicit NSBezierPath(NSRect oval) : oval_(oval) {}

    NSRect oval_;
    double lineWidth_ = 1.0;
};

/// What views draw in. The toolkit makes one for each drawing and makes it the current one for so long.
class NSGraphicsContext {
public:
    NSGraphicsContext() = default;
    NSGraphicsContext(const NSGraphicsContext&) = delete;
    NSGraphicsContext& operator=(const NSGraphicsContext&) = delete;
    virtual ~NSGraphicsContext();

    /// Null outside of a drawing.
    static NSGraphicsContext* currentContext();
    /// Makes a context the current one for as long as it lives.
    class Current {
    public:
        explicit Current(NSGraphicsContext& context);
        ~Current();
        Current(const Current&) = delete;
        Current& operator=(const Current&) = delete;

    private:
        NSGraphicsContext* previous_;
    };

    virtual void setColor(NSColor color) = 0;
    virtual void fillRect(NSRect rect) = 0;
    virtual void strokePath(const NSBezierPath& path) = 0;
};

/// Fills `rect` with the current colour in the current context.
void NSRectFill(NSRect rect);

} // namespace platform
