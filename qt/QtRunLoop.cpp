#include "qt/QtRunLoop.h"

#include "platform/Guarded.h"

#include <QAbstractEventDispatcher>
#include <QAbstractSlider>
#include <QCoreApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kelvo {

namespace {

/// `seconds` in the toolkit's unit, rounded up so that nothing comes early, within what the toolkit can count.
int toMilliseconds(double seconds) {
    if (!(seconds > 0.0)) return 0;
    return static_cast<int>(std::min(std::ceil(seconds * 1000.0), double{std::numeric_limits<int>::max()}));
}

class Watch final : public platform::CFFileDescriptor {
public:
    Watch(int descriptor, std::function<void()> ready)
        : readable_(descriptor, QSocketNotifier::Read), writable_(descriptor, QSocketNotifier::Write) {
        writable_.setEnabled(false);
        const auto shared = std::make_shared<const std::function<void()>>(std::move(ready));
        for (QSocketNotifier* notifier : {&readable_, &writable_}) {
            QObject::connect(notifier, &QSocketNotifier::activated, notifier, [shared] { platform::guarded(*shared); });
        }
    }

    void enableCallBacks(bool whenReadable, bool whenWritable) override {
        readable_.setEnabled(whenReadable);
        writable_.setEnabled(whenWritable);
    }

private:
    QSocketNotifier readable_;
    QSocketNotifier writable_;
};

/// Keeps sliders and scroll bars from going on by themselves, as they do while they are held: the release that ends
/// that may be among the input that waits.
class HeldControlsRest final : public QObject {
public:
    HeldControlsRest() { QCoreApplication::instance()->installEventFilter(this); }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        return event->type() == QEvent::Timer && qobject_cast<QAbstractSlider*>(watched);
    }
};

} // namespace

class QtRunLoop::Timer final : public platform::NSTimer {
public:
    explicit Timer(std::function<void()> action) : action_(std::move(action)) {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setSingleShot(true);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { fire(); });
    }

    void start(double seconds) { timer_.start(toMilliseconds(seconds)); }

    void invalidate() override {
        if (state_ == State::Pending) finish();
    }

    [[nodiscard]] bool isOver() const { return state_ == State::Over; }

private:
    enum class State { Pending, Firing, Over };

    void fire() {
        state_ = State::Firing;
        platform::guarded(action_);
        finish();
    }

    void finish() {
        timer_.stop();
        action_ = nullptr;
        state_ = State::Over;
    }

    std::function<void()> action_;
    State state_ = State::Pending;
    QTimer timer_;
};

std::shared_ptr<platform::NSTimer> QtRunLoop::scheduleTimer(double seconds, std::function<void()> action) {
    // A timer stays in the list while it fires, since its action may let go of the last handle.
    std::erase_if(timers_, [](const auto& timer) { return timer->isOver(); });
    timers_.push_back(std::make_shared<Timer>(std::move(action)));
    timers_.back()->start(seconds);
    return timers_.back();
}

std::unique_ptr<platform::CFFileDescriptor> QtRunLoop::watch(int descriptor, std::function<void()> ready) {
    return std::make_unique<Watch>(descriptor, std::move(ready));
}

void QtRunLoop::runUntil(const std::function<bool()>& done, double seconds) {
    if (done()) return;
    // The deadline is an event too, so that waiting for events cannot miss it.
    QTimer deadline;
    deadline.setTimerType(Qt::PreciseTimer);
    deadline.setSingleShot(true);
    deadline.start(toMilliseconds(seconds));

    QEventLoop events;
    const HeldControlsRest rest;
    ++waiting_;
    while (!done() && deadline.isActive()) {
        events.processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    }
    --waiting_;
    // The input that has come meanwhile is in the toolkit already, which looks for it only when something wakes it up.
    QAbstractEventDispatcher::instance()->wakeUp();
    if (!postponed_.empty()) performSoon();
}

void QtRunLoop::whenNothingWaits(std::function<void()> action) {
    if (waiting_ == 0) return action();
    postponed_.push_back(std::move(action));
}

/// Who waited is still on the stack, and may wait again before it is gone.
void QtRunLoop::performSoon() {
    QMetaObject::invokeMethod(
        &context_,
        [this] {
            if (waiting_ > 0) return;
            const auto actions = std::exchange(postponed_, {});
            for (const auto& action : actions) action();
        },
        Qt::QueuedConnection);
}

} // namespace kelvo
