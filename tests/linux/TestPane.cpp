#include "platform/Log.h"
#include "platform/NSPreferencePane.h"
#include "platform/Platform.h"

#include <cstdlib>

namespace {

/// Tells its platform's log what happens to it.
class TestPane final : public platform::NSPreferencePane {
public:
    explicit TestPane(platform::Platform& platform) : NSPreferencePane("TestPane"), platform_(platform) {}
    void willSelect() override { platform_.log.write("willSelect"); }

private:
    platform::Platform& platform_;
};

} // namespace

/// Refuses as a bundle of another version would while TEST_PANE_REFUSES is set.
extern "C" __attribute__((visibility("default"))) bool
NSPreferencePaneCreate(std::uint32_t abiVersion, platform::Platform& platform,
                       std::unique_ptr<platform::NSPreferencePane>& pane) {
    if (abiVersion != platform::kNSPreferencePaneABIVersion || std::getenv("TEST_PANE_REFUSES")) return false;
    pane = std::make_unique<TestPane>(platform);
    return true;
}
