#include "qt/ReturnedValue.h"

#include "qt/NamingWidgets.h"

#include <QAccessible>
#include <QLabel>
#include <QTimer>

#include <chrono>
#include <utility>

namespace kelvo {

namespace {

/// For reading the bounds in peace.
constexpr std::chrono::seconds kIsShownFor{5};
/// Of the colour that selected text has.
constexpr double kTint = 0.35;

QColor mixed(const QColor& one, const QColor& other, double part) {
    const auto mix = [part](int from, int to) { return static_cast<int>(from + (to - from) * part); };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

void tint(QLineEdit& field) {
    QPalette palette;
    const QPalette usual = field.parentWidget()->palette();
    palette.setColor(QPalette::Base, mixed(usual.color(QPalette::Base), usual.color(QPalette::Highlight), kTint));
    field.setPalette(palette);
    QTimer::singleShot(kIsShownFor, &field, [&field] { field.setPalette({}); });
}

void stress(QLabel& label) {
    QFont bold;
    bold.setBold(true);
    label.setFont(bold);
    QAccessibleEvent event(&label, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
    QTimer::singleShot(kIsShownFor, &label, [&label] { label.setFont({}); });
}

} // namespace

void showThatValueCameBack(QLineEdit& field) {
    tint(field);
    for (QLabel* label : widgetsNaming<QLabel>(*field.window(), "bounds", field)) stress(*label);
}

bool TypedText::isReplacedBy(const QString& text) {
    if (typed_.isEmpty() || text == typed_) return false;
    typed_.clear();
    return true;
}

} // namespace kelvo
