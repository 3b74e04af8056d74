#include "qt/StatusTray.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QSystemTrayIcon>

#include <memory>

namespace kelvo {

namespace {

/// Who passes icons on to whoever shows them. The one without the other is no place.
constexpr char kWatcher[] = "org.kde.StatusNotifierWatcher";
constexpr char kWatcherPath[] = "/StatusNotifierWatcher";

} // namespace

void StatusTray::ask(const QDBusConnection& bus) {
    bus_ = bus;
    const QString watcher = QLatin1String(kWatcher);
    auto* const comesAndGoes =
        std::make_unique<QDBusServiceWatcher>(watcher, bus_, QDBusServiceWatcher::WatchForOwnerChange, this).release();
    connect(comesAndGoes, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusTray::askAgain);
    for (const char* const signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        // With the service's name in it this would ask the bus for the owner and wait.
        bus_.connect(QString(), QLatin1String(kWatcherPath), watcher, QLatin1String(signal), this, SLOT(askAgain()));
    }
    askAgain();
}

void StatusTray::askAgain() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(QLatin1String(kWatcher), QLatin1String(kWatcherPath),
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setAutoStartService(false);
    call.setArguments({QLatin1String(kWatcher), QStringLiteral("IsStatusNotifierHostRegistered")});
    auto* const answer = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call), this).release();
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        // Where nobody passes icons on, an older kind of tray may stand on the display; the toolkit knows.
        tell((reply.isValid() && reply.value().variant().toBool()) || QSystemTrayIcon::isSystemTrayAvailable());
    });
}

void StatusTray::tell(bool isThere) {
    if (isThere_ == isThere) return;
    isThere_ = isThere;
    emit told(isThere);
}

} // namespace kelvo
