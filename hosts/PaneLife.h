#pragma once

#include "platform/NSPreferencePane.h"

#include <string>

namespace kelvo {

/// Leads a pane through its life on behalf of a host: loaded once, selected and left in turn however often the host's
/// toolkit says so, and left at the end at the latest. Each step is a log line "HOST: STEP".
class PaneLife {
public:
    /// `host` is the name in the log lines. The pane must outlive this object.
    PaneLife(platform::NSPreferencePane& pane, std::string host);
    /// Leaves the pane if it is still selected.
    ~PaneLife();
    PaneLife(const PaneLife&) = delete;
    PaneLife& operator=(const PaneLife&) = delete;

    /// Loads the pane's view and tells the pane so; for once. A form that does not fit is a std::runtime_error.
    platform::NSView& load();
    /// The pane is shown to the user; nothing if it was before.
    void select() noexcept;
    /// The user left the pane; nothing if it is not selected.
    void unselect() noexcept;

private:
    void log(const std::string& step) const;

    platform::NSPreferencePane& pane_;
    std::string host_;
    bool isSelected_ = false;
};

} // namespace kelvo
