#pragma once

#include "peers/calibration/Calibrator.h"

#include <string>

namespace kelvo {

/// What is to be done now.
[[nodiscard]] std::string instructionOf(const Calibrator& calibrator);
/// How it ended.
[[nodiscard]] std::string textOf(Calibrator::Outcome outcome, const Calibrator& calibrator);

} // namespace kelvo
