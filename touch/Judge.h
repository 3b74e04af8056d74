#pragma once

#include "touch/Fault.h"
#include "touch/Frame.h"
#include "touch/Gestures.h"
#include "touch/Output.h"

#include <array>
#include <cstddef>
#include <optional>

namespace touch {

/// Knows the grammar of what is given out and reports whatever breaks it. It stands between the driver's judgement and
/// the devices, and passes everything on.
class Judge final : public Outputs {
public:
    Judge(Outputs& next, const FaultHandler& onFault) : next_(next), onFault_(onFault) {}

    /// The gestures that may be given out from now on.
    void setGestures(const GestureChoice& gestures);
    /// These too: something that was decided by others is still on its way.
    void addGestures(const GestureChoice& gestures);
    void give(const Output& output, Time now) override;
    /// No finger is on the glass and no timer runs: nothing may be down.
    void expectNothingDown() const;

private:
    static constexpr std::size_t kNumbers = 1024;

    void judgeFrame(Road road, bool endsFrame);
    void judgeStep(Road road, const Output& output);
    void judgePlace(Road road, Point at) const;
    void goDown(Road road, std::int32_t number);
    void goUp(Road road, std::int32_t number);
    void expectDown(Road road, std::int32_t number) const;
    void judgeGesture(const Output& output);
    [[nodiscard]] std::optional<std::size_t> indexOf(std::int32_t number) const;

    Outputs& next_;
    const FaultHandler& onFault_;
    /// By the shapes' and the gestures' numbers.
    std::array<std::array<bool, kGestureCount>, kShapeCount> isWanted_{};
    std::array<std::array<bool, kNumbers>, 4> down_{};
    std::size_t downCount_ = 0;
    std::optional<Road> openFrame_;
    std::optional<Shape> shapeOn_;
    Time lastTime_ = Time::min();
};

} // namespace touch
