#include "peers/touchctl/Services.h"

#include "linux/BusConnection.h"

#include <optional>

namespace kelvo::touchctl {

namespace {

constexpr double kBusPatienceSeconds = 2.0;
/// Longer than any probe takes.
constexpr double kProbeSeconds = 5.0;
constexpr int kProbes = 4;

} // namespace

bool hasSessionBus() {
    platform::CFRunLoop& loop = platform::CFRunLoop::getCurrent();
    const auto connection = BusConnection::open(loop, "");
    if (!connection) return false;
    connection->process();
    loop.runUntil([&] { return !connection->isOpen() || connection->hasSentEverything(); }, kBusPatienceSeconds);
    return connection->hasSentEverything();
}

PortAnswer answerOfPort(const std::string& port) {
    PortProbe probe(port);
    std::optional<PortAnswer> answer;
    for (int i = 0; i < kProbes && answer.value_or(PortAnswer::NotAnswering) == PortAnswer::NotAnswering; ++i) {
        answer.reset();
        probe.ask([&](PortAnswer given) { answer = given; });
        platform::CFRunLoop::getCurrent().runUntil([&] { return answer.has_value(); }, kProbeSeconds);
    }
    return answer.value_or(PortAnswer::NotAnswering);
}

} // namespace kelvo::touchctl
