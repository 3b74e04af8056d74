#pragma once

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace fuzzing {

/// Ends the run as a finding when something does not hold.
inline void require(bool holds, std::string_view what) {
    if (holds) return;
    std::cerr << "does not hold: " << what << '\n';
    std::abort();
}

} // namespace fuzzing
