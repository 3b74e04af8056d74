#include "hosts/window/PaneWindow.h"

#include "hosts/window/FormScroller.h"

#include <QEvent>
#include <QHideEvent>
#include <QScreen>
#include <QShowEvent>

#include <memory>
#include <utility>

namespace kelvo {

namespace {

/// Of a screen's height, for what a desktop puts above a window.
constexpr int kTitleBarHeight = 40;

/// As large as the form was designed, or as its texts need, but no larger than the screen.
QSize openingSize(const QWidget& form, const QScreen& screen) {
    const QSize room = screen.availableSize() - QSize(0, kTitleBarHeight);
    return form.size().expandedTo(form.sizeHint()).boundedTo(room);
}

} // namespace

PaneWindow::PaneWindow(platform::NSPreferencePane& pane, const QtNibs& nibs) : life_(pane, "kelvo-touch-display") {
    if (QWidget* mainView = nibs.widgetFor(life_.load())) {
        resize(openingSize(*mainView, *screen()));
        setCentralWidget(std::make_unique<FormScroller>(*mainView).release());
    }
}

void PaneWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    // What stands at frames was made for the font and style of its time. The toolkit is still telling everyone.
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        QMetaObject::invokeMethod(
            this, [this] { reload(); }, Qt::QueuedConnection);
    }
}

void PaneWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    if (!whenPainted_) return;
    QMetaObject::invokeMethod(
        this, [call = std::exchange(whenPainted_, nullptr)] { call(); }, Qt::QueuedConnection);
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

void PaneWindow::reload() {
    if (!isVisible()) return;
    life_.unselect();
    life_.select();
}

} // namespace kelvo
