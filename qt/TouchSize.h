#pragma once

#include <QComboBox>

namespace kelvo {

/// The least height of what is touched, in the toolkit's pixels: 9 mm and more where those are as large as they should
/// be.
inline constexpr int kTouchHeight = 44;

/// The same where so many of the toolkit's pixels are an inch of glass: never less than 9 mm, as far as a screen's size
/// can be believed.
[[nodiscard]] int touchHeightAt(double dotsPerInch);

/// The same on the screen of `widget`.
[[nodiscard]] int touchHeightFor(const QWidget& widget);

/// Makes the choices in the menu of a combo box high enough for a finger.
void offerChoicesToFingers(QComboBox& comboBox);

} // namespace kelvo
