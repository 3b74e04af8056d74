#include "qt/FingerScrolling.h"

#include "qt/CanvasView.h"
#include "qt/RowScroller.h"

#include <QApplication>
#include <QScrollBar>
#include <QScroller>
#include <QScrollerProperties>
#include <QWindow>

#include <cstdlib>
#include <utility>

namespace kelvo {

namespace {

bool isLevel(QPoint way) { return std::abs(way.x()) > std::abs(way.y()); }

bool canScroll(const QScrollBar& bar) { return bar.minimum() < bar.maximum(); }

bool canScroll(const QAbstractScrollArea& area) {
    return canScroll(*area.horizontalScrollBar()) || canScroll(*area.verticalScrollBar());
}

/// The innermost area around `widget` that has something to scroll; null for none.
QAbstractScrollArea* scrolledAreaAround(QWidget& widget) {
    for (QWidget* each = &widget; each && !each->isWindow(); each = each->parentWidget()) {
        auto* const area = qobject_cast<QAbstractScrollArea*>(each->parentWidget());
        if (area && area->viewport() == each && canScroll(*area)) return area;
    }
    return nullptr;
}

/// A test area measures by when it is pressed, and a scroll bar is dragged by itself.
bool needsPressesAtOnce(const QWidget& widget) {
    return qobject_cast<const CanvasView*>(&widget) || qobject_cast<const QScrollBar*>(&widget);
}

/// Made ready for the finger that has just come.
QScroller& scrollerFor(const QAbstractScrollArea& area) {
    QScroller& scroller = *QScroller::scroller(area.viewport());
    QScrollerProperties properties = scroller.scrollerProperties();
    // Whether the finger scrolls has been decided when the scroller hears of it.
    properties.setScrollMetric(QScrollerProperties::DragStartDistance, 0.0);
    for (const auto policy :
         {QScrollerProperties::HorizontalOvershootPolicy, QScrollerProperties::VerticalOvershootPolicy}) {
        properties.setScrollMetric(policy, QScrollerProperties::OvershootAlwaysOff);
    }
    scroller.setScrollerProperties(properties);
    const auto* const rows = qobject_cast<const RowScroller*>(&area);
    if (rows && rows->rowHeight() > 0) scroller.setSnapPositionsY(0.0, rows->rowHeight());
    return scroller;
}

QPoint placeOf(const QMouseEvent& event) {
#if QT_VERSION_MAJOR >= 6
    return event.globalPosition().toPoint();
#else
    return event.globalPos();
#endif
}

/// What a press of the left button at `place` of `window` would go to; null for none, or if a menu would have it.
QWidget* widgetAt(const QWindow& window, QPoint place) {
    for (QWidget* const top : QApplication::topLevelWidgets()) {
        if (top->windowHandle() != &window) continue;
        const QWidget* const menu = QApplication::activePopupWidget();
        if (menu && menu != top) return nullptr;
        QWidget* const child = top->childAt(place);
        return child ? child : top;
    }
    return nullptr;
}

} // namespace

FingerScrolling::FingerScrolling(std::function<bool(const QWidget&)> isOurs) : isOurs_(std::move(isOurs)) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool FingerScrolling::eventFilter(QObject* watched, QEvent* event) {
    // Before the window does anything about it, like giving a widget the focus.
    auto* const window = qobject_cast<QWindow*>(watched);
    if (!window) return false;
    if (event->type() == QEvent::TouchCancel && finger_ == Finger::Waits) finger_ = Finger::IsCancelled;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        break;
    default:
        return false;
    }
    const auto& mouse = static_cast<const QMouseEvent&>(*event);
    if (mouse.source() == Qt::MouseEventNotSynthesized) return false;
    if (event->type() == QEvent::MouseMove) return moved(mouse);
    return event->type() == QEvent::MouseButtonRelease ? released(mouse) : pressed(*window, mouse);
}

bool FingerScrolling::pressed(QWindow& window, const QMouseEvent& event) {
    // The toolkit tells of a second press twice.
    press_ = event.type();
    if (press_ == QEvent::MouseButtonDblClick) return finger_ != Finger::IsUp && finger_ != Finger::IsTheWidgets;
    letGo(event);
    widget_ = widgetAt(window, event.pos());
    if (!widget_ || needsPressesAtOnce(*widget_) || !isOurs_(*widget_)) return false;
    area_ = scrolledAreaAround(*widget_);
    if (!area_) return false;
    window_ = &window;
    start_ = placeOf(event);
    // A finger on what still moves only stops it.
    const bool stops = scrollerFor(*area_).state() == QScroller::Scrolling;
    tell(QScroller::InputPress, event);
    finger_ = stops ? Finger::Scrolls : Finger::Waits;
    return true;
}

bool FingerScrolling::moved(const QMouseEvent& event) {
    if (finger_ == Finger::IsUp || finger_ == Finger::IsTheWidgets) return false;
    if (event.buttons() == Qt::NoButton) {
        letGo(event);
        return false;
    }
    const QPoint way = placeOf(event) - start_;
    if (finger_ == Finger::Waits && way.manhattanLength() >= QApplication::startDragDistance()) {
        if (!scrolls(way)) return !giveToWidget();
        finger_ = Finger::Scrolls;
    }
    if (finger_ == Finger::Scrolls) tell(QScroller::InputMove, event);
    return true;
}

bool FingerScrolling::released(const QMouseEvent& event) {
    const Finger was = finger_;
    letGo(event);
    if (was == Finger::IsUp || was == Finger::IsTheWidgets) return false;
    if (was != Finger::Waits) return true;
    const bool isGiven = giveToWidget();
    finger_ = Finger::IsUp;
    return !isGiven;
}

/// Also where the end of a touch was never told.
void FingerScrolling::letGo(const QMouseEvent& event) {
    const Finger was = std::exchange(finger_, Finger::IsUp);
    if (was != Finger::IsUp && was != Finger::IsTheWidgets) tell(QScroller::InputRelease, event);
}

bool FingerScrolling::scrolls(QPoint way) const {
    if (!area_) return false;
    return canScroll(isLevel(way) ? *area_->horizontalScrollBar() : *area_->verticalScrollBar());
}

/// Only ways count. The scroller would refuse one that begins on a slider.
void FingerScrolling::tell(QScroller::Input input, const QMouseEvent& event) const {
    constexpr QPoint kNowhere(-1, -1);
    if (!area_) return;
    QScroller::scroller(area_->viewport())
        ->handleInput(input, placeOf(event) - start_ + kNowhere, static_cast<qint64>(event.timestamp()));
}

/// What has waited for the finger, as if it came from a mouse; unless the widget has gone meanwhile.
bool FingerScrolling::giveToWidget() {
    finger_ = Finger::IsTheWidgets;
    if (!widget_ || !window_) return false;
    if (widget_->isEnabled() && (widget_->focusPolicy() & Qt::ClickFocus)) widget_->setFocus(Qt::MouseFocusReason);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick}) {
        if (!window_ || (type == QEvent::MouseButtonDblClick && press_ != type)) break;
        QMouseEvent press(type, window_->mapFromGlobal(start_), start_, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window_, &press);
    }
    return true;
}

} // namespace kelvo
