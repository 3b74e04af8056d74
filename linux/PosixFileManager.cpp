#include "linux/PosixFileManager.h"

#include "linux/SystemClock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {

namespace {

constexpr mode_t kModeOfNewFolder = 0755;
constexpr mode_t kModeOfNewFile = 0600;
constexpr mode_t kModeBits = 07777;
/// The number of consecutive links that the kernel follows.
constexpr int kMostLinks = 40;
/// Leaves room in a file name (255 bytes) for the additions that make it temporary.
constexpr std::size_t kLongestNamePart = 200;
/// The number of simultaneous saves of one file whose names the next save looks for.
constexpr int kSavesAtOnce = 8;

bool canBeNamed(const std::string& path) { return path.find('\0') == std::string::npos; }

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

/// The folder that contains `path`, with a trailing "/"; empty for the current folder.
std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor_ >= 0) (void)::close(descriptor_);
    }

    explicit operator bool() const { return descriptor_ >= 0; }
    [[nodiscard]] int get() const { return descriptor_; }

private:
    int descriptor_;
};

struct DirectoryCloser {
    void operator()(DIR* directory) const { (void)::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

/// The next entry of the folder; null at the end (errno is 0) or after a read error.
const dirent* nextEntry(DIR& directory) {
    errno = 0;
    return ::readdir(&directory);
}

/// Whether the entry `path` is this very file.
bool isEntryOf(const std::string& path, const FileDescriptor& file) {
    struct stat entry {};
    struct stat opened {};
    return ::lstat(path.c_str(), &entry) == 0 && ::fstat(file.get(), &opened) == 0 && S_ISREG(opened.st_mode) &&
           entry.st_dev == opened.st_dev && entry.st_ino == opened.st_ino;
}

bool lock(const FileDescriptor& file) {
    return uninterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) == 0;
}

/// Opens an existing file to lock it. Some file systems lock only files that are open for writing.
FileDescriptor openedForLock(const std::string& path) {
    constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    FileDescriptor writable(::open(path.c_str(), O_RDWR | kFlags));
    if (writable || errno != EACCES) return writable;
    return FileDescriptor(::open(path.c_str(), O_RDONLY | kFlags));
}

/// Removes a temporary file whose process was killed. The kernel releases the lock of a killed process, in whatever
/// container that ran, so a file that can be locked is abandoned. A file that cannot be locked at all is left alone.
void removeIfAbandoned(const std::string& path) {
    const FileDescriptor file = openedForLock(path);
    // The locked file may have been renamed since, and the name may belong to another file.
    if (file && lock(file) && isEntryOf(path, file)) (void)::unlink(path.c_str());
}

/// Creates a locked file, if the file system supports locks; none if the name is taken.
FileDescriptor newLockedFile(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kModeOfNewFile));
    if (!file) return file;
    // Between the two calls, another save may have treated the file as abandoned.
    const bool isTaken = (!lock(file) && errno == EWOULDBLOCK) || !isEntryOf(path, file);
    return isTaken ? FileDescriptor(-1) : std::move(file);
}

/// A file that is removed unless it replaces another one. It stays locked as long as it has its temporary name, and
/// nobody removes or moves a file that is locked by another process.
class TemporaryFile {
public:
    /// Creates a file in `folder`, readable and writable by its owner, which will replace the file `name` there.
    /// Removes the leftovers of killed processes that were saving a file of that name.
    TemporaryFile(const std::string& folder, const std::string& name) {
        // No other program creates or looks for temporary files with this prefix.
        const std::string common = folder + ".saving-" + name.substr(0, kLongestNamePart) + '.';
        for (int number = 0; number < kSavesAtOnce; ++number) {
            const std::string path = common + std::to_string(number);
            removeIfAbandoned(path);
            if (!descriptor_) take(path, newLockedFile(path));
        }
        if (descriptor_) return;
        std::string path = common + "XXXXXX";
        FileDescriptor file(::mkostemp(path.data(), O_CLOEXEC));
        take(path, std::move(file));
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ && !hasMoved_) (void)::unlink(path_.c_str());
    }

    /// Writes the file and waits until all of it is on the disk.
    [[nodiscard]] bool write(std::span<const std::uint8_t> contents, mode_t mode) {
        while (descriptor_ && !contents.empty()) {
            const ssize_t written =
                uninterrupted([&] { return ::write(descriptor_.get(), contents.data(), contents.size()); });
            if (written < 0) return false;
            contents = contents.subspan(static_cast<std::size_t>(written));
        }
        return descriptor_ && ::fchmod(descriptor_.get(), mode) == 0 &&
               uninterrupted([&] { return ::fsync(descriptor_.get()); }) == 0;
    }

    [[nodiscard]] bool moveTo(const std::string& path) {
        hasMoved_ = std::rename(path_.c_str(), path.c_str()) == 0;
        return hasMoved_;
    }

    /// Renames the file without replacing another one, if the file system supports that in one step.
    [[nodiscard]] bool moveToFree(const std::string& path) {
        hasMoved_ = ::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0;
        return hasMoved_ || (errno == EINVAL && moveTo(path));
    }

private:
    void take(const std::string& path, FileDescriptor file) {
        path_ = path;
        descriptor_ = std::move(file);
    }

    std::string path_;
    FileDescriptor descriptor_{-1};
    bool hasMoved_ = false;
};

