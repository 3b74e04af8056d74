#include "hosts/window/PlaceMemory.h"

#include <QEvent>
#include <QSettings>

#include <utility>

namespace kelvo {

namespace {

constexpr char kGeometry[] = "geometry";

} // namespace

PlaceMemory::PlaceMemory(QWidget& window, QString file) : window_(window), file_(std::move(file)) {
    const QSettings settings(file_, QSettings::IniFormat);
    window.restoreGeometry(settings.value(QLatin1String(kGeometry)).toByteArray());
    window.installEventFilter(this);
}

bool PlaceMemory::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close) {
        QSettings settings(file_, QSettings::IniFormat);
        settings.setValue(QLatin1String(kGeometry), window_.saveGeometry());
    }
    return QObject::eventFilter(watched, event);
}

} // namespace kelvo
