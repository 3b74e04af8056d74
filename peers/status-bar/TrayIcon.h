#pragma once

#include "peers/status-bar/StatusIcon.h"
#include "peers/status-bar/StatusMenu.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include <memory>
#include <string>

namespace kelvo {

/// The icon in the desktop's system tray, with the menu that opens on it.
class TrayIcon final : public StatusIcon {
public:
    /// `menu` outlives the icon.
    explicit TrayIcon(StatusMenu& menu);

    [[nodiscard]] bool hasPlace() override;
    void show() override;
    void hide() override;

private:
    void fillMenu();
    void openMenu();
    void showState();
    void createIcon();

    StatusMenu& menu_;
    QMenu shownMenu_;
    /// Made when there is a tray to show it in, since it keeps to the kind of tray that it finds.
    std::unique_ptr<QSystemTrayIcon> icon_;
    /// What the icon says is to be done.
    std::string advice_;
};

} // namespace kelvo
