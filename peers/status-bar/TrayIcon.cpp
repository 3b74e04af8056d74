#include "peers/status-bar/TrayIcon.h"

#include "TDUtilities.h"
#include "platform/Guarded.h"

#include <QCursor>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

/// A sign that something is to be done, in the corner, with an edge that sets it off.
void drawMark(QPainter& painter) {
    painter.setPen(QPen(Qt::white, 1.0));
    painter.setBrush(QColor(0xd9, 0x6c, 0x06));
    painter.drawEllipse(QPointF(11.5, 11.0), 4.0, 4.0);
    painter.setPen(QPen(Qt::white, 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(11.5, 8.8), QPointF(11.5, 11.2));
    painter.drawPoint(QPointF(11.5, 13.2));
}

/// A display that is being touched, filled, so that it stands out from panels of any colour.
QPixmap drawnIcon(int size, bool isMarked) {
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
    if (isMarked) drawMark(painter);
    return picture;
}

QIcon displayIcon(bool isMarked) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) icon.addPixmap(drawnIcon(size, isMarked));
    return icon;
}

/// What the icon is called, and what is to be done.
QString toolTip(const std::string& advice) {
    const QString name = QString::fromStdString(localizedString("Window.Title", "Kelvo Touch Display"));
    return advice.empty() ? name : name + QLatin1Char('\n') + QString::fromStdString(advice);
}

void showItem(QAction& action, const StatusMenu::Item& item) {
    action.setText(QString::fromStdString(item.title));
    action.setVisible(item.isShown);
    action.setChecked(item.isTicked.value_or(false));
    // What is there to be read is not greyed, as what cannot be chosen now is.
    action.setEnabled(item.choose ? item.isOffered : !item.isSeparator);
}

/// A menu that grows while it is open would do so beyond the edge of the screen.
void keepOnScreen(QMenu& menu) {
    if (!menu.isVisible()) return;
    menu.adjustSize();
    const QRect screen = menu.screen()->availableGeometry();
    QRect place = menu.geometry();
    place.moveRight(std::min(place.right(), screen.right()));
    place.moveBottom(std::min(place.bottom(), screen.bottom()));
    place.moveLeft(std::max(place.left(), screen.left()));
    place.moveTop(std::max(place.top(), screen.top()));
    menu.move(place.topLeft());
}

} // namespace

TrayIcon::TrayIcon(StatusMenu& menu) : menu_(menu) {
    fillMenu();
    QObject::connect(&shownMenu_, &QMenu::aboutToShow, &shownMenu_,
                     [this] { platform::guarded([this] { openMenu(); }); });
}

bool TrayIcon::hasPlace() { return QSystemTrayIcon::isSystemTrayAvailable(); }

void TrayIcon::show() {
    if (!icon_) createIcon();
    icon_->show();
    openMenu();
}

void TrayIcon::hide() {
    if (icon_) icon_->hide();
}

void TrayIcon::fillMenu() {
    for (const StatusMenu::Item& item : menu_.items()) {
        QAction* action =
            item.isSeparator ? shownMenu_.addSeparator() : shownMenu_.addAction(QString::fromStdString(item.title));
        action->setCheckable(item.isTicked.has_value());
        if (item.choose) {
            QObject::connect(action, &QAction::triggered, action,
                             [choose = item.choose] { platform::guarded(choose); });
        }
        showItem(*action, item);
    }
}

void TrayIcon::openMenu() {
    menu_.open([this] { showState(); });
}

void TrayIcon::showState() {
    const std::vector<StatusMenu::Item> items = menu_.items();
    const QList<QAction*> actions = shownMenu_.actions();
    for (std::size_t i = 0; i < items.size(); ++i) {
        showItem(*actions[static_cast<int>(i)], items[i]);
    }
    keepOnScreen(shownMenu_);
    if (!icon_ || advice_ == menu_.advice()) return;
    advice_ = menu_.advice();
    icon_->setIcon(displayIcon(!advice_.empty()));
    icon_->setToolTip(toolTip(advice_));
}

void TrayIcon::createIcon() {
    advice_ = menu_.advice();
    icon_ = std::make_unique<QSystemTrayIcon>(displayIcon(!advice_.empty()));
    icon_->setToolTip(toolTip(advice_));
    icon_->setContextMenu(&shownMenu_);
    // There is nothing that a plain click could do but open the menu too.
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, &shownMenu_, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) shownMenu_.popup(QCursor::pos());
    });
}

} // namespace kelvo
