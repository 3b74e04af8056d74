#pragma once

#include "platform/NSObject.h"

#include <functional>
#include <memory>

namespace platform {

class CFRunLoop;

/// Something that delivers work on the run loop it was added to.
class CFRunLoopSource {
public:
    CFRunLoopSource() = default;
    CFRunLoopSource(const CFRunLoopSource&) = delete;
    CFRunLoopSource& operator=(const CFRunLoopSource&) = delete;
    virtual ~CFRunLoopSource();

    /// Called by the run loop when the source is added or removed.
    virtual void schedule(CFRunLoop& loop) = 0;
    virtual void cancel() = 0;
};

/// A one-shot timer. The run loop owns it until it has fired or was invalidated; a holder of the handle only gains the
/// means to invalidate it.
class NSTimer {
public:
    NSTimer() = default;
    NSTimer(const NSTimer&) = delete;
    NSTimer& operator=(const NSTimer&) = delete;
    virtual ~NSTimer();

    /// Fires `action` once on the current run loop after `seconds`, unless `target` is gone by then.
    static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(double seconds, const NSObject& target,
                                                                   std::function<void()> action);
    /// The timer will not fire any more; after it has fired, nothing.
    virtual void invalidate() = 0;
};

/// Watches one file descriptor for as long as it lives. The descriptor stays its owner's.
class CFFileDescriptor {
public:
    CFFileDescriptor() = default;
    CFFileDescriptor(const CFFileDescriptor&) = delete;
    CFFileDescriptor& operator=(const CFFileDescriptor&) = delete;
    virtual ~CFFileDescriptor();

    /// Chooses what to be called for. A watch begins with reading alone.
    virtual void enableCallBacks(bool whenReadable, bool whenWritable) = 0;
};

/// The main loop of the process.
class CFRunLoop {
public:
    CFRunLoop() = default;
    CFRunLoop(const CFRunLoop&) = delete;
    CFRunLoop& operator=(const CFRunLoop&) = delete;
    virtual ~CFRunLoop();

    static CFRunLoop& getCurrent();

    void addSource(CFRunLoopSource& source) { source.schedule(*this); }
    void removeSource(CFRunLoopSource& source) { source.cancel(); }

    /// Fires `action` once after `seconds`.
    virtual std::shared_ptr<NSTimer> scheduleTimer(double seconds, std::function<void()> action) = 0;
    /// Calls `ready` on the loop while `descriptor` is ready for what the watch asks.
    [[nodiscard]] virtual std::unique_ptr<CFFileDescriptor> watch(int descriptor, std::function<void()> ready) = 0;
    /// Runs ports, timers and painting, but no user input, until `done` holds or `seconds` have passed. May be called
    /// from within anything the loop delivers.
    virtual void runUntil(const std::function<bool()>& done, double seconds) = 0;
};

} // namespace platform
