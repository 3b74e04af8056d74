#pragma once

#include "qt/PortalSettings.h"

#include <QDBusConnection>
#include <QObject>
#include <QSet>
#include <QString>
#include <QWidget>

namespace kelvo {

/// Whether the user lets the desktop move things: by the style, and by the desktop's settings where a portal tells.
class DesktopMotion : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the portal on `bus` and goes on listening to it. Until an answer comes the style alone decides.
    void askPortal(const QDBusConnection& bus);

    /// Whether things on `widget` may move.
    [[nodiscard]] bool isWantedOn(const QWidget& widget) const;

signals:
    /// The desktop's settings may say something else now.
    void changed();

private:
    void take(const QString& group, const QString& key, const QVariant& value);

    PortalSettings portal_;
    /// The settings that are against motion.
    QSet<QString> reducing_;
};

} // namespace kelvo
