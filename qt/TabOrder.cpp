#include "qt/TabOrder.h"

#include <vector>

namespace kelvo {

namespace {

/// A widget that passes its focus on to another one is not a stop itself.
bool isTabStop(const QWidget& widget) { return (widget.focusPolicy() & Qt::TabFocus) != 0 && !widget.focusProxy(); }

/// What has just come into a window stands in one piece in its order.
std::vector<QWidget*> tabStopsOf(QWidget& content) {
    std::vector<QWidget*> stops;
    QWidget* widget = &content;
    do {
        if (isTabStop(*widget)) stops.push_back(widget);
        widget = widget->nextInFocusChain();
    } while (content.isAncestorOf(widget));
    return stops;
}

/// The other stops of the window, from its beginning.
std::vector<QWidget*> tabStopsBeside(const QWidget& content) {
    std::vector<QWidget*> stops;
    QWidget* const window = content.window();
    for (QWidget* widget = window->nextInFocusChain(); widget != window; widget = widget->nextInFocusChain()) {
        if (isTabStop(*widget) && widget != &content && !content.isAncestorOf(widget)) stops.push_back(widget);
    }
    return stops;
}

/// The stop before `holder`, but for those it stands in, behind which the toolkit puts nothing of theirs; null when
/// there is none.
QWidget* tabStopBefore(QWidget& holder) {
    QWidget* widget = &holder;
    do {
        widget = widget->previousInFocusChain();
        if (widget->isWindow()) return nullptr;
    } while (!isTabStop(*widget) || widget->isAncestorOf(&holder));
    return widget;
}

void chain(QWidget& first, const std::vector<QWidget*>& stops) {
    QWidget* last = &first;
    for (QWidget* stop : stops) {
        QWidget::setTabOrder(last, stop);
        last = stop;
    }
}

} // namespace

QWidget* putBehindInTabOrder(QWidget& before, QWidget& content) {
    const std::vector<QWidget*> stops = tabStopsOf(content);
    if (stops.empty()) return nullptr;
    chain(before, stops);
    return stops.back();
}

QWidget* putInsideInTabOrder(QWidget& holder, QWidget& content) {
    if (QWidget* const before = tabStopBefore(holder)) return putBehindInTabOrder(*before, content);
    const std::vector<QWidget*> stops = tabStopsOf(content);
    if (stops.empty()) return nullptr;
    chain(*stops.back(), tabStopsBeside(content));
    return stops.back();
}

} // namespace kelvo
