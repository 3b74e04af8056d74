#pragma once

#include "linux/BundleDirectory.h"
#include "linux/BusMessagePorts.h"
#include "linux/Journal.h"
#include "linux/Launcher.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Platform.h"
#include "qt/Forms.h"
#include "qt/QtApplication.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"

#include <memory>
#include <string>
#include <utility>

namespace kelvo {

/// The concrete services of a host that shows a pane with Qt, in use for as long as this lives. Needs the toolkit's
/// application object to exist.
class QtHostPlatform {
public:
    /// For the bundle at `panePath`; `name` is what the journal calls the host. A std::runtime_error says what is wrong
    /// with the bundle.
    QtHostPlatform(std::string name, const std::string& panePath)
        : log_(std::move(name)), bundle_(BundleDirectory::open(panePath)) {}

    [[nodiscard]] std::unique_ptr<platform::NSPreferencePane> loadPane() { return bundle_->loadPane(platform_); }

    [[nodiscard]] BundleDirectory& bundle() { return *bundle_; }
    [[nodiscard]] platform::CFMessagePorts& messagePorts() { return messagePorts_; }
    [[nodiscard]] QtRunLoop& runLoop() { return runLoop_; }
    [[nodiscard]] QtApplication& application() { return application_; }
    [[nodiscard]] const QtNibs& nibs() const { return nibs_; }

private:
    Journal log_;
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    QtRunLoop runLoop_;
    BusMessagePorts messagePorts_{runLoop_};
    SystemClock clock_;
    Launcher workspace_{fileManager_};
    QtApplication application_;
    std::unique_ptr<BundleDirectory> bundle_;
    QtNibs nibs_{bundle_->identifier(), paneForms()};
    platform::Platform platform_{.log = log_,
                                 .fileManager = fileManager_,
                                 .propertyLists = propertyLists_,
                                 .bundles = *bundle_,
                                 .messagePorts = messagePorts_,
                                 .runLoop = runLoop_,
                                 .clock = clock_,
                                 .systemVersion = clock_,
                                 .workspace = &workspace_,
                                 .application = &application_,
                                 .nibs = &nibs_};
    platform::PlatformInUse inUse_{platform_};
};

} // namespace kelvo
