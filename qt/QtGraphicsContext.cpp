#include "qt/QtGraphicsContext.h"

#include <QPen>
#include <QRectF>

namespace kelvo {

namespace {

QRectF toRectF(platform::NSRect rect) { return {rect.x, rect.y, rect.width, rect.height}; }

} // namespace

void QtGraphicsContext::setColor(platform::NSColor color) {
    color_ = QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                              static_cast<float>(color.blue));
}

void QtGraphicsContext::fillRect(platform::NSRect rect) { painter_.fillRect(toRectF(rect), color_); }

void QtGraphicsContext::strokePath(const platform::NSBezierPath& path) {
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(color_, path.lineWidth()));
    painter_.drawEllipse(toRectF(path.bounds()));
}

} // namespace kelvo
