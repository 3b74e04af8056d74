#include "hosts/window/PaneWindow.h"

#include <QHideEvent>
#include <QShowEvent>

namespace kelvo {

PaneWindow::PaneWindow(platform::NSPreferencePane& pane, const QtNibs& nibs) : life_(pane, "kelvo-touch-display") {
    if (QWidget* mainView = nibs.widgetFor(life_.load())) {
        resize(mainView->size());
        setCentralWidget(mainView);
    }
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
