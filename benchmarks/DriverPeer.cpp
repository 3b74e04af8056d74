// The driver's end of a message and nothing else of a driver: its port, and the decoding of what arrives there.

#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/PollRunLoop.h"
#include "peers/PeerPlatform.h"
#include "platform/MessagePorts.h"

#include <cstdlib>
#include <iostream>

int main() {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services("kelvo-bench-driver-peer", runLoop);
    const auto port = platform::CFMessagePorts::current().createLocal(
        kTouchDisplayDriverPortName, [](platform::CFMessagePort&, std::int32_t, std::span<const std::uint8_t> data) {
            (void)Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data);
        });
    if (!port) return EXIT_FAILURE;
    const auto source = port->createRunLoopSource();
    runLoop.addSource(*source);
    std::cout << "ready" << std::endl;
    runLoop.run();
}
