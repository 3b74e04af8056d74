#include "hosts/window/PaneWindow.h"

#include "hosts/window/FormScroller.h"
#include "qt/FormFit.h"

#include <QHideEvent>
#include <QScreen>
#include <QShowEvent>

#include <memory>
#include <utility>

namespace kelvo {

namespace {

/// Of a screen's height, for what a desktop puts above a window.
constexpr int kTitleBarHeight = 40;

/// As large as the form was designed, or larger with a larger font or as its texts need, but no larger than the screen.
QSize openingSize(const QWidget& form, const QScreen& screen) {
    const QSize room = screen.availableSize() - QSize(0, kTitleBarHeight);
    const QSize designed = form.size() * letterFactor(form);
    return designed.expandedTo(form.sizeHint()).boundedTo(room);
}

} // namespace

PaneWindow::PaneWindow(platform::NSPreferencePane& pane, const QtNibs& nibs)
    : life_(pane, "kelvo-touch-display"), form_(nibs.widgetFor(life_.load())) {
    if (!form_) return;
    // Of the window itself nothing is painted, since the form covers it whole.
    form_->installEventFilter(this);
    resize(openingSize(*form_, *screen()));
    setCentralWidget(std::make_unique<FormScroller>(*form_).release());
}

bool PaneWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint && whenPainted_) {
        QMetaObject::invokeMethod(
            this, [call = std::exchange(whenPainted_, nullptr)] { call(); }, Qt::QueuedConnection);
    }
    return QMainWindow::eventFilter(watched, event);
}

// A spontaneous event is the window system's: minimising, or another virtual desktop. The pane is not left by that.

void PaneWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!event->spontaneous()) life_.select();
}

void PaneWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    if (!event->spontaneous()) life_.unselect();
}

} // namespace kelvo
