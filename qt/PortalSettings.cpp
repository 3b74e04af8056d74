#include "qt/PortalSettings.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <memory>

namespace kelvo {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";

/// The value itself, out of the variants that the portal puts around it, one or two by what was asked.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

void PortalSettings::ask(QDBusConnection bus, const std::vector<PortalSetting>& settings) {
    // A slot is connected only if its types are known, and to make a connection is not enough for that.
    qRegisterMetaType<QDBusVariant>();
    // With the service's name in it this would ask the bus for the owner and wait.
    bus.connect(QString(), QLatin1String(kPortalPath), QLatin1String(kSettings), QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const PortalSetting& setting : settings) {
        QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(kPortal), QLatin1String(kPortalPath),
                                                           QLatin1String(kSettings), QStringLiteral("Read"));
        call.setAutoStartService(false);
        call.setArguments({QLatin1String(setting.group), QLatin1String(setting.key)});
        auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call), this).release();
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, setting] {
            watcher->deleteLater();
            const QDBusPendingReply<QDBusVariant> reply = *watcher;
            if (reply.isValid()) {
                settingChanged(QLatin1String(setting.group), QLatin1String(setting.key), reply.value());
            }
        });
    }
}

void PortalSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    emit told(group, key, unwrapped(value.variant()));
}

} // namespace kelvo
