#include "Properties/TDCustemorPopUpButton.h"

TDCustemorPopUpButton::~TDCustemorPopUpButton() = default;
