#include "qt/QtApplication.h"

#include <QApplication>
#include <QDialog>

namespace kelvo {

namespace {

/// A dialog that blocks nothing but the window it belongs to.
bool isSheetOf(const QDialog& dialog, const QWidget& window) {
    return dialog.windowModality() == Qt::WindowModal && dialog.parentWidget() &&
           dialog.parentWidget()->window() == &window;
}

} // namespace

void QtApplication::activateIgnoringOtherApps() {
    if (!window_) return;
    if (window_->isMinimized()) window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->raise();
    window_->activateWindow();
}

void QtApplication::endSheetInKeyWindow() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog && window_ && isSheetOf(*dialog, *window_)) dialog->done(kSheetWasEnded);
}

} // namespace kelvo
