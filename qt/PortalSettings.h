#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

#include <vector>

namespace kelvo {

/// A setting of the desktop, as its portal names it.
struct PortalSetting {
    const char* group;
    const char* key;
};

/// What the desktop's settings portal says, now and whenever something changes. Nobody is waited for, and a portal that
/// does not run is not started.
class PortalSettings : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the portal on `bus` for these and goes on listening to it.
    void ask(QDBusConnection bus, const std::vector<PortalSetting>& settings);

signals:
    /// A setting, asked for or not, has that value.
    void told(const QString& group, const QString& key, const QVariant& value);

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

} // namespace kelvo