/// The destination of a write to `path`: the target of its symbolic links, whether it exists or not. None if the links
/// are circular or the path cannot be resolved.
std::optional<std::string> behindLinks(std::string path) {
    for (int links = 0; links <= kMostLinks; ++links) {
        std::array<char, PATH_MAX> target{};
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return errno == EINVAL || errno == ENOENT ? std::optional(path) : std::nullopt;
        const std::string_view next(target.data(), static_cast<std::size_t>(length));
        path = (next.starts_with('/') ? std::string() : folderOf(path)).append(next);
    }
    return std::nullopt;
}

/// The file that a write to `path` creates or replaces; none if no file can have that name.
std::optional<std::string> fileToWrite(const std::string& path) {
    if (!canBeNamed(path)) return std::nullopt;
    std::optional<std::string> file = behindLinks(path);
    if (!file || file->empty() || file->back() == '/') return std::nullopt;
    return file;
}

/// Protects the folder entry against power failures. Not every file system can; the file is in place anyway.
void syncFolder(const std::string& folder) {
    const char* path = folder.empty() ? "." : folder.c_str();
    const FileDescriptor descriptor(::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor) (void)uninterrupted([&] { return ::fsync(descriptor.get()); });
}

std::string homeInPasswordDatabase() {
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return "/";
    return found->pw_dir;
}

} // namespace

bool PosixFileManager::fileExistsAtPath(const std::string& path) {
    struct stat status {};
    return canBeNamed(path) && ::stat(path.c_str(), &status) == 0;
}

void PosixFileManager::createDirectoryAtPath(const std::string& path) {
    if (!canBeNamed(path)) return;
    // If a parent exists or cannot be created, creating the next folder shows which.
    for (std::size_t end = path.find('/', 1); end < path.size(); end = path.find('/', end + 1)) {
        (void)::mkdir(path.substr(0, end).c_str(), kModeOfNewFolder);
    }
    (void)::mkdir(path.c_str(), kModeOfNewFolder);
}

bool PosixFileManager::visitDirectoryAtPath(const std::string& path,
                                            const std::function<bool(std::string_view name)>& visit) {
    if (!canBeNamed(path)) return false;
    const Directory directory(::opendir(path.c_str()));
    if (!directory) return false;
    while (const dirent* entry = nextEntry(*directory)) {
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        if (!visit(name)) return true;
    }
    return errno == 0;
}

std::optional<platform::NSDate> PosixFileManager::modificationDateAtPath(const std::string& path) {
    struct stat status {};
    if (!canBeNamed(path) || ::lstat(path.c_str(), &status) != 0) return std::nullopt;
    return dateOf(status.st_mtim);
}

std::optional<platform::NSData> PosixFileManager::contentsAtPath(const std::string& path) {
    if (!canBeNamed(path)) return std::nullopt;
    // Without O_NONBLOCK, opening a pipe in place of the file would wait for a writer.
    const FileDescriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (std::cmp_greater(status.st_size, kLargestFile)) return std::nullopt;
    platform::NSData contents;
    std::array<std::uint8_t, 65536> buffer{};
    // The file may be growing, and some system files do not report their size.
    while (contents.size() <= kLargestFile) {
        const ssize_t count = uninterrupted([&] { return ::read(file.get(), buffer.data(), buffer.size()); });
        if (count < 0) return std::nullopt;
        if (count == 0) return contents;
        contents.insert(contents.end(), buffer.begin(), buffer.begin() + count);
    }
    return std::nullopt;
}

bool PosixFileManager::writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) {
    const std::optional<std::string> target = fileToWrite(path);
    if (!target) return false;
    struct stat old {};
    const bool exists = ::lstat(target->c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) return false;
    // Most writes change nothing, and replacing a file with an identical one would wait for the disk twice.
    const bool isOfThatSize = exists && std::cmp_equal(old.st_size, contents.size());
    const auto present = isOfThatSize ? contentsAtPath(*target) : std::nullopt;
    if (present && std::ranges::equal(*present, contents)) return true;

    const std::string folder = folderOf(*target);
    TemporaryFile file(folder, target->substr(folder.size()));
    if (!file.write(contents, exists ? old.st_mode & kModeBits : kModeOfNewFile)) return false;
    if (!file.moveTo(*target)) return false;
    syncFolder(folder);
    return true;
}

bool PosixFileManager::createAtomically(const std::string& path, std::span<const std::uint8_t> contents) {
    const std::optional<std::string> target = fileToWrite(path);
    if (!target || fileExistsAtPath(*target)) return false;
    const std::string folder = folderOf(*target);
    TemporaryFile file(folder, target->substr(folder.size()));
    if (!file.write(contents, kModeOfNewFile) || !file.moveToFree(*target)) return false;
    syncFolder(folder);
    return true;
}

std::string PosixFileManager::homeDirectory() {
    const char* home = std::getenv("HOME");
    return withoutTrailingSlashes(home && *home ? home : homeInPasswordDatabase());
}

std::string PosixFileManager::localLibraryDirectory() {
    const char* library = std::getenv("KELVO_LOCAL_LIBRARY");
    return withoutTrailingSlashes(library && *library ? library : KELVO_LOCAL_LIBRARY);
}

} // namespace kelvo
