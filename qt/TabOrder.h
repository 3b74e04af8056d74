#pragma once

#include <QWidget>

namespace kelvo {

// What comes into a window comes last for the Tab key; these put `content`, which has just come, in its proper place,
// in its own order.

/// Behind `before`. The result is the last of `content`.
QWidget* putBehindInTabOrder(QWidget& before, QWidget& content);

/// To where `holder`, in which it stands, has its place. The result is the last of `content`.
QWidget* putInsideInTabOrder(QWidget& holder, QWidget& content);

} // namespace kelvo
