#include "linux/OpenFiles.h"

#include <sys/stat.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>

namespace kelvo {

namespace {

using std::filesystem::directory_iterator;
using std::filesystem::path;

/// Processes and open files can disappear at any time; those are skipped.
template <typename Visit>
void visitFolder(const path& folder, const Visit& visit) {
    std::error_code error;
    for (directory_iterator entry(folder, error); !error && entry != directory_iterator(); entry.increment(error)) {
        visit(entry->path());
    }
}

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool hasOpen(const path& process, const struct stat& file) {
    bool isOpen = false;
    visitFolder(process / "fd", [&](const path& link) {
        struct stat opened {};
        isOpen = isOpen || (::stat(link.c_str(), &opened) == 0 && isSameFile(opened, file));
    });
    return isOpen;
}

std::optional<pid_t> numberOf(const path& process) {
    const std::string name = process.filename();
    pid_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc{} || end != name.data() + name.size()) return std::nullopt;
    return number;
}

std::string nameOf(const path& process) {
    std::string name;
    std::ifstream file(process / "comm");
    std::getline(file, name);
    return name;
}

} // namespace

std::vector<RunningProgram> programsWithOpen(const std::string& path) {
    std::vector<RunningProgram> programs;
    struct stat file {};
    if (::stat(path.c_str(), &file) != 0) return programs;
    visitFolder("/proc", [&](const std::filesystem::path& process) {
        const auto number = numberOf(process);
        if (number && hasOpen(process, file)) programs.push_back({nameOf(process), *number});
    });
    return programs;
}

} // namespace kelvo
