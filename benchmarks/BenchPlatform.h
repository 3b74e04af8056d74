#pragma once

#include "linux/BundleDirectory.h"
#include "linux/BusMessagePorts.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Log.h"
#include "platform/Platform.h"

#include <memory>

namespace kelvo {

/// Lines are made and dropped: how long the journal takes is not ours to measure.
class DroppedLog final : public platform::SystemLog {
public:
    void write(std::string_view /*line*/) override {}
};

/// The services of the real programs, in use for as long as this lives, without a journal.
class BenchPlatform {
public:
    BenchPlatform(platform::CFRunLoop& runLoop, const std::string& panePath, platform::NSNibs* nibs = nullptr)
        : bundle_(BundleDirectory::open(panePath)),
          ports_(runLoop),
          platform_{.log = log_,
                    .fileManager = fileManager_,
                    .propertyLists = propertyLists_,
                    .bundles = *bundle_,
                    .messagePorts = ports_,
                    .runLoop = runLoop,
                    .clock = clock_,
                    .systemVersion = clock_,
                    .nibs = nibs} {}

private:
    DroppedLog log_;
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    std::unique_ptr<BundleDirectory> bundle_;
    BusMessagePorts ports_;
    SystemClock clock_;
    platform::Platform platform_;
    platform::PlatformInUse inUse_{platform_};
};

} // namespace kelvo
