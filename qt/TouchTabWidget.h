#pragma once

#include <QTabWidget>

namespace kelvo {

/// Tabs that are high enough for a finger.
class TouchTabWidget : public QTabWidget {
    Q_OBJECT

public:
    explicit TouchTabWidget(QWidget* parent = nullptr);

    /// With the dynamic property "pagesScroll", a wrapped text on a page does not keep the pages from getting smaller.
    [[nodiscard]] bool hasHeightForWidth() const override;
};

} // namespace kelvo
