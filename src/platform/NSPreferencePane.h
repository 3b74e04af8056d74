#pragma once

#include "platform/Nib.h"

#include <cstdint>
#include <memory>

namespace platform {

struct Platform;

/// A pane of a settings application. The host calls `loadMainView`, then `mainViewDidLoad`, once; then `willSelect`
/// each time the pane is shown and `willUnselect` each time the user leaves it.
class NSPreferencePane : public NSNibOwner {
public:
    explicit NSPreferencePane(std::string mainNibName) : mainNibName_(std::move(mainNibName)) {}
    ~NSPreferencePane() override;

    virtual void mainViewDidLoad() {}
    virtual void willSelect() {}
    virtual void willUnselect() {}

    /// The pane's view; its form is loaded at the first call.
    NSView& loadMainView();

private:
    std::string mainNibName_;
    NSView mainView_;
    std::unique_ptr<NSNib> nib_;
};

/// Raised with every change of what passes between a host and a bundle: the interfaces of this folder.
inline constexpr std::uint32_t kNSPreferencePaneABIVersion = 1;

/// The one function that a bundle's binary exports. It makes the bundle's principal class work on `platform`, which
/// outlives the pane, and puts a new pane into `pane`. False, with `pane` left as it was, when the host was built for
/// another version or the pane cannot be made.
using NSPreferencePaneEntry = bool(std::uint32_t abiVersion, Platform& platform,
                                   std::unique_ptr<NSPreferencePane>& pane);
inline constexpr char kNSPreferencePaneEntryName[] = "NSPreferencePaneCreate";

} // namespace platform
