#pragma once

#include "platform/Files.h"

namespace kelvo::touchctl {

/// The files of another manager, none of which can be changed: the settings are the driver's and the pane's to write.
class ReadOnlyFiles final : public platform::NSFileManager {
public:
    explicit ReadOnlyFiles(platform::NSFileManager& files) : files_(files) {}

    [[nodiscard]] bool fileExistsAtPath(const std::string& path) override { return files_.fileExistsAtPath(path); }
    void createDirectoryAtPath(const std::string& /*path*/) override {}
    [[nodiscard]] bool visitDirectoryAtPath(const std::string& path,
                                            const std::function<bool(std::string_view name)>& visit) override {
        return files_.visitDirectoryAtPath(path, visit);
    }
    [[nodiscard]] std::optional<platform::NSDate> modificationDateAtPath(const std::string& path) override {
        return files_.modificationDateAtPath(path);
    }
    [[nodiscard]] std::optional<platform::NSData> contentsAtPath(const std::string& path) override {
        return files_.contentsAtPath(path);
    }
    [[nodiscard]] bool writeAtomically(const std::string& /*path*/,
                                       std::span<const std::uint8_t> /*contents*/) override {
        return false;
    }
    [[nodiscard]] bool createAtomically(const std::string& /*path*/,
                                        std::span<const std::uint8_t> /*contents*/) override {
        return false;
    }
    [[nodiscard]] std::string homeDirectory() override { return files_.homeDirectory(); }
    [[nodiscard]] std::string localLibraryDirectory() override { return files_.localLibraryDirectory(); }

private:
    platform::NSFileManager& files_;
};

} // namespace kelvo::touchctl
