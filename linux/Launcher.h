#pragma once

#include "platform/Application.h"
#include "platform/Files.h"

namespace kelvo {

/// Starts applications as processes of their own, which nothing ties to this one: not its session, terminal, folder or
/// open files. The environment is handed on.
///
/// An application's folder X.app holds the program to start: AppRun, or else the program X.
class Launcher final : public platform::NSWorkspace {
public:
    /// `fileManager` tells where the machine-wide Library folder lies, and outlives the launcher.
    explicit Launcher(platform::NSFileManager& fileManager) : fileManager_(fileManager) {}

    /// A path under "/Library/" stands for the same path in the machine-wide Library folder. A second start is the
    /// application's own to notice.
    bool launchApplication(const std::string& fullPath) override;

private:
    [[nodiscard]] std::string pathOnThisSystem(const std::string& fullPath) const;

    platform::NSFileManager& fileManager_;
};

} // namespace kelvo
