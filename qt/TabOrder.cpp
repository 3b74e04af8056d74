#include "qt/TabOrder.h"

#include <vector>

namespace kelvo {

namespace {

/// What takes the focus keeps its place in the order even while the Tab key passes it by: of radio buttons that key
/// comes to the chosen one alone. A widget that passes its focus on to another one is not a stop itself.
bool isTabStop(const QWidget& widget) { return widget.focusPolicy() != Qt::NoFocus && !widget.focusProxy(); }

/// What has just come into a window stands in one piece in its order. What takes no focus goes along, since others may
/// come to stand in it.
std::vector<QWidget*> orderOf(QWidget& content) {
    std::vector<QWidget*> order;
    QWidget* widget = &content;
    do {
        if (!widget->focusProxy()) order.push_back(widget);
        widget = widget->nextInFocusChain();
    } while (content.isAncestorOf(widget));
    return order;
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

/// The toolkit puts nothing into order but what takes the focus just then.
void putBehind(QWidget& before, QWidget& widget) {
    const Qt::FocusPolicy policyBefore = before.focusPolicy();
    const Qt::FocusPolicy policy = widget.focusPolicy();
    if (policyBefore == Qt::NoFocus) before.setFocusPolicy(Qt::ClickFocus);
    if (policy == Qt::NoFocus) widget.setFocusPolicy(Qt::ClickFocus);
    QWidget::setTabOrder(&before, &widget);
    before.setFocusPolicy(policyBefore);
    widget.setFocusPolicy(policy);
}

void chain(QWidget& first, const std::vector<QWidget*>& order) {
    QWidget* last = &first;
    for (QWidget* widget : order) {
        putBehind(*last, *widget);
        last = widget;
    }
}

} // namespace

QWidget* putBehindInTabOrder(QWidget& before, QWidget& content) {
    const std::vector<QWidget*> order = orderOf(content);
    chain(before, order);
    return order.back();
}

QWidget* putInsideInTabOrder(QWidget& holder, QWidget& content) {
    if (QWidget* const before = tabStopBefore(holder)) return putBehindInTabOrder(*before, content);
    const std::vector<QWidget*> order = orderOf(content);
    chain(*order.back(), tabStopsBeside(content));
    return order.back();
}

} // namespace kelvo
