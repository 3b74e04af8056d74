#include "qt/Frames.h"

#include <QRectF>
#include <QStyle>

namespace kelvo {

platform::NSRect frameFromGeometry(const QRect& geometry, double height) {
    const QRectF rect(geometry);
    return {rect.x(), height - rect.y() - rect.height(), rect.width(), rect.height()};
}

QRect geometryFromFrame(const platform::NSRect& frame, double height) {
    return QRectF(frame.x, height - frame.y - frame.height, frame.width, frame.height).toAlignedRect();
}

QRect mirroredIn(const QWidget& parent, const QRect& geometry) {
    return QStyle::visualRect(parent.layoutDirection(), parent.rect(), geometry);
}

} // namespace kelvo
