#include "cocoa/CocoaRunLoop.h"

#include "cocoa/Call.h"
#include "cocoa/DescriptorWatch.h"
#include "cocoa/Elements.h"
#include "platform/Guarded.h"

#import <AppKit/AppKit.h>

#include <utility>

/// What a timer of the run loop calls.
@interface KelvoLoopTarget : NSObject {
    kelvo::Call<void()> call_;
}
- (instancetype)initWithCall:(kelvo::Call<void()>)call;
- (void)fire:(NSTimer*)timer;
@end

@implementation KelvoLoopTarget

- (instancetype)initWithCall:(kelvo::Call<void()>)call {
    self = [super init];
    if (self) call_ = std::move(call);
    return self;
}

- (void)fire:(NSTimer*)timer {
    (void)timer;
    platform::guarded(call_);
}

@end

namespace kelvo {

namespace {

/// A release must not seem to come late.
constexpr double kWakingSeconds = 0.05;

NSArray* deliveringModes() { return [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, nil]; }

class Timer final : public platform::NSTimer {
public:
    Timer(double seconds, std::function<void()> action) {
        const Retained<KelvoLoopTarget> target([[KelvoLoopTarget alloc] initWithCall:std::move(action)]);
        timer_ = Retained<::NSTimer>::sharing([::NSTimer timerWithTimeInterval:seconds
                                                                        target:target.get()
                                                                      selector:@selector(fire:)
                                                                      userInfo:nil
                                                                       repeats:NO]);
        for (NSString* mode : elementsOf<NSString>(deliveringModes()))
            [[NSRunLoop currentRunLoop] addTimer:timer_.get() forMode:mode];
    }

    // The run loop owns it until it has fired, whoever lets go of this handle.
    void invalidate() override { [timer_.get() invalidate]; }

private:
    Retained<::NSTimer> timer_;
};

} // namespace

// While the user holds a control, the toolkit sometimes falls asleep over a release that it has read already, until
// some other event comes. Whatever wakes it makes it look again.
CocoaRunLoop::CocoaRunLoop() {
    const Retained<KelvoLoopTarget> target([[KelvoLoopTarget alloc] initWithCall:[] {}]);
    waker_ = Retained<::NSTimer>::sharing([::NSTimer timerWithTimeInterval:kWakingSeconds
                                                                    target:target.get()
                                                                  selector:@selector(fire:)
                                                                  userInfo:nil
                                                                   repeats:YES]);
    [[NSRunLoop currentRunLoop] addTimer:waker_.get() forMode:NSEventTrackingRunLoopMode];
}

CocoaRunLoop::~CocoaRunLoop() { [waker_.get() invalidate]; }

std::shared_ptr<platform::NSTimer> CocoaRunLoop::scheduleTimer(double seconds, std::function<void()> action) {
    return std::make_shared<Timer>(seconds, std::move(action));
}

std::unique_ptr<platform::CFFileDescriptor> CocoaRunLoop::watch(int descriptor, std::function<void()> ready) {
    return watchDescriptor(descriptor, deliveringModes(), std::move(ready));
}

void CocoaRunLoop::runUntil(const std::function<bool()>& done, double seconds) {
    const Retained<::NSDate> deadline([[::NSDate alloc] initWithTimeIntervalSinceNow:seconds]);
    while (!done() && [deadline.get() timeIntervalSinceNow] > 0.0) {
        const Retained<NSAutoreleasePool> pool([[NSAutoreleasePool alloc] init]);
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:deadline.get()];
    }
}

} // namespace kelvo
