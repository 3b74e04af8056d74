#pragma once

#include "linux/BusMessagePorts.h"
#include "linux/PlistCoder.h"
#include "linux/PollRunLoop.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "peers/PortProbe.h"
#include "peers/ProductStrings.h"
#include "peers/touchctl/ReadOnlyFiles.h"
#include "peers/touchctl/ReportingPorts.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace kelvo::touchctl {

/// What this program has to say, it says itself; the lines of the pane's functions are for the pane's log.
class NoLog final : public platform::SystemLog {
public:
    void write(std::string_view /*line*/) override {}
    [[nodiscard]] bool isRead() const override { return false; }
};

/// The concrete services of this program, in use for as long as this lives: the product's files can only be read, and
/// what is sent is reported.
class Services {
public:
    PollRunLoop runLoop;
    PosixFileManager files;

private:
    NoLog log_;
    ReadOnlyFiles readOnlyFiles_{files};
    PlistCoder propertyLists_;
    ProductStrings strings_;
    BusMessagePorts busPorts_{runLoop};
    SystemClock clock_;

public:
    ReportingPorts ports{busPorts_};

private:
    platform::Platform platform_{.log = log_,
                                 .fileManager = readOnlyFiles_,
                                 .propertyLists = propertyLists_,
                                 .bundles = strings_,
                                 .messagePorts = ports,
                                 .runLoop = runLoop,
                                 .clock = clock_,
                                 .systemVersion = clock_};
    platform::PlatformInUse inUse_{platform_};
};

/// Whether the session's bus takes this program, within two seconds.
[[nodiscard]] bool hasSessionBus();
/// What the owner of a port does when it is called. An owner that is slow for a moment gets another chance.
[[nodiscard]] PortAnswer answerOfPort(const std::string& port);

} // namespace kelvo::touchctl
