#include "qt/DesktopMotion.h"

#include <QStyle>

namespace kelvo {

namespace {

/// Each is zero or false when nothing is to move.
const std::vector<PortalSetting> kMotionSettings = {
    {"org.gnome.desktop.interface", "enable-animations"},
    {"org.kde.kdeglobals.KDE", "AnimationDurationFactor"},
};

} // namespace

void DesktopMotion::askPortal(const QDBusConnection& bus) {
    connect(&portal_, &PortalSettings::told, this, &DesktopMotion::take);
    portal_.ask(bus, kMotionSettings);
}

bool DesktopMotion::isWantedOn(const QWidget& widget) const {
    return reducing_.isEmpty() && widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

void DesktopMotion::take(const QString& group, const QString& key, const QVariant& value) {
    for (const PortalSetting& setting : kMotionSettings) {
        if (group != QLatin1String(setting.group) || key != QLatin1String(setting.key)) continue;
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        if (isNumber && number <= 0.0) {
            reducing_.insert(key);
        } else {
            reducing_.remove(key);
        }
        emit changed();
    }
}

} // namespace kelvo
