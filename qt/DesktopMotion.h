#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
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

    /// Asks the portal on `bus` and goes on listening to it. Nobody is waited for: until an answer comes the style
    /// alone decides, and a portal that does not run is not started.
    void askPortal(QDBusConnection bus);

    /// Whether things on `widget` may move.
    [[nodiscard]] bool isWantedOn(const QWidget& widget) const;

signals:
    /// The desktop's settings may say something else now.
    void changed();

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

    /// The settings that are against motion.
    QSet<QString> reducing_;
};

} // namespace kelvo
