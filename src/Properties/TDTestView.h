#pragma once

#include "platform/Controls.h"
#include "platform/Drawing.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

/// Posted when a rate view has measured a double click; `timeInterval` tells how long it was.
inline constexpr char kDoubleClickHappenOnRateView[] = "TDDoubleClickHappenOnRateView";
/// Posted when a double click in a test view was fast enough.
inline constexpr char kDoubleClickHappenOnTestView[] = "TDDoubleClickHappenOnTestView";

/// A round target whose diameter is the double-click range. By its type it only draws itself (1), measures how fast the
/// user double-clicks on it (2), or tests whether a double click is fast enough (3). It recognises double clicks by
/// itself, from presses and releases.
class TDTestView : public platform::NSView {
public:
    ~TDTestView() override;

    /// The diameter, unchecked.
    void setRange(double newRange);
    void setViewType(std::int32_t type) { v_type = type; }
    /// Of a rate view the interval measured last, of a test view the longest that counts, in seconds.
    [[nodiscard]] double timeInterval() const { return timeInterval_; }
    void setTimeInterval(double seconds) { timeInterval_ = seconds; }
    void setPath(const platform::NSBezierPath& newPath);
    /// From the thin red ring to the thick green one, and back. Whoever calls asks for the drawing.
    void changeDrawType() { drawType = drawType == 0 ? 1 : 0; }

    void drawRect(platform::NSRect dirtyRect) override;
    /// Of a range view the diameter; of a rate view the interval measured last, none before the first; of a test view 1
    /// when the last double click counted, 0 when it did not or is under way, none before the first.
    [[nodiscard]] std::optional<double> accessibilityValue() const override;
    void mouseDown(const platform::NSEvent& event) override;
    void mouseUp(const platform::NSEvent& event) override;

private:
    void timeOut();
    [[nodiscard]] bool recognisesDoubleClicks() const;
    [[nodiscard]] bool isInside(const platform::NSEvent& event) const;
    void measure(double elapsed);
    void judge(double elapsed);

    double range = 32.0;
    // What was drawn last is also what can be hit; before the first drawing, nothing.
    std::optional<platform::NSBezierPath> path;
    std::ptrdiff_t v_type = 0;
    std::int32_t clickCount = 0;
    double timeInterval_ = 0.3;
    std::optional<platform::NSDate> startTime;
    [[maybe_unused]] platform::NSPoint* point1 = nullptr;
    [[maybe_unused]] platform::NSPoint* point2 = nullptr;
    std::int32_t drawType = 0;
    std::weak_ptr<platform::NSTimer> timeOutTimer;
    std::optional<double> lastOutcome;
};
