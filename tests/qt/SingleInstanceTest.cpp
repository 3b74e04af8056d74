#include "hosts/window/SingleInstance.h"
#include "qt/QtRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace kelvo {

namespace {

using platform::CFMessagePortStatus;
using testing::ElementsAre;

/// Ports of which this process, another one or nobody has the one that is asked for.
class OnePort : public platform::CFMessagePorts {
public:
    /// What a send to the other process comes to; none when this process can have the port.
    std::optional<CFMessagePortStatus> other;
    /// The names and ids of what happened, in order.
    std::vector<std::string> story;
    CallBack callBack;

    [[nodiscard]] std::unique_ptr<platform::CFMessagePort> createLocal(const std::string& name,
                                                                       CallBack whenReceived) override {
        if (other) return nullptr;
        story.push_back("open " + name);
        callBack = std::move(whenReceived);
        return std::make_unique<Local>(*this);
    }

    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string& name) override {
        story.push_back("look up " + name);
        return std::make_unique<Remote>(*this);
    }

private:
    class Source : public platform::CFRunLoopSource {
    public:
        explicit Source(OnePort& ports) : ports_(ports) {}
        void schedule(platform::CFRunLoop&) override { ports_.story.emplace_back("listen"); }
        void cancel() override { ports_.story.emplace_back("stop listening"); }

    private:
        OnePort& ports_;
    };

    class Local : public platform::CFMessagePort {
    public:
        explicit Local(OnePort& ports) : ports_(ports) {}
        [[nodiscard]] std::unique_ptr<platform::CFRunLoopSource> createRunLoopSource() override {
            return std::make_unique<Source>(ports_);
        }

    private:
        OnePort& ports_;
    };

    class Remote : public platform::CFRemoteMessagePort {
    public:
        explicit Remote(OnePort& ports) : ports_(ports) {}
        CFMessagePortStatus sendRequest(std::int32_t messageId, std::span<const std::uint8_t> data, double, double,
                                        platform::NSData&) override {
            ports_.story.push_back("send " + std::to_string(messageId) + " with " + std::to_string(data.size()) +
                                   " bytes");
            return ports_.other.value();
        }

    private:
        OnePort& ports_;
    };
};

class SingleInstanceTest : public testing::Test {
protected:
    OnePort ports_;
    QtRunLoop runLoop_;
    std::vector<std::string> tokens_;
    std::optional<SingleInstance> instance_{std::in_place, ports_, runLoop_,
                                            [this](const std::string& token) { tokens_.push_back(token); }};
};

TEST_F(SingleInstanceTest, FirstStartListensOnItsPortUntilItEnds) {
    EXPECT_EQ(instance_->claim(""), SingleInstance::Outcome::IsFirst);
    instance_.reset();
    EXPECT_THAT(ports_.story, ElementsAre("open WindowMessagePort", "listen", "stop listening"));
}

TEST_F(SingleInstanceTest, FirstStartHearsOfLaterOnesByMessageOneAlone) {
    EXPECT_EQ(instance_->claim(""), SingleInstance::Outcome::IsFirst);
    const auto port = ports_.createLocal("WindowMessagePort", ports_.callBack);
    const platform::NSData token{'a', '-', '1'};
    ports_.callBack(*port, 0, token);
    EXPECT_THAT(tokens_, ElementsAre());
    ports_.callBack(*port, 1, {});
    ports_.callBack(*port, 1, token);
    EXPECT_THAT(tokens_, ElementsAre("", "a-1"));
}

TEST_F(SingleInstanceTest, LaterStartTellsTheFirst) {
    ports_.other = CFMessagePortStatus::Success;
    EXPECT_EQ(instance_->claim(""), SingleInstance::Outcome::OtherWasTold);
    EXPECT_THAT(ports_.story, ElementsAre("look up WindowMessagePort", "send 1 with 0 bytes"));
}

TEST_F(SingleInstanceTest, LaterStartPassesItsTokenOn) {
    ports_.other = CFMessagePortStatus::Success;
    EXPECT_EQ(instance_->claim("a-1"), SingleInstance::Outcome::OtherWasTold);
    EXPECT_THAT(ports_.story, ElementsAre("look up WindowMessagePort", "send 1 with 3 bytes"));
}

TEST_F(SingleInstanceTest, FirstThatDoesNotAnswerIsHung) {
    for (const auto status : {CFMessagePortStatus::SendTimeout, CFMessagePortStatus::ReceiveTimeout}) {
        ports_.other = status;
        EXPECT_EQ(instance_->claim(""), SingleInstance::Outcome::OtherIsHung);
    }
}

TEST_F(SingleInstanceTest, StartWithoutASessionBusIsTheFirst) {
    for (const auto status : {CFMessagePortStatus::IsInvalid, CFMessagePortStatus::TransportError}) {
        ports_.other = status;
        EXPECT_EQ(instance_->claim(""), SingleInstance::Outcome::IsFirst);
    }
}

} // namespace

} // namespace kelvo
