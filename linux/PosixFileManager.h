#pragma once

#include "platform/Files.h"

#include <cstddef>

namespace kelvo {

/// More bytes than any file has that is ever read here (256 MiB).
inline constexpr std::size_t kLargestFile = std::size_t{256} << 20U;

/// The files of this machine. A path with a NUL byte in it names nothing, however much of it would.
class PosixFileManager final : public platform::NSFileManager {
public:
    /// A symbolic link to nothing does not exist.
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) override;
    /// New folders are rwxr-xr-x, less what the umask takes away.
    void createDirectoryAtPath(const std::string& path) override;
    /// The folder itself and its parent ("." and "..") are left out. Costs no more than reading the folder, and stays
    /// sound when `visit` throws.
    [[nodiscard]] bool visitDirectoryAtPath(const std::string& path,
                                            const std::function<bool(std::string_view name)>& visit) override;
    /// As exact as the file system keeps it.
    [[nodiscard]] std::optional<platform::NSDate> modificationDateAtPath(const std::string& path) override;
    /// None also for what is no regular file, and for a file of more than `kLargestFile` bytes.
    [[nodiscard]] std::optional<platform::NSData> contentsAtPath(const std::string& path) override;
    /// A symbolic link stays and what it points to is replaced. The old file's mode is kept; a new file is its owner's
    /// alone. Only a regular file is replaced, and none by its like. What a process that was killed while it wrote the
    /// file left beside it is removed; what another one is writing at this moment is not touched.
    [[nodiscard]] bool writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) override;
    /// A link to nothing is not in the way: what it points to is created. On a file system that cannot refuse to
    /// replace a file, one that comes meanwhile is replaced.
    [[nodiscard]] bool createAtomically(const std::string& path, std::span<const std::uint8_t> contents) override;
    /// `$HOME`, else what the password database says, else "/".
    [[nodiscard]] std::string homeDirectory() override;
    /// The environment variable KELVO_LOCAL_LIBRARY, else the build setting of that name.
    [[nodiscard]] std::string localLibraryDirectory() override;
};

} // namespace kelvo
