#pragma once

#include "linux/BundleDirectory.h"
#include "linux/BusMessagePorts.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Log.h"
#include "platform/Platform.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace kelvo {

/// Lines are made and dropped: how long the journal takes is not ours to measure.
class DroppedLog final : public platform::SystemLog {
public:
    void write(std::string_view /*line*/) override {}
};

/// The real ports, which count what was answered, so that nobody measures changes that are not sent.
class CountedPorts final : public BusMessagePorts {
public:
    using BusMessagePorts::BusMessagePorts;

    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string& name) override {
        return std::make_unique<Remote>(BusMessagePorts::createRemote(name), answered_);
    }

    [[nodiscard]] std::int64_t answered() const { return answered_; }

private:
    class Remote final : public platform::CFRemoteMessagePort {
    public:
        Remote(std::unique_ptr<platform::CFRemoteMessagePort> port, std::int64_t& answered)
            : port_(std::move(port)), answered_(answered) {}

        platform::CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data,
                                                  double sendTimeout, double receiveTimeout,
                                                  platform::NSData& reply) override {
            const auto status = port_->sendRequest(messageId, data, sendTimeout, receiveTimeout, reply);
            if (status == platform::CFMessagePortStatus::Success) ++answered_;
            return status;
        }

    private:
        std::unique_ptr<platform::CFRemoteMessagePort> port_;
        std::int64_t& answered_;
    };

    std::int64_t answered_ = 0;
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

    /// How many messages have been answered.
    [[nodiscard]] std::int64_t answered() const { return ports_.answered(); }

private:
    DroppedLog log_;
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    std::unique_ptr<BundleDirectory> bundle_;
    CountedPorts ports_;
    SystemClock clock_;
    platform::Platform platform_;
    platform::PlatformInUse inUse_{platform_};
};

} // namespace kelvo
