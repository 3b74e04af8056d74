#include "linux/PollRunLoop.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

/// Waits are limited to a century, so that computed times cannot overflow.
constexpr double kLongestWaitSeconds = 100.0 * 365.0 * 24.0 * 3600.0;

/// A watched descriptor. The caller of `ready` shares it, so that a watch can be destroyed by its own callback.
struct WatchedDescriptor {
    int descriptor;
    std::function<void()> ready;
    bool whenReadable = true;
    bool whenWritable = false;
    bool isWatched = true;

    [[nodiscard]] short events() const {
        return static_cast<short>((whenReadable ? POLLIN : 0) | (whenWritable ? POLLOUT : 0));
    }

    /// Errors and hang-ups go to watches that wait for any event, but not to those that wait for none.
    [[nodiscard]] bool wants(short occurred) const {
        return isWatched && events() != 0 && (occurred & (events() | POLLERR | POLLHUP | POLLNVAL)) != 0;
    }
};

using WatchedDescriptors = std::vector<std::shared_ptr<WatchedDescriptor>>;

void writePollEntries(const WatchedDescriptors& watched, std::vector<pollfd>& entries) {
    entries.clear();
    // The system skips negative descriptors; a descriptor without requested events would still report hang-ups.
    for (const auto& each : watched)
        entries.push_back({each->events() == 0 ? -1 : each->descriptor, each->events(), 0});
}

timespec asTimespec(std::chrono::nanoseconds wait) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
    return {static_cast<std::time_t>(seconds.count()), static_cast<long>((wait - seconds).count())};
}

} // namespace

/// Timers and watches remove themselves from here; they can outlive the loop.
struct PollRunLoop::Registry {
    struct Place {
        Clock::time_point due;
        unsigned long number;
        auto operator<=>(const Place&) const = default;
    };

    std::map<Place, std::shared_ptr<Timer>> timers;
    unsigned long nextNumber = 0;
    WatchedDescriptors watched;

    // The state at the start of a turn of the loop. The vectors keep their memory, so that a turn allocates nothing. A
    // nested loop overwrites them, after which the outer turn no longer reads them.
    WatchedDescriptors watchedInTurn;
    std::vector<pollfd> entriesInTurn;
};

class PollRunLoop::Timer : public platform::NSTimer {
public:
    Timer(std::weak_ptr<Registry> registry, Registry::Place place, std::function<void()> action)
        : registry_(std::move(registry)), place_(place), action_(std::move(action)) {}

    void invalidate() override {
        action_ = nullptr;
        if (const auto registry = registry_.lock()) registry->timers.erase(place_);
    }

    void fire() {
        const auto action = std::exchange(action_, nullptr);
        if (action) action();
    }

private:
    std::weak_ptr<Registry> registry_;
    Registry::Place place_;
    std::function<void()> action_;
};

class PollRunLoop::Watch : public platform::CFFileDescriptor {
public:
    Watch(std::weak_ptr<Registry> registry, std::shared_ptr<WatchedDescriptor> watched)
        : registry_(std::move(registry)), watched_(std::move(watched)) {}

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() override {
        watched_->isWatched = false;
        if (const auto registry = registry_.lock()) std::erase(registry->watched, watched_);
    }

    void enableCallBacks(bool whenReadable, bool whenWritable) override {
        watched_->whenReadable = whenReadable;
        watched_->whenWritable = whenWritable;
    }

private:
    std::weak_ptr<Registry> registry_;
    std::shared_ptr<WatchedDescriptor> watched_;
};

PollRunLoop::PollRunLoop() : registry_(std::make_shared<Registry>()) {}

void PollRunLoop::run() {
    while (!stopped_) runOnce(Clock::time_point::max());
    stopped_ = false;
}

void PollRunLoop::stop() { stopped_ = true; }

std::shared_ptr<platform::NSTimer> PollRunLoop::scheduleTimer(double seconds, std::function<void()> action) {
    const Registry::Place place{timeAfter(seconds), registry_->nextNumber++};
    auto timer = std::make_shared<Timer>(registry_, place, std::move(action));
    registry_->timers.emplace(place, timer);
    return timer;
}

std::unique_ptr<platform::CFFileDescriptor> PollRunLoop::watch(int descriptor, std::function<void()> ready) {
    auto watched = std::make_shared<WatchedDescriptor>(WatchedDescriptor{descriptor, std::move(ready)});
    registry_->watched.push_back(watched);
    return std::make_unique<Watch>(registry_, std::move(watched));
}

void PollRunLoop::runUntil(const std::function<bool()>& done, double seconds) {
    const auto end = timeAfter(seconds);
    while (!done() && Clock::now() < end) runOnce(end);
}

PollRunLoop::Clock::time_point PollRunLoop::timeAfter(double seconds) {
    const double wait = seconds > 0.0 ? std::min(seconds, kLongestWaitSeconds) : 0.0;
    return Clock::now() + std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(wait));
}

/// Waits until something is due, or until `latest`, and delivers it.
void PollRunLoop::runOnce(Clock::time_point latest) {
    if (!registry_->timers.empty()) latest = std::min(latest, registry_->timers.begin()->first.due);
    std::optional<timespec> wait;
    if (latest != Clock::time_point::max())
        wait = asTimespec(std::max<Clock::duration>(latest - Clock::now(), Clock::duration::zero()));

    auto& watched = registry_->watchedInTurn = registry_->watched;
    auto& entries = registry_->entriesInTurn;
    writePollEntries(watched, entries);
    // A failure means that a signal arrived: nothing is ready, and the next turn waits again.
    const int readyCount = ppoll(entries.data(), entries.size(), wait ? &*wait : nullptr, nullptr);
    const auto turn = ++turn_;

    fireTimersDueBy(Clock::now());
    // A nested loop has handled the descriptors since; those still ready are reported again in the next turn.
    for (std::size_t i = 0; readyCount > 0 && turn == turn_ && i < entries.size(); ++i) {
        // A copy, because a nested loop may release it during the call.
        if (const auto each = watched[i]; each->wants(entries[i].revents)) each->ready();
    }
    watched.clear();
}

/// A timer scheduled in the meantime waits for the next turn even if it is due, so that timers that reschedule
/// themselves leave room for everything else.
void PollRunLoop::fireTimersDueBy(Clock::time_point now) {
    const auto firstNew = registry_->nextNumber;
    while (!registry_->timers.empty()) {
        const auto first = registry_->timers.begin();
        if (first->first.due > now || first->first.number >= firstNew) return;
        const auto timer = first->second;
        registry_->timers.erase(first);
        timer->fire();
    }
}

} // namespace kelvo
