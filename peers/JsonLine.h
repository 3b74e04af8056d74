#pragma once

#include "platform/PropertyList.h"

#include <string>

namespace kelvo {

/// A property-list value as JSON on one line. Data become base-16 text, dates their description, and a number that
/// JSON has no form for (NaN, infinity) becomes null. A whole real keeps its ".0", so that it is told from an integer.
/// Bytes that are no UTF-8 become the replacement character.
[[nodiscard]] std::string jsonLine(const platform::Value& value);

} // namespace kelvo
