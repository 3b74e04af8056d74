#pragma once

#include "TDTabController.h"
#include "platform/Controls.h"

#include <vector>

/// The version tab, which shows the driver version of the current device's settings.
class TDVersionViewCtl : public TDTabController {
public:
    TDVersionViewCtl();

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;

    /// Without a settings file the field is cleared. Settings without a text for the version are a
    /// std::invalid_argument, and the field keeps what it shows.
    void updateUIState() override;

private:
    platform::NSTextField versionText_;
};
