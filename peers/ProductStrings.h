#pragma once

#include "TDNames.h"
#include "platform/Bundle.h"

namespace kelvo {

/// The one text of the pane's bundle that a peer needs, which is the same in every language: it names the folder of the
/// shared files. With it a peer works also where the bundle is not installed.
class ProductStrings : public platform::NSBundle, public platform::NSBundles {
public:
    [[nodiscard]] std::string localizedStringForKey(std::string_view key, std::string_view value) override {
        return key == "PreferenceFolderName" ? "KelvoTouchDisplay" : std::string(value);
    }

    [[nodiscard]] platform::NSBundle* bundleWithIdentifier(std::string_view identifier) override {
        return identifier == kPaneBundleIdentifier ? this : nullptr;
    }
};

} // namespace kelvo
