#pragma once

#include "qt/PortalSettings.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

namespace kelvo {

/// Keeps an application dark while the desktop says so through its portal, where the toolkit has no theme for that
/// desktop which does.
class DesktopColours : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the portal on `bus` and goes on listening to it.
    void askPortal(const QDBusConnection& bus);

private:
    void take(const QString& group, const QString& key, const QVariant& value);

    PortalSettings portal_;
    bool isDarkByUs_ = false;
};

} // namespace kelvo
