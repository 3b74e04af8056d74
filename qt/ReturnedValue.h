#pragma once

#include <QLineEdit>

namespace kelvo {

/// Lets it be seen for a while that a field shows something else than the user typed, and what may be typed: the field
/// is tinted, and labels whose dynamic property "bounds" names it are bold and spoken.
void showThatValueCameBack(QLineEdit& field);

/// Remembers in a field what the user types there, until something else comes back.
class TypedText {
public:
    void remember(const QString& text) { typed_ = text; }
    /// Whether `text` comes in place of what was typed.
    [[nodiscard]] bool isReplacedBy(const QString& text);

private:
    QString typed_;
};

} // namespace kelvo
