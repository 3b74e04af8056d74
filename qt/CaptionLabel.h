#pragma once

#include <QLabel>

namespace kelvo {

/// The words of a button that stand beside it. A click on them is one on their buddy.
class CaptionLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};

} // namespace kelvo
