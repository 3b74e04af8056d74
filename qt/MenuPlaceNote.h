#pragma once

#include "qt/StatusTray.h"

#include <QPointer>
#include <QWidget>

namespace kelvo {

/// Says below the switch of the status-bar menu that the desktop has no place for it, as long as it has none.
class MenuPlaceNote : public QObject {
public:
    /// The pane's form is `window`, which this belongs to, or somewhere in it; a form without switch or note is left as
    /// it is.
    explicit MenuPlaceNote(QWidget& window);

    /// Asks the desktop on `bus`, and follows it. Until an answer comes nothing is said.
    void ask(const QDBusConnection& bus) { tray_.ask(bus); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showOrHide();

    QPointer<QWidget> menuSwitch_;
    QPointer<QWidget> note_;
    bool lacksPlace_ = false;
    StatusTray tray_;
};

} // namespace kelvo
