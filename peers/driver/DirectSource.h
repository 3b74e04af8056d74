#pragma once

#include "linux/TouchScreenMonitor.h"
#include "peers/driver/DisplaySource.h"
#include "platform/RunLoop.h"

#include <map>
#include <memory>
#include <string>

namespace kelvo {

/// The displays that this program opens itself, for machines on which the administrator permits that.
class DirectSource final : public DisplaySource {
public:
    /// Both outlive the source.
    DirectSource(platform::CFRunLoop& loop, Hardware& hardware) : loop_(loop), hardware_(hardware) {}

    void begin(Handlers handlers) override;
    void come(const TouchScreen& screen);
    void go(const std::string& node);

private:
    platform::CFRunLoop& loop_;
    Hardware& hardware_;
    Handlers handlers_;
    std::map<std::string, std::uint32_t> ids_;
    std::uint32_t nextId_ = 1;
    std::unique_ptr<TouchScreenMonitor> monitor_;
};

} // namespace kelvo
