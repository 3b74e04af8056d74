#pragma once

#include <QComboBox>

namespace kelvo {

/// The least height of what is touched, in the toolkit's pixels, which are the same size on every display: about 9 mm.
inline constexpr int kTouchHeight = 44;

/// Makes the choices in the menu of a combo box high enough for a finger.
void offerChoicesToFingers(QComboBox& comboBox);

} // namespace kelvo
