#include "support/ScriptedRunLoop.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace support {

class ScriptedRunLoop::Timer : public platform::NSTimer {
public:
    Timer(double due, std::function<void()> action) : due_(due), action_(std::move(action)) {}

    [[nodiscard]] double due() const { return due_; }
    [[nodiscard]] bool isPending() const { return static_cast<bool>(action_); }
    void fire() { std::exchange(action_, nullptr)(); }
    void invalidate() override { action_ = nullptr; }

private:
    double due_;
    std::function<void()> action_;
};

void ScriptedRunLoop::advance(double seconds) {
    const double end = now_ + seconds;
    while (fireNext(end)) {
    }
    now_ = end;
}

std::size_t ScriptedRunLoop::pendingTimers() const {
    return static_cast<std::size_t>(
        std::count_if(timers_.begin(), timers_.end(), [](const auto& timer) { return timer->isPending(); }));
}

std::shared_ptr<platform::NSTimer> ScriptedRunLoop::scheduleTimer(double seconds, std::function<void()> action) {
    timers_.push_back(std::make_shared<Timer>(now_ + seconds, std::move(action)));
    return timers_.back();
}

std::unique_ptr<platform::CFFileDescriptor> ScriptedRunLoop::watch(int /*descriptor*/,
                                                                   std::function<void()> /*ready*/) {
    throw std::logic_error("a scripted run loop watches no descriptors");
}

void ScriptedRunLoop::runUntil(const std::function<bool()>& done, double seconds) {
    const double end = now_ + seconds;
    while (!done()) {
        if (fireNext(end)) continue;
        now_ = std::max(now_, end);
        return;
    }
}

bool ScriptedRunLoop::fireNext(double end) {
    std::erase_if(timers_, [](const auto& timer) { return !timer->isPending(); });
    const auto next = std::min_element(timers_.begin(), timers_.end(),
                                       [](const auto& a, const auto& b) { return a->due() < b->due(); });
    if (next == timers_.end() || (*next)->due() > end) return false;
    const std::shared_ptr<Timer> timer = *next;
    now_ = std::max(now_, timer->due());
    timer->fire();
    return true;
}

} // namespace support
