#pragma once

#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariantMap>

namespace kelvo {

/// A portal that knows the settings a test gives it.
class FakePortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    QVariantMap settings;
    int readings = 0;

public slots:
    QDBusVariant Read(const QString& group, const QString& key) {
        ++readings;
        const QVariant value = settings.value(group + QLatin1Char(' ') + key);
        if (!value.isValid()) sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"), key);
        return QDBusVariant(QVariant::fromValue(QDBusVariant(value)));
    }

signals:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

} // namespace kelvo
