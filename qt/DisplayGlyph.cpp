#include "qt/DisplayGlyph.h"

#include <QPainter>

namespace kelvo {

void DisplayGlyph::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = palette().color(QPalette::Disabled, QPalette::WindowText);
    painter.setPen(QPen(colour, 3.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));

    // Drawn in the coordinates of the preferred size, whatever size there is.
    const QSizeF drawn = sizeHint();
    painter.scale(width() / drawn.width(), height() / drawn.height());
    painter.drawRoundedRect(QRectF(2.0, 2.0, 92.0, 56.0), 6.0, 6.0);
    painter.drawLine(QPointF(32.0, 70.0), QPointF(64.0, 70.0));
    painter.drawEllipse(QPointF(48.0, 30.0), 14.0, 14.0);
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(48.0, 30.0), 4.0, 4.0);
}

} // namespace kelvo
