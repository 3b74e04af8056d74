#pragma once

#include <QTabWidget>

namespace kelvo {

/// Tabs that are high enough for a finger.
class TouchTabWidget : public QTabWidget {
    Q_OBJECT

public:
    explicit TouchTabWidget(QWidget* parent = nullptr);
};

} // namespace kelvo
