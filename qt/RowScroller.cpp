#include "qt/RowScroller.h"

#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>

namespace kelvo {

namespace {

/// A wheel with notches tells of them in these.
constexpr int kNotch = 120;

} // namespace

RowScroller::RowScroller(QWidget* parent) : QScrollArea(parent) {
    connect(verticalScrollBar(), &QAbstractSlider::sliderReleased, this, [this] { scrollToRow(0); });
}

void RowScroller::setRowHeight(int height) {
    if (height == rowHeight_) return;
    rowHeight_ = height;
    leaveOutWhatIsNoRow();
}

void RowScroller::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    leaveOutWhatIsNoRow();
}

void RowScroller::wheelEvent(QWheelEvent* event) {
    const int turned = event->angleDelta().y();
    // Whatever is finer than a wheel follows the fingers, and a wheel at the end is for what this stands in.
    const int before = verticalScrollBar()->value();
    if (rowHeight_ > 0 && event->pixelDelta().isNull() && turned != 0 && turned % kNotch == 0) {
        scrollToRow(-turned / kNotch);
        event->setAccepted(verticalScrollBar()->value() != before);
        return;
    }
    QScrollArea::wheelEvent(event);
}

void RowScroller::leaveOutWhatIsNoRow() {
    const int room = contentsRect().height();
    const QMargins rest(0, 0, 0, rowHeight_ > 0 && room > rowHeight_ ? room % rowHeight_ : 0);
    if (viewportMargins() != rest) setViewportMargins(rest);
}

void RowScroller::scrollToRow(int rowsFurther) {
    if (rowHeight_ == 0) return;
    const int row = static_cast<int>(std::lround(static_cast<double>(verticalScrollBar()->value()) / rowHeight_));
    verticalScrollBar()->setValue((row + rowsFurther) * rowHeight_);
}

} // namespace kelvo
