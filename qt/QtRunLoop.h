#pragma once

#include "platform/RunLoop.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace kelvo {

/// The toolkit's event loop as the main loop of the platform. Needs the application object to exist, and is used on the
/// main thread alone. What an action or a watch throws is logged.
class QtRunLoop final : public platform::CFRunLoop {
public:
    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override;
    [[nodiscard]] std::unique_ptr<platform::CFFileDescriptor> watch(int descriptor,
                                                                    std::function<void()> ready) override;
    void runUntil(const std::function<bool()>& done, double seconds) override;

    /// Calls `action` when nobody waits in `runUntil`: at once, or later from the loop itself. It may destroy what
    /// would otherwise go away below its own calls, this object included.
    void whenNothingWaits(std::function<void()> action);

private:
    class Timer;

    void performSoon();

    std::vector<std::shared_ptr<Timer>> timers_;
    int waiting_ = 0;
    std::vector<std::function<void()>> postponed_;
    QObject context_;
};

} // namespace kelvo
