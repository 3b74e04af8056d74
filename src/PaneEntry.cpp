#include "KelvoTouchDisplayPref.h"
#include "platform/Log.h"
#include "platform/NSPreferencePane.h"
#include "platform/Platform.h"

#include <exception>

namespace {

/// A tab whose page is still empty.
class EmptyTab : public TDPagedTabController {
public:
    EmptyTab() : TDPagedTabController("") {}
    void updateUIState() override {}
    void resetTabView() override {}
};

} // namespace

/// Makes the principal class of the bundle; see NSPreferencePaneEntry.
extern "C" bool NSPreferencePaneCreate(std::uint32_t abiVersion, platform::Platform& platform,
                                       std::unique_ptr<platform::NSPreferencePane>& pane) {
    if (abiVersion != platform::kNSPreferencePaneABIVersion) return false;
    try {
        platform::usePlatform(&platform);
        pane = std::make_unique<KelvoTouchDisplayPref>(
            KelvoTouchDisplayPref::Tabs{std::make_unique<EmptyTab>(), std::make_unique<EmptyTab>(),
                                        std::make_unique<EmptyTab>(), std::make_unique<EmptyTab>()});
        return true;
    } catch (const std::exception& error) {
        platform::NSLog("%@", error.what());
        return false;
    }
}
