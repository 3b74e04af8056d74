#pragma once

#include <QByteArray>
#include <QColor>
#include <QPalette>

namespace kelvo {

/// What a pictogram is drawn with: its lines, and the fingers that stand out from them.
struct PictogramColours {
    QColor ink;
    QColor fingers;
};

/// The colours for something that stands on a window: fingers have the highlight's colour where that can be told from
/// the window, and what is disabled has one colour alone.
[[nodiscard]] PictogramColours pictogramColours(const QPalette& palette, bool isEnabled);

/// The drawing of a pictogram in `colours`, at a point of its motion: from 0, at rest, to 1, at rest again. Empty when
/// `svg` is not well formed.
///
/// Its groups are of the class "ink" or "fingers", drawn in the "currentColor" that they get here. What moves says how
/// by a list of steps separated by semicolons, evenly apart in time:
///
///     data-move="0 0; 3 -3; 0 0"    by so much to the right and down
///     data-turn="0; 70; 0"          by so many degrees clockwise around the middle
///     data-scale="1; 0.4; 1"        of a circle, around its own centre
///     data-opacity="1; 0; 1"
[[nodiscard]] QByteArray pictogramFrame(const QByteArray& svg, const PictogramColours& colours, double progress);

} // namespace kelvo
