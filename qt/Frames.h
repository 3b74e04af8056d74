#pragma once

#include "platform/Geometry.h"

#include <QRect>
#include <QWidget>

namespace kelvo {

// Only here is it turned upside down: the platform's origin is at the bottom left, the toolkit's at the top left.

/// The frame of what stands at `geometry` in a view that is `height` high.
[[nodiscard]] platform::NSRect frameFromGeometry(const QRect& geometry, double height);

/// Where the toolkit puts what has `frame` in a view that is `height` high; whole pixels around it.
[[nodiscard]] QRect geometryFromFrame(const platform::NSRect& frame, double height);

/// Where `geometry`, which is meant for a `parent` that is read from the left, stands in one that is read from the
/// right.
[[nodiscard]] QRect mirroredIn(const QWidget& parent, const QRect& geometry);

} // namespace kelvo
