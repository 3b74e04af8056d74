#include "qt/ResizeWatch.h"

#include <QEvent>

#include <utility>

namespace kelvo {

ResizeWatch::ResizeWatch(QWidget& widget, std::function<void()> resized) : resized_(std::move(resized)) {
    widget.installEventFilter(this);
}

bool ResizeWatch::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) resized_();
    return QObject::eventFilter(watched, event);
}

} // namespace kelvo
