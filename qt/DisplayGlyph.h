#pragma once

#include <QWidget>

namespace kelvo {

/// The outline of a display that is being touched, in the colour of disabled text.
class DisplayGlyph : public QWidget {
public:
    using QWidget::QWidget;

    [[nodiscard]] QSize sizeHint() const override { return {96, 72}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace kelvo
