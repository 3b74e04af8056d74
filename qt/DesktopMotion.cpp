#include "qt/DesktopMotion.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStyle>

#include <memory>

namespace kelvo {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kSettings[] = "org.freedesktop.portal.Settings";

/// A setting of a desktop that is zero or false when nothing is to move.
struct Setting {
    const char* group;
    const char* key;
};

constexpr Setting kMotionSettings[] = {
    {"org.gnome.desktop.interface", "enable-animations"},
    {"org.kde.kdeglobals.KDE", "AnimationDurationFactor"},
};

/// The value itself, out of the variants that the portal puts around it, one or two by what was asked.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

void DesktopMotion::askPortal(QDBusConnection bus) {
    // A slot is connected only if its types are known, and to make a connection is not enough for that.
    qRegisterMetaType<QDBusVariant>();
    // With the service's name in it this would ask the bus for the owner and wait.
    bus.connect(QString(), QLatin1String(kPortalPath), QLatin1String(kSettings), QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const Setting& setting : kMotionSettings) {
        QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(kPortal), QLatin1String(kPortalPath),
                                                           QLatin1String(kSettings), QStringLiteral("Read"));
        call.setAutoStartService(false);
        call.setArguments({QLatin1String(setting.group), QLatin1String(setting.key)});
        auto* const watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call), this).release();
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, &setting] {
            watcher->deleteLater();
            const QDBusPendingReply<QDBusVariant> reply = *watcher;
            if (reply.isValid()) {
                settingChanged(QLatin1String(setting.group), QLatin1String(setting.key), reply.value());
            }
        });
    }
}

bool DesktopMotion::isWantedOn(const QWidget& widget) const {
    return reducing_.isEmpty() && widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

void DesktopMotion::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    for (const Setting& setting : kMotionSettings) {
        if (group != QLatin1String(setting.group) || key != QLatin1String(setting.key)) continue;
        bool isNumber = false;
        const double number = unwrapped(value.variant()).toDouble(&isNumber);
        if (isNumber && number <= 0.0) {
            reducing_.insert(key);
        } else {
            reducing_.remove(key);
        }
        emit changed();
    }
}

} // namespace kelvo
