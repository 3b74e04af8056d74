#pragma once

namespace kelvo {

/// The icon that the menu hangs on, wherever the desktop has a place for it.
class StatusIcon {
public:
    StatusIcon() = default;
    StatusIcon(const StatusIcon&) = delete;
    StatusIcon& operator=(const StatusIcon&) = delete;
    virtual ~StatusIcon() = default;

    /// Whether the desktop has a place for icons, as far as this process can tell: one that came after it started may
    /// stay unknown to it.
    [[nodiscard]] virtual bool hasPlace() = 0;
    /// Called only where there is a place; showing an icon that is shown is no mistake.
    virtual void show() = 0;
    virtual void hide() = 0;
};

} // namespace kelvo
