#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kelvo {

/// A process, by the name that the kernel has of it, which is cut to 15 characters.
struct RunningProgram {
    std::string name;
    pid_t process = 0;
};

/// The processes that have a file open, as far as this one may see that: mostly those of the same user.
[[nodiscard]] std::vector<RunningProgram> programsWithOpen(const std::string& path);

} // namespace kelvo
