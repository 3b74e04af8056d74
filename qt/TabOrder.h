#pragma once

#include <QWidget>

namespace kelvo {

// What comes into a window comes last for the Tab key; these put `content`, which has just come, in its proper place,
// in its own order.

/// Behind `before`. The result is the last stop of `content`, or `before` when there is none.
QWidget& putBehindInTabOrder(QWidget& before, QWidget& content);

/// To where `holder`, in which it stands, has its place. The result is the last stop of `content`, or `holder` when
/// there is none.
QWidget& putInsideInTabOrder(QWidget& holder, QWidget& content);

} // namespace kelvo
