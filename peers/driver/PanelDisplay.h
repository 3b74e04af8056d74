#pragma once

#include "peers/driver/ContactFrame.h"
#include "peers/driver/DisplayTimer.h"
#include "peers/driver/RecordingFile.h"
#include "touch/Panel.h"
#include "touch/TouchDisplay.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kelvo {

/// A display with a panel: what its fingers mean is given out while the panel is held. Timeouts come when they are due,
/// and nothing wakes up without a finger.
class PanelDisplay final : private touch::Panel::Listener {
public:
    /// What a display does. None of them may destroy it but `gone`, which comes last.
    struct Handlers {
        /// The first finger of a hand is about to be seen.
        std::function<void()> handBegins;
        /// The raw contacts of a display that is watched.
        std::function<void(const ContactFrame& frame)> watched;
        /// A gesture that is a call of the desktop's own has been made.
        std::function<void(touch::Gesture gesture, touch::Direction direction)> called;
        /// Its panel is no longer there, or no longer its own.
        std::function<void()> gone;
    };
    /// Opens the panel for this listener; null where it is none.
    using OpenPanel = std::function<std::unique_ptr<touch::Panel>(touch::Panel::Listener& listener)>;
    enum class State { Off, Waiting, HeldByAnother, Held };

    /// Null where there is no panel. `out` is where everything is given to.
    [[nodiscard]] static std::unique_ptr<PanelDisplay> open(const OpenPanel& openPanel,
                                                            std::unique_ptr<touch::Outputs> out, Handlers handlers);
    explicit PanelDisplay(Handlers handlers) : handlers_(std::move(handlers)) {}
    /// Lifts what is down, then lets go of the panel.
    ~PanelDisplay() override;
    PanelDisplay(const PanelDisplay&) = delete;
    PanelDisplay& operator=(const PanelDisplay&) = delete;

    void setSettings(const touch::Settings& settings) { display_->setSettings(settings); }
    void setDesktop(const touch::Desktop& desktop) { display_->setDesktop(desktop); }
    [[nodiscard]] bool isDoubleClickSlowerThanDesktop() const { return display_->isDoubleClickSlowerThanDesktop(); }
    /// Off, the panel is everybody's, and what is down is lifted at once.
    void setEnabled(bool isEnabled);
    /// Watched, its fingers lead to nothing else.
    void setWatched(bool isWatched);
    [[nodiscard]] State state() const;

    /// Writes all that the fingers do, and what comes of it, into a new file. What cannot be done is a
    /// std::runtime_error.
    void beginRecording(const std::string& path, const std::string& settings);
    /// False where not all could be written.
    [[nodiscard]] bool endRecording();
    [[nodiscard]] bool isRecording() const { return recording_ != nullptr; }

private:
    /// Gives to the devices, and to the recording where there is one.
    class Splitter final : public touch::Outputs {
    public:
        explicit Splitter(PanelDisplay& display) : display_(display) {}
        void give(const touch::Output& output, touch::Time now) override;

    private:
        PanelDisplay& display_;
    };

    void panelIsHeld(touch::Time now) override;
    void panelIsFree(touch::Time now) override;
    void panelReported(const touch::Frame& frame) override;
    void panelIsGone() override;

    void giveAsWanted();
    void tellWatcher(const touch::Frame& frame);

    Handlers handlers_;
    std::unique_ptr<touch::Outputs> out_;
    std::unique_ptr<RecordingFile> recording_;
    Splitter splitter_{*this};
    std::unique_ptr<touch::Panel> panel_;
    std::unique_ptr<touch::TouchDisplay> display_;
    std::optional<DisplayTimer> timer_;
    bool isEnabled_ = false;
    bool isWatched_ = false;
    bool isHeld_ = false;
    bool hasFingers_ = false;
};

} // namespace kelvo
