#pragma once

#include <QLineEdit>

namespace kelvo {

/// A line to type a number into, as wide as the largest takes that its dynamic property "maximum" allows.
class NumberEdit : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
};

} // namespace kelvo
