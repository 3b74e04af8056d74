#pragma once

#include "touch/Frame.h"
#include "touch/Glass.h"
#include "touch/KernelEvent.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace touch {

/// What a panel says of itself, with the kernel's numbers for its maker and model.
struct PanelDescription {
    std::string name;
    std::uint16_t bus = 0;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::uint16_t version = 0;
    Axis x;
    Axis y;
    std::size_t slots = 0;
};

/// A touch panel that one program can have to itself; until then everybody sees its fingers.
class Panel {
public:
    /// Who is told what a panel does.
    class Listener {
    public:
        Listener() = default;
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;
        virtual ~Listener() = default;

        /// From now on nobody else sees the panel's fingers; none is on the glass.
        virtual void panelIsHeld(Time now) = 0;
        /// Everybody sees them again.
        virtual void panelIsFree(Time now) = 0;
        /// A report of a panel that is held.
        virtual void panelReported(const Frame& frame) = 0;
        /// It was unplugged, or the right to it was taken away: nothing more comes. Only here may the listener destroy
        /// the panel.
        virtual void panelIsGone() = 0;
    };

    Panel() = default;
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;
    virtual ~Panel() = default;

    [[nodiscard]] virtual const PanelDescription& description() const = 0;
    /// In millimetres.
    [[nodiscard]] virtual Size size() const = 0;

    /// Whether this program is to have the panel to itself. That begins and ends only while no finger is on the glass,
    /// so that no touch is seen by half: at once, or when the last finger has been lifted.
    virtual void setHeld(bool isHeld) = 0;
    /// From now on each event that is read while the panel is held goes to `pen` too, before the report it belongs to;
    /// to none where that is empty.
    virtual void setPen(std::function<void(const KernelEvent& event)> pen) = 0;
    /// Another program has the panel to itself.
    [[nodiscard]] virtual bool isHeldByAnother() const = 0;
};

} // namespace touch
