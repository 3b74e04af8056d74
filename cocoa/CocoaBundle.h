#pragma once

#include "cocoa/Retained.h"
#include "platform/Bundle.h"

#import <Foundation/Foundation.h>

namespace kelvo {

/// The pane's own bundle, as the host application loaded it: its texts, in the languages that the user chose for the
/// whole desktop.
class CocoaBundle final : public platform::NSBundle, public platform::NSBundles {
public:
    explicit CocoaBundle(::NSBundle* bundle) : bundle_(Retained<::NSBundle>::sharing(bundle)) {}

    [[nodiscard]] std::string localizedStringForKey(std::string_view key, std::string_view value) override;
    /// This bundle, if that is its identifier.
    [[nodiscard]] platform::NSBundle* bundleWithIdentifier(std::string_view identifier) override;

private:
    Retained<::NSBundle> bundle_;
};

} // namespace kelvo
