#include "peers/touchctl/FileAccess.h"

#include "linux/Journal.h"
#include "linux/PosixFileManager.h"
#include "peers/touchctl/Failure.h"

#include <array>
#include <cerrno>
#include <iostream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvo::touchctl {

namespace {

constexpr std::size_t kBytesOfMebibyte = std::size_t{1} << 20U;

std::string lastReason() { return std::generic_category().message(errno); }

/// Closes its descriptor on destruction, except for standard input.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ > STDERR_FILENO) (void)::close(number_);
    }

    explicit operator bool() const { return number_ >= 0; }
    [[nodiscard]] int get() const { return number_; }

private:
    int number_;
};

template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

int openedForReading(const std::string& path, int flags = 0) {
    return uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC | flags); });
}

/// The errors that mean that a file does not exist.
bool isAbsence(int error) { return error == ENOENT || error == ENOTDIR; }

/// Finds out why a file could not be read, without waiting if it is a pipe.
StoredFile diagnosed(const std::string& path) {
    using State = StoredFile::State;
    const Descriptor file(openedForReading(path, O_NONBLOCK));
    if (!file) return {isAbsence(errno) ? State::Missing : State::Unreadable, {}, lastReason()};
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return {State::Unreadable, {}, lastReason()};
    if (!S_ISREG(status.st_mode)) return {State::Unreadable, {}, "not a regular file"};
    return {std::cmp_greater(status.st_size, kLargestFile) ? State::TooLarge : State::Damaged, {}, ""};
}

/// Whether to write into an existing file because it cannot be replaced: the entries of these folders may be open files
/// of the caller.
bool isStream(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return false;
    return !S_ISREG(status.st_mode) || path.starts_with("/dev/") || path.starts_with("/proc/");
}

/// False if not everything was written; errno says why.
bool writeInto(const std::string& path, std::span<const std::uint8_t> bytes) {
    const Descriptor stream(
        uninterrupted([&] { return ::open(path.c_str(), O_WRONLY | O_APPEND | O_NOCTTY | O_CLOEXEC); }));
    while (stream && !bytes.empty()) {
        const ssize_t written = uninterrupted([&] { return ::write(stream.get(), bytes.data(), bytes.size()); });
        if (written < 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return static_cast<bool>(stream);
}

} // namespace

std::string StoredFile::complaint() const {
    switch (state) {
    case State::Missing:
    case State::Readable:
        break;
    case State::Unreadable:
        return "cannot be read (" + reason + ")";
    case State::TooLarge:
        return "is too large (more than " + std::to_string(kLargestFile / kBytesOfMebibyte) + " MiB)";
    case State::Damaged:
        return "is damaged";
    }
    return "";
}

StoredFile storedFileAt(const std::string& path) {
    auto contents = platform::NSMutableDictionary::dictionaryWithContentsOfFile(path);
    if (contents) return {StoredFile::State::Readable, std::move(contents), ""};
    return diagnosed(path);
}

std::optional<std::string> reasonAgainstListing(const std::string& folder) {
    const Descriptor listed(openedForReading(folder, O_DIRECTORY));
    if (!listed && errno == ENOENT) return std::nullopt;
    if (!listed || ::faccessat(AT_FDCWD, folder.c_str(), X_OK, AT_EACCESS) != 0) return lastReason();
    return std::nullopt;
}

std::optional<std::string> reasonAgainstWriting(const std::string& folder) {
    const bool isWritable = ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    return isWritable || errno == ENOENT ? std::nullopt : std::optional(lastReason());
}

platform::NSData contentsOfInput(const std::string& path, std::size_t most) {
    const bool isStandard = path == "-";
    const std::string title = isStandard ? "standard input" : '"' + withVisibleControlCharacters(path) + '"';
    const Descriptor input(isStandard ? STDIN_FILENO : openedForReading(path));
    platform::NSData contents;
    std::array<std::uint8_t, 65536> buffer{};
    while (contents.size() <= most) {
        const ssize_t count =
            input ? uninterrupted([&] { return ::read(input.get(), buffer.data(), buffer.size()); }) : -1;
        if (count < 0) {
            throw Failure(Status::Failure,
                          title + " cannot be read (" + lastReason() + "); choose a file that you can read");
        }
        if (count == 0) return contents;
        contents.insert(contents.end(), buffer.begin(), buffer.begin() + count);
    }
    throw Failure(Status::Failure,
                  title + " is too large; the limit is " + std::to_string(most / kBytesOfMebibyte) + " MiB");
}

void writeToOutput(const std::string& path, std::span<const std::uint8_t> bytes) {
    if (path == "-") {
        std::cout.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return;
    }
    const bool isWritten = isStream(path) ? writeInto(path, bytes) : PosixFileManager().writeAtomically(path, bytes);
    if (isWritten) return;
    throw Failure(Status::Failure, "\"" + withVisibleControlCharacters(path) +
                                       "\" cannot be written; choose a file in a folder that you can write to");
}

} // namespace kelvo::touchctl
