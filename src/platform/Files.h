#pragma once

#include "platform/PropertyList.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// The file system. Nothing here throws; an operation that fails says so in its result or, where the caller cannot act
/// on it, not at all.
class NSFileManager {
public:
    NSFileManager() = default;
    NSFileManager(const NSFileManager&) = delete;
    NSFileManager& operator=(const NSFileManager&) = delete;
    virtual ~NSFileManager();

    static NSFileManager& defaultManager();

    /// Whether anything exists at `path`, a folder included.
    [[nodiscard]] virtual bool fileExistsAtPath(const std::string& path) = 0;
    /// Creates the folder with all its parents; failure shows only in that the folder is still missing.
    virtual void createDirectoryAtPath(const std::string& path) = 0;
    /// Calls `visit` with the name of each entry of the folder, in the order in which the file system lists them, until
    /// it returns false. False when the folder cannot be listed.
    [[nodiscard]] virtual bool visitDirectoryAtPath(const std::string& path,
                                                    const std::function<bool(std::string_view name)>& visit) = 0;
    /// When the entry itself, not what it may link to, was modified; none when it cannot be told.
    [[nodiscard]] virtual std::optional<NSDate> modificationDateAtPath(const std::string& path) = 0;
    /// The bytes of the file; none when it cannot be read.
    [[nodiscard]] virtual std::optional<NSData> contentsAtPath(const std::string& path) = 0;
    /// Puts `contents` in the file's place so that every reader, at any moment, finds the old file or the new one,
    /// whole. False when the old one still stands.
    [[nodiscard]] virtual bool writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) = 0;
    /// As `writeAtomically`, but only where nothing is: false also when another process was quicker, whose file stays.
    [[nodiscard]] virtual bool createAtomically(const std::string& path, std::span<const std::uint8_t> contents) = 0;
    /// The user's home folder, without a trailing "/".
    [[nodiscard]] virtual std::string homeDirectory() = 0;
    /// The machine-wide Library folder, without a trailing "/".
    [[nodiscard]] virtual std::string localLibraryDirectory() = 0;
};

/// `path` and `component` with exactly one "/" between them.
[[nodiscard]] std::string stringByAppendingPathComponent(std::string_view path, std::string_view component);

} // namespace platform
