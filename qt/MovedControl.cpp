#include "qt/MovedControl.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPointer>

#include <utility>

namespace kelvo {

namespace {

/// Whether this is something else that the user does. What a held key repeats is one long move.
bool endsMoves(const QEvent& event) {
    switch (event.type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
        return !static_cast<const QKeyEvent&>(event).isAutoRepeat();
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::Shortcut:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

} // namespace

MovedControl::MovedControl(std::function<void()> act) : act_(std::move(act)) {}

void MovedControl::moved() {
    if (std::exchange(hasMoved_, true)) return;
    QCoreApplication::instance()->installEventFilter(this);
    QMetaObject::invokeMethod(
        this, [this] { actOnNewest(); }, Qt::QueuedConnection);
}

bool MovedControl::eventFilter(QObject* watched, QEvent* event) {
    if (!endsMoves(*event)) return false;
    const QPointer<QObject> receiver(watched);
    actOnNewest();
    return !receiver;
}

/// The act may end the form that this belongs to.
void MovedControl::actOnNewest() {
    if (!std::exchange(hasMoved_, false)) return;
    QCoreApplication::instance()->removeEventFilter(this);
    const auto act = act_;
    act();
}

} // namespace kelvo
