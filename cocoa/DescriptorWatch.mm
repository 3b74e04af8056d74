#include "cocoa/DescriptorWatch.h"

#include "cocoa/Call.h"
#include "cocoa/Elements.h"
#include "cocoa/Retained.h"
#include "platform/Guarded.h"

#include <cstdint>
#include <utility>

/// What the run loop tells of a descriptor.
@interface KelvoDescriptorTarget : NSObject <RunLoopEvents> {
    kelvo::Call<void()> call_;
}
- (instancetype)initWithCall:(kelvo::Call<void()>)call;
@end

@implementation KelvoDescriptorTarget

- (instancetype)initWithCall:(kelvo::Call<void()>)call {
    self = [super init];
    if (self) call_ = std::move(call);
    return self;
}

- (void)receivedEvent:(void*)data type:(RunLoopEventType)type extra:(void*)extra forMode:(NSString*)mode {
    (void)data;
    (void)type;
    (void)extra;
    (void)mode;
    platform::guarded(call_);
}

@end

namespace kelvo {

namespace {

class Watch final : public platform::CFFileDescriptor {
public:
    Watch(int descriptor, NSArray* modes, std::function<void()> ready)
        : descriptor_(descriptor),
          modes_(Retained<NSArray>::sharing(modes)),
          target_([[KelvoDescriptorTarget alloc] initWithCall:std::move(ready)]) {
        enableCallBacks(true, false);
    }
    ~Watch() override { enableCallBacks(false, false); }

    void enableCallBacks(bool whenReadable, bool whenWritable) override {
        enable(ET_RDESC, isReading_, whenReadable);
        enable(ET_WDESC, isWriting_, whenWritable);
    }

private:
    void enable(RunLoopEventType type, bool& isEnabled, bool shouldBeEnabled) {
        if (isEnabled == shouldBeEnabled) return;
        isEnabled = shouldBeEnabled;
        // The interface takes a number in the place of a pointer.
        void* const data = reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor_));
        for (NSString* mode : elementsOf<NSString>(modes_.get())) {
            if (shouldBeEnabled) {
                [[NSRunLoop currentRunLoop] addEvent:data type:type watcher:target_.get() forMode:mode];
            } else {
                [[NSRunLoop currentRunLoop] removeEvent:data type:type forMode:mode all:NO];
            }
        }
    }

    int descriptor_;
    Retained<NSArray> modes_;
    Retained<KelvoDescriptorTarget> target_;
    bool isReading_ = false;
    bool isWriting_ = false;
};

} // namespace

std::unique_ptr<platform::CFFileDescriptor> watchDescriptor(int descriptor, NSArray* modes,
                                                            std::function<void()> ready) {
    return std::make_unique<Watch>(descriptor, modes, std::move(ready));
}

} // namespace kelvo
