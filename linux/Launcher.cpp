#include "linux/Launcher.h"

#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {

namespace {

bool isProgram(const std::string& path) {
    struct stat status {};
    return path.find('\0') == std::string::npos && ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

/// "X" of "/folder/X.app".
std::string_view nameOfApplication(std::string_view path) {
    while (path.ends_with('/')) path.remove_suffix(1);
    path.remove_prefix(path.rfind('/') + 1);
    constexpr std::string_view kExtension = ".app";
    if (path.ends_with(kExtension)) path.remove_suffix(kExtension.size());
    return path;
}

std::optional<std::string> programOfApplication(const std::string& path) {
    for (const std::string_view name : {std::string_view("AppRun"), nameOfApplication(path)}) {
        std::string program = platform::stringByAppendingPathComponent(path, name);
        if (isProgram(program)) return program;
    }
    return std::nullopt;
}

/// What a started process inherits from this one, and what it does not.
class SpawnSettings {
public:
    SpawnSettings() {
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawn_file_actions_init(&files_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        ::posix_spawn_file_actions_destroy(&files_);
        ::posix_spawnattr_destroy(&attributes_);
    }

    /// False if memory runs out.
    [[nodiscard]] bool detach() {
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        return ::posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
               ::posix_spawnattr_setsigdefault(&attributes_, &all) == 0 &&
               ::posix_spawnattr_setflags(&attributes_, kFlags) == 0 &&
               ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDWR, 0) == 0 &&
               ::posix_spawn_file_actions_adddup2(&files_, STDIN_FILENO, STDOUT_FILENO) == 0 &&
               ::posix_spawn_file_actions_adddup2(&files_, STDIN_FILENO, STDERR_FILENO) == 0 &&
               ::posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1) == 0 &&
               ::posix_spawn_file_actions_addchdir_np(&files_, "/") == 0;
    }

    /// The process, or none if `program` could not be started.
    [[nodiscard]] std::optional<pid_t> spawn(std::string program) const {
        char* const arguments[] = {program.data(), nullptr};
        pid_t process = 0;
        const int error = ::posix_spawn(&process, program.c_str(), &files_, &attributes_, arguments, ::environ);
        return error == 0 ? std::optional(process) : std::nullopt;
    }

private:
    static constexpr short kFlags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;

    posix_spawnattr_t attributes_{};
    posix_spawn_file_actions_t files_{};
};

/// Waits in the background for the process to end, so that no zombie remains.
void reapWhenEnded(pid_t process) {
    try {
        std::thread([process] {
            while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    } catch (const std::system_error&) {
        // Without a thread, the zombie remains until this process ends. The application still runs.
    }
}

} // namespace

bool Launcher::launchApplication(const std::string& fullPath) {
    const std::optional<std::string> program = programOfApplication(pathOnThisSystem(fullPath));
    if (!program) return false;
    SpawnSettings settings;
    if (!settings.detach()) return false;
    const std::optional<pid_t> process = settings.spawn(*program);
    if (process) reapWhenEnded(*process);
    return process.has_value();
}

std::string Launcher::pathOnThisSystem(const std::string& fullPath) const {
    constexpr std::string_view kLibrary = "/Library";
    if (!fullPath.starts_with("/Library/")) return fullPath;
    return fileManager_.localLibraryDirectory() + fullPath.substr(kLibrary.size());
}

} // namespace kelvo
