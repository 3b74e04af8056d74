#pragma once

#include "platform/Nib.h"

/// What the pane shell asks of the controller of a tab.
class TDTabController : public platform::NSViewController {
public:
    using NSViewController::NSViewController;

    /// Reloads the controls from the current device's settings. An error of the tab is an exception, which the shell
    /// logs.
    virtual void updateUIState() = 0;
};

/// A tab with pages of its own.
class TDPagedTabController : public TDTabController {
public:
    using TDTabController::TDTabController;

    /// Shows the first page.
    virtual void resetTabView() = 0;
};
