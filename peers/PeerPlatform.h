#pragma once

#include "linux/BundleDirectory.h"
#include "linux/BusMessagePorts.h"
#include "linux/Journal.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "peers/ProductStrings.h"
#include "platform/Platform.h"

#include <memory>
#include <utility>

namespace kelvo {

/// The concrete services of a peer, which shows no pane, in use for as long as this lives. The run loop is the
/// program's own and outlives it; `name` is what the journal calls the program. Texts come from the pane's bundle, for
/// a peer that has it.
class PeerPlatform {
public:
    PeerPlatform(const char* name, platform::CFRunLoop& runLoop, std::unique_ptr<BundleDirectory> bundle = nullptr)
        : log_(name),
          bundle_(std::move(bundle)),
          ports_(runLoop),
          platform_{.log = log_,
                    .fileManager = fileManager_,
                    .propertyLists = propertyLists_,
                    .bundles = bundle_ ? static_cast<platform::NSBundles&>(*bundle_) : strings_,
                    .messagePorts = ports_,
                    .runLoop = runLoop,
                    .clock = clock_,
                    .systemVersion = clock_} {}

private:
    Journal log_;
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    ProductStrings strings_;
    std::unique_ptr<BundleDirectory> bundle_;
    BusMessagePorts ports_;
    SystemClock clock_;
    platform::Platform platform_;
    platform::PlatformInUse inUse_{platform_};
};

} // namespace kelvo
