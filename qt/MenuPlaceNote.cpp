#include "qt/MenuPlaceNote.h"

#include <QEvent>

namespace kelvo {

MenuPlaceNote::MenuPlaceNote(QWidget& window)
    : QObject(&window),
      menuSwitch_(window.findChild<QWidget*>(QStringLiteral("statusBarState_"))),
      note_(window.findChild<QWidget*>(QStringLiteral("noPlaceForMenu"))) {
    if (menuSwitch_) menuSwitch_->installEventFilter(this);
    connect(&tray_, &StatusTray::told, this, [this](bool isThere) {
        lacksPlace_ = !isThere;
        showOrHide();
    });
}

bool MenuPlaceNote::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent) showOrHide();
    return QObject::eventFilter(watched, event);
}

void MenuPlaceNote::showOrHide() {
    // Where there is nothing to be set, nothing is said of the menu either.
    if (menuSwitch_ && note_) note_->setVisible(lacksPlace_ && !menuSwitch_->isHidden());
}

} // namespace kelvo
