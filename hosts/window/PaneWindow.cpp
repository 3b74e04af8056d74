#include "hosts/window/PaneWindow.h"

#include "platform/Log.h"
#include "qt/Guarded.h"

#include <QHideEvent>
#include <QShowEvent>

#include <string>

namespace kelvo {

namespace {

void logCall(const std::string& call) { platform::NSLog("kelvo-touch-display: %@", call); }

} // namespace

PaneWindow::PaneWindow(platform::NSPreferencePane& pane, const QtNibs& nibs) : pane_(pane) {
    if (QWidget* mainView = nibs.widgetFor(pane_.loadMainView())) {
        resize(mainView->size());
        setCentralWidget(mainView);
    }
    logCall("mainViewDidLoad");
    pane_.mainViewDidLoad();
}

PaneWindow::~PaneWindow() { unselect(); }

// A spontaneous event is the window system's: minimising, or another virtual desktop. The pane is not left by that.

void PaneWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!event->spontaneous()) select();
}

void PaneWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    if (!event->spontaneous()) unselect();
}

void PaneWindow::select() {
    if (isSelected_) return;
    isSelected_ = true;
    logCall("willSelect");
    guarded([this] { pane_.willSelect(); });
}

void PaneWindow::unselect() {
    if (!isSelected_) return;
    isSelected_ = false;
    logCall("willUnselect");
    guarded([this] { pane_.willUnselect(); });
}

} // namespace kelvo
