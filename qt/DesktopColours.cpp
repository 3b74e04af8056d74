#include "qt/DesktopColours.h"

#include <QApplication>
#include <QColor>
#include <QPalette>

namespace kelvo {

namespace {

constexpr PortalSetting kColourScheme = {"org.freedesktop.appearance", "color-scheme"};
constexpr int kPrefersDark = 1;

/// Plasma has the user's own colours, light or dark, and the toolkit's theme for it brings them.
bool desktopBringsColours() { return qgetenv("XDG_CURRENT_DESKTOP").split(':').contains("KDE"); }

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QPalette darkPalette() {
    const QColor window(0x30, 0x30, 0x32);
    const QColor control(0x3A, 0x3A, 0x3C);
    const QColor accent(0x35, 0x84, 0xE4);
    QPalette palette(control, window);
    palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x28));
    palette.setColor(QPalette::ToolTipBase, control);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent.lighter());
    palette.setColor(QPalette::LinkVisited, accent.lighter());
    return palette;
}

} // namespace

void DesktopColours::askPortal(const QDBusConnection& bus) {
    if (desktopBringsColours()) return;
    connect(&portal_, &PortalSettings::told, this, &DesktopColours::take);
    portal_.ask(bus, {kColourScheme});
}

void DesktopColours::take(const QString& group, const QString& key, const QVariant& value) {
    if (group != QLatin1String(kColourScheme.group) || key != QLatin1String(kColourScheme.key)) return;
    const bool prefersDark = value.toInt() == kPrefersDark;
    if (prefersDark && !isDark(QApplication::palette())) {
        isDarkByUs_ = true;
        QApplication::setPalette(darkPalette());
    } else if (!prefersDark && isDarkByUs_) {
        isDarkByUs_ = false;
        QApplication::setPalette(QPalette());
    }
}

} // namespace kelvo
