#pragma once

#include <QDBusConnection>
#include <QObject>

#include <optional>

namespace kelvo {

/// Whether the desktop has a place for status icons, now and whenever that changes. Nobody is waited for.
class StatusTray : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks on `bus` and goes on listening there.
    void ask(const QDBusConnection& bus);

signals:
    /// Told once for the first answer, and then for each change.
    void told(bool isThere);

private:
    Q_SLOT void askAgain();
    void tell(bool isThere);

    QDBusConnection bus_{QString()};
    std::optional<bool> isThere_;
};

} // namespace kelvo
