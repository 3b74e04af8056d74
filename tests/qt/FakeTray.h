#pragma once

#include <QObject>

namespace kelvo {

/// Who passes icons on to whoever shows them, if anybody does.
class FakeTray : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)

public:
    bool hasHost = true;
    int readings = 0;

    [[nodiscard]] bool isHostRegistered() {
        ++readings;
        return hasHost;
    }

signals:
    void StatusNotifierHostRegistered();
};

} // namespace kelvo
