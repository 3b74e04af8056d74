#include "qt/CanvasView.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace kelvo {

namespace {

/// What a held key repeats is no press.
bool isPressKey(const QKeyEvent& event) { return event.key() == Qt::Key_Space && !event.isAutoRepeat(); }

} // namespace

CanvasView::CanvasView(QWidget* parent) : QWidget(parent) { setFocusPolicy(Qt::StrongFocus); }

void CanvasView::click() {
    emit pressed(rect().center());
    emit released(rect().center());
}

void CanvasView::resizeEvent(QResizeEvent*) { emit resized(); }

void CanvasView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.save();
    painter.translate(0.0, height());
    painter.scale(1.0, -1.0);
    emit drawn(painter);
    painter.restore();
    drawOutline(painter);
}

void CanvasView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit pressed(event->pos());
}

void CanvasView::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second press of a double click is a press like any other here.
    mousePressEvent(event);
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit released(event->pos());
}

void CanvasView::keyPressEvent(QKeyEvent* event) {
    if (isPressKey(*event)) {
        emit pressed(rect().center());
    } else {
        QWidget::keyPressEvent(event);
    }
}

void CanvasView::keyReleaseEvent(QKeyEvent* event) {
    if (isPressKey(*event)) {
        emit released(rect().center());
    } else {
        QWidget::keyReleaseEvent(event);
    }
}

void CanvasView::drawOutline(QPainter& painter) const {
    const double width = hasFocus() ? 3.0 : 1.0;
    const QPalette::ColorRole role = hasFocus() ? QPalette::Highlight : QPalette::Mid;
    QPen pen(palette().color(role), width);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(width / 2, width / 2, -width / 2, -width / 2));
}

} // namespace kelvo
