#pragma once

#include <QWidget>

namespace kelvo {

/// What radio buttons stand in of which one is chosen; screen readers name it as they enter it.
class RadioGroup : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;
};

} // namespace kelvo
