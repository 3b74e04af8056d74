#include "peers/status-bar/TrayIcon.h"

#include "platform/Guarded.h"

#include <QCursor>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <utility>

namespace kelvo {

namespace {

/// A display that is being touched, filled, so that it stands out from panels of any colour.
QPixmap drawnIcon(int size) {
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 16.0, size / 16.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x3d, 0x8f, 0xd1));
    painter.drawRoundedRect(QRectF(0.5, 2.0, 15.0, 10.0), 1.5, 1.5);
    painter.drawRoundedRect(QRectF(5.0, 13.0, 6.0, 1.5), 0.75, 0.75);
    painter.setPen(QPen(Qt::white, 1.2));
    painter.drawEllipse(QPointF(8.0, 7.0), 3.2, 3.2);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(8.0, 7.0), 0.6, 0.6);
    return picture;
}

QIcon displayIcon() {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) icon.addPixmap(drawnIcon(size));
    return icon;
}

} // namespace

TrayIcon::TrayIcon(StatusMenu& menu) : menu_(menu) {
    fillMenu();
    QObject::connect(&shownMenu_, &QMenu::aboutToShow, &shownMenu_,
                     [this] { platform::guarded([this] { menu_.open([this] { showTitles(); }); }); });
}

bool TrayIcon::hasPlace() { return QSystemTrayIcon::isSystemTrayAvailable(); }

void TrayIcon::show() {
    if (!icon_) createIcon();
    icon_->show();
}

void TrayIcon::hide() {
    if (icon_) icon_->hide();
}

void TrayIcon::fillMenu() {
    for (const StatusMenu::Item& item : menu_.items()) {
        QAction* action =
            item.title.empty() ? shownMenu_.addSeparator() : shownMenu_.addAction(QString::fromStdString(item.title));
        action->setEnabled(static_cast<bool>(item.choose));
        if (item.choose)
            QObject::connect(action, &QAction::triggered, action, [choose = item.choose] { platform::guarded(choose); });
    }
}

void TrayIcon::showTitles() {
    const std::vector<StatusMenu::Item> items = menu_.items();
    const QList<QAction*> actions = shownMenu_.actions();
    for (std::size_t i = 0; i < items.size(); ++i) {
        actions[static_cast<qsizetype>(i)]->setText(QString::fromStdString(items[i].title));
    }
}

void TrayIcon::createIcon() {
    icon_ = std::make_unique<QSystemTrayIcon>(displayIcon());
    icon_->setToolTip(QStringLiteral("Touch Display"));
    icon_->setContextMenu(&shownMenu_);
    // There is nothing that a plain click could do but open the menu too.
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, &shownMenu_, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) shownMenu_.popup(QCursor::pos());
    });
}

} // namespace kelvo
