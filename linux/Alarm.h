#pragma once

#include "linux/Descriptor.h"
#include "platform/RunLoop.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kelvo {

/// Rings once at a time of the steady clock. To set it anew costs no memory, so that a driver can do so at each frame.
class Alarm {
public:
    /// `ring` may set it again. The loop outlives the alarm. A system out of descriptors is a std::system_error.
    Alarm(platform::CFRunLoop& loop, std::function<void()> ring);
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    /// In place of what it was set to; one that is over rings at once.
    void setTo(std::chrono::microseconds time);
    void clear();

private:
    void read();
    void set(std::chrono::nanoseconds time) const;

    std::function<void()> ring_;
    Descriptor timer_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
};

} // namespace kelvo
