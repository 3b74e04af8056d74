#include "qt/WheelFilter.h"

#include <QEvent>
#include <QWidget>

namespace kelvo {

void WheelFilter::guard(QWidget& widget) {
    if (widget.focusPolicy() == Qt::WheelFocus) widget.setFocusPolicy(Qt::StrongFocus);
    widget.installEventFilter(this);
}

bool WheelFilter::eventFilter(QObject* watched, QEvent* event) {
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() != QEvent::Wheel || !widget || widget->hasFocus()) return QObject::eventFilter(watched, event);
    event->ignore();
    return true;
}

} // namespace kelvo
