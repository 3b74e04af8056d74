#pragma once

#include "peers/DriverCommand.h"
#include "peers/calibration/DisplayWatch.h"
#include "platform/NSObject.h"
#include "platform/RunLoop.h"
#include "touch/Calibration.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelvo {

/// Calibrates a display: watches its fingers, leads through the crosses, and stores what was found once it has been
/// confirmed. Until then nothing has changed anywhere.
class Calibrator final : public platform::NSObject {
public:
    enum class Outcome {
        Saved,
        Missed,
        Refused,
        TimedOut,
        DisplayGone,
        NoDriver,
        /// The driver does not let the display be watched.
        NotWatched,
        NotSaved,
    };
    struct Handlers {
        /// What is to be seen has changed.
        std::function<void()> changed;
        /// Comes once; it may not destroy the calibrator.
        std::function<void(Outcome outcome)> over;
    };

    /// The loop outlives this object. `address` is the bus to use; when empty, the one that the environment names.
    Calibrator(platform::CFRunLoop& loop, std::string display, bool isPrecise, Handlers handlers,
               std::string address = {});
    ~Calibrator() override;
    Calibrator(const Calibrator&) = delete;
    Calibrator& operator=(const Calibrator&) = delete;

    void begin();
    /// The output on which the crosses are shown, kept with what was found.
    void setOutput(std::string output) { output_ = std::move(output); }

    /// None until the driver has answered.
    [[nodiscard]] const std::optional<touch::CalibrationRun>& run() const { return run_; }

private:
    void watch(const DriverAnswer& answer);
    void start();
    void see(const touch::Frame& frame, touch::Size glass);
    void follow();
    void awaitDeadline();
    void end(Outcome outcome);
    [[nodiscard]] bool save() const;

    platform::CFRunLoop& loop_;
    std::string display_;
    bool isPrecise_;
    Handlers handlers_;
    std::string address_;
    std::string output_;
    touch::Settings settings_;
    touch::Desktop desktop_;
    DriverCommand driver_;
    std::unique_ptr<DisplayWatch> watch_;
    std::optional<touch::CalibrationRun> run_;
    std::shared_ptr<platform::NSTimer> timer_;
    bool isOver_ = false;
};

} // namespace kelvo
