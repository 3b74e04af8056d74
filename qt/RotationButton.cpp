#include "qt/RotationButton.h"

#include <QPainter>
#include <QPolygonF>
#include <QStyle>
#include <QVariant>

namespace kelvo {

namespace {

constexpr int kPictureSize = 56;
constexpr int kGapBeforePicture = 24;

/// The outline of a display around the origin, with an arrow to the top of what it shows.
void drawDisplay(QPainter& painter, const QColor& colour) {
    painter.setPen(QPen(colour, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawRoundedRect(QRectF(-24.0, -18.0, 48.0, 30.0), 4.0, 4.0);
    painter.drawLine(QPointF(-9.0, 19.0), QPointF(9.0, 19.0));
    painter.drawLine(QPointF(0.0, -3.0), QPointF(0.0, 5.0));
    painter.setBrush(colour);
    painter.drawPolygon(QPolygonF({QPointF(0.0, -10.0), QPointF(6.0, -3.0), QPointF(-6.0, -3.0)}));
}

} // namespace

QSize RotationButton::sizeHint() const {
    const QSize choice = QRadioButton::sizeHint();
    return {choice.width() + kGapBeforePicture + kPictureSize, qMax(choice.height(), kPictureSize)};
}

void RotationButton::paintEvent(QPaintEvent* event) {
    QRadioButton::paintEvent(event);

    const QRect picture =
        QStyle::alignedRect(layoutDirection(), Qt::AlignRight | Qt::AlignVCenter, {kPictureSize, kPictureSize}, rect());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(picture).center());
    painter.rotate(property("angle").toDouble());
    drawDisplay(painter, palette().color(QPalette::WindowText));
}

} // namespace kelvo
