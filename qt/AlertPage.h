#pragma once

#include "qt/AlertLabel.h"

#include <QSize>
#include <QWidget>

namespace kelvo {

/// An alert in place of the settings: a picture, what is wrong in bold, and below it what to do about it. The text is
/// one, whose first paragraph says what is wrong; the picture is whatever widget the form puts in here.
class AlertPage : public AlertLabel {
    Q_OBJECT

public:
    explicit AlertPage(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    [[nodiscard]] int measuredHeight(int width) const override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Places;
    [[nodiscard]] Places placesIn(QSize size) const;
    void placePicture();
};

} // namespace kelvo
