#include "peers/driver/DirectSource.h"

#include <stdexcept>
#include <utility>

namespace kelvo {

void DirectSource::begin(Handlers handlers) {
    handlers_ = std::move(handlers);
    monitor_ = TouchScreenMonitor::open(
        loop_, {[this](const TouchScreen& screen) { come(screen); }, [this](const std::string& node) { go(node); }});
    if (!monitor_) {
        // A copy, because the callback may destroy this.
        const auto missing = handlers_.missing;
        missing();
        return;
    }
    monitor_->begin();
    handlers_.looked(ids_.size());
}

void DirectSource::come(const TouchScreen& screen) {
    const std::uint32_t id = ids_[screen.node] = nextId_++;
    try {
        FoundDisplay found{.id = id,
                           .name = screen.name,
                           .identity = screen.identity,
                           .file = hardware_.openDisplay(screen.node),
                           .nodes = {},
                           .devices = {}};
        found.devices =
            hardware_.makeDevices(hardware_.describe(found.file), screen.seat + "/own-" + std::to_string(id));
        found.nodes = found.devices->openNodes();
        handlers_.came(std::move(found));
    } catch (const std::runtime_error& error) {
        handlers_.refused(id, screen.name,
                          std::string(error.what()) + "; install or repair the service kelvo-touch-devices");
    }
}

void DirectSource::go(const std::string& node) {
    const auto gone = ids_.find(node);
    if (gone == ids_.end()) return;
    const std::uint32_t id = gone->second;
    ids_.erase(gone);
    handlers_.went(id);
}

} // namespace kelvo
