#pragma once

#include "platform/Drawing.h"

#include <QColor>
#include <QPainter>

namespace kelvo {

/// Draws by a painter whose origin is at the bottom left.
class QtGraphicsContext final : public platform::NSGraphicsContext {
public:
    /// `painter` must outlive the context.
    explicit QtGraphicsContext(QPainter& painter) : painter_(painter) {}

    void setColor(platform::NSColor color) override;
    void fillRect(platform::NSRect rect) override;
    void strokePath(const platform::NSBezierPath& path) override;

private:
    QPainter& painter_;
    QColor color_ = Qt::black;
};

} // namespace kelvo
