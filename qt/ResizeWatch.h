#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

namespace kelvo {

/// Tells of every change of a widget's size, for as long as it lives.
class ResizeWatch : public QObject {
public:
    ResizeWatch(QWidget& widget, std::function<void()> resized);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> resized_;
};

} // namespace kelvo
