#include "qt/TouchSlider.h"

#include <QMouseEvent>
#include <QStyleOptionSlider>

namespace kelvo {

void TouchSlider::mousePressEvent(QMouseEvent* event) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    if (event->button() == Qt::LeftButton && !handle.contains(event->pos())) setValue(valueAt(event->pos()));
    // From here on the press is one on the handle.
    QSlider::mousePressEvent(event);
}

/// The value at which the middle of the handle is below `place`.
int TouchSlider::valueAt(QPoint place) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    const bool isLevel = orientation() == Qt::Horizontal;
    const int length = isLevel ? handle.width() : handle.height();
    const int first = isLevel ? groove.left() : groove.top();
    const int room = (isLevel ? groove.width() : groove.height()) - length;
    const int wanted = (isLevel ? place.x() : place.y()) - first - length / 2;
    return QStyle::sliderValueFromPosition(minimum(), maximum(), wanted, room, option.upsideDown);
}

} // namespace kelvo
