#pragma once

#include <QObject>
#include <QString>
#include <QWidget>

namespace kelvo {

/// Lets a window open where and as large as it was when it was last closed. On Wayland a window has no say in where it
/// opens, only in how large it is.
class PlaceMemory : public QObject {
public:
    /// Restores `window`, which has not been shown yet, from `file` at once, and writes there whenever it closes. A
    /// file that is missing or damaged leaves it as it is; what does not fit the screens of today is made to.
    PlaceMemory(QWidget& window, QString file);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget& window_;
    QString file_;
};

} // namespace kelvo
