#include "Properties/TDTestView.h"

#include "platform/Clock.h"
#include "platform/Notifications.h"

using platform::NSBezierPath;
using platform::NSColor;
using platform::NSEvent;
using platform::NSRect;

namespace {

constexpr std::ptrdiff_t kRangeView = 1;
constexpr std::ptrdiff_t kRateView = 2;
constexpr std::ptrdiff_t kTestView = 3;

/// An attempt in a rate view is given up after so many seconds.
constexpr double kRateViewAttemptSeconds = 2.0;
constexpr double kShortestIntervalSeconds = 0.3;
constexpr double kLongestIntervalSeconds = 1.0;

constexpr double kCounted = 1.0;
constexpr double kNotCounted = 0.0;

} // namespace

TDTestView::~TDTestView() = default;

void TDTestView::setRange(double newRange) {
    range = newRange;
    setNeedsDisplay(true);
}

void TDTestView::setPath(const NSBezierPath& newPath) {
    if (path && &*path == &newPath) return;
    path = newPath;
}

void TDTestView::drawRect(NSRect /*dirtyRect*/) {
    NSColor::whiteColor().set();
    platform::NSRectFill(bounds());

    // Both offsets come from the width: these views are square.
    const double offset = (bounds().width - range) * 0.5;
    NSBezierPath circle = NSBezierPath::bezierPathWithOvalInRect({offset, offset, range, range});
    setPath(circle);
    if (drawType != 0) {
        NSColor::greenColor().set();
        circle.setLineWidth(8.0);
    } else {
        NSColor::redColor().set();
        circle.setLineWidth(2.0);
    }
    circle.stroke();
}

std::optional<double> TDTestView::accessibilityValue() const {
    return v_type == kRangeView ? std::optional(range) : lastOutcome;
}

void TDTestView::mouseDown(const NSEvent& event) {
    if (!isInside(event)) return;
    if (recognisesDoubleClicks()) ++clickCount;
    if (clickCount != 1) return;

    startTime = platform::Clock::current().date();
    const double limit = v_type == kTestView ? timeInterval_ : kRateViewAttemptSeconds;
    timeOutTimer = platform::NSTimer::scheduledTimerWithTimeInterval(limit, *this, [this] { timeOut(); });
    // An attempt can end without a word, so it counts for nothing until it has counted.
    if (v_type == kTestView) set(lastOutcome, std::optional(kNotCounted));
}

void TDTestView::mouseUp(const NSEvent& event) {
    if (!recognisesDoubleClicks() || clickCount != 2) return;
    clickCount = 0;
    if (const auto timer = timeOutTimer.lock()) timer->invalidate();
    if (!isInside(event) || !startTime) return;

    const double elapsed =
        platform::Clock::current().date().timeIntervalSinceReferenceDate - startTime->timeIntervalSinceReferenceDate;
    if (v_type == kRateView) {
        measure(elapsed);
    } else {
        judge(elapsed);
    }
}

void TDTestView::timeOut() {
    if (recognisesDoubleClicks()) clickCount = 0;
}

bool TDTestView::recognisesDoubleClicks() const { return v_type == kRateView || v_type == kTestView; }

bool TDTestView::isInside(const NSEvent& event) const {
    return path && path->containsPoint(convertPointFromContentView(event.locationInWindow));
}

void TDTestView::measure(double elapsed) {
    if (elapsed > kLongestIntervalSeconds) {
        timeInterval_ = kLongestIntervalSeconds;
    } else if (elapsed >= kShortestIntervalSeconds) {
        timeInterval_ = elapsed;
    } else {
        timeInterval_ = kShortestIntervalSeconds;
    }
    set(lastOutcome, std::optional(timeInterval_));
    platform::NSNotificationCenter::defaultCenter().postNotification({kDoubleClickHappenOnRateView, {}});
}

void TDTestView::judge(double elapsed) {
    if (timeInterval_ >= elapsed) {
        set(lastOutcome, std::optional(kCounted));
        platform::NSNotificationCenter::defaultCenter().postNotification({kDoubleClickHappenOnTestView, {}});
    }
}
