#pragma once

#include "platform/NSObject.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace kelvo {

/// Opens the pane at one of its tabs: tells the one that runs, else starts it first and tells it once its port is
/// there.
class PaneOpener : public platform::NSObject {
public:
    /// `startPane` starts the program that shows the pane, and says whether that could be done.
    explicit PaneOpener(std::function<bool()> startPane);
    ~PaneOpener() override;
    PaneOpener(const PaneOpener&) = delete;
    PaneOpener& operator=(const PaneOpener&) = delete;

    /// Runs the loop while the pane is being told. Of several tabs chosen meanwhile the last one counts. What becomes
    /// of it shows in the log alone.
    void openAtTab(std::int32_t index);

private:
    void tellPane();
    void awaitPane(std::int32_t index);
    void giveUp();

    std::function<bool()> startPane_;
    /// The tab that the pane has still to be told of.
    std::optional<std::int32_t> tab_;
    bool isTelling_ = false;
    /// How often a pane that was started is still looked for.
    int looksLeft_ = 0;
    std::shared_ptr<platform::NSTimer> nextLook_;
};

} // namespace kelvo
