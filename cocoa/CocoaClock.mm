#include "cocoa/CocoaClock.h"

#import <Foundation/Foundation.h>

namespace kelvo {

namespace {

constexpr double kTicksPerSecond = 60.0;

} // namespace

platform::NSDate CocoaClock::date() { return {[::NSDate timeIntervalSinceReferenceDate]}; }

std::uint32_t CocoaClock::tickCount() {
    const double ticks = static_cast<double>([[NSProcessInfo processInfo] systemUptime]) * kTicksPerSecond;
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(ticks));
}

void CocoaClock::sleep(unsigned seconds) { [NSThread sleepForTimeInterval:seconds]; }

} // namespace kelvo
