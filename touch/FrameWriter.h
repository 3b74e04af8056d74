#pragma once

#include "touch/FixedList.h"
#include "touch/Output.h"

namespace touch {

/// Puts steps together to frames: what stands between two calls of `end` takes effect at once.
class FrameWriter {
public:
    explicit FrameWriter(Outputs& next) : next_(next) {}

    /// Whether it ends a frame is said by `end`.
    void add(const Output& output) {
        frame_.add(output);
        frame_.back().endsFrame = false;
    }
    /// Gives out the steps that were added, if any.
    void end(Time now) {
        if (frame_.empty()) return;
        frame_.back().endsFrame = true;
        for (const Output& output : frame_) next_.give(output, now);
        frame_.clear();
    }
    /// A frame of one step.
    void giveAlone(const Output& output, Time now) {
        add(output);
        end(now);
    }

private:
    Outputs& next_;
    /// Each finger can do one thing, and go up or down, in a frame.
    FixedList<Output, 64> frame_;
};

} // namespace touch
