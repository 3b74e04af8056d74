#include "linux/WaylandDesktop.h"

#include "linux/DesktopSettings.h"

#include <wayland-client.h>
#include <xdg-output-unstable-v1-client-protocol.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

using touch::Monitor;
using touch::Size;
using touch::Surroundings;

// The newest supported versions of the interfaces.
constexpr std::uint32_t kOutputVersion = 4;
constexpr std::uint32_t kXdgOutputVersion = 3;
/// The first version with a release request for outputs.
constexpr std::uint32_t kReleaseVersion = 3;

struct Releaser {
    void operator()(wl_display* display) const { wl_display_disconnect(display); }
    void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
    void operator()(zxdg_output_manager_v1* manager) const { zxdg_output_manager_v1_destroy(manager); }
    void operator()(zxdg_output_v1* output) const { zxdg_output_v1_destroy(output); }
    void operator()(wl_output* output) const {
        if (wl_output_get_version(output) >= kReleaseVersion) {
            wl_output_release(output);
        } else {
            wl_output_destroy(output);
        }
    }
};
template <typename T>
using Released = std::unique_ptr<T, Releaser>;

/// Wayland counts counter-clockwise. Mirrored outputs, which touch displays do not use, count as not mirrored.
std::int64_t turnsOf(std::int32_t transform) {
    constexpr std::int32_t kFullTurn = 4;
    return (kFullTurn - transform % kFullTurn) % kFullTurn;
}

bool swapsSides(std::int32_t transform) { return transform % 2 != 0; }

/// What the compositor has reported about an output so far.
struct Output {
    std::uint32_t id = 0;
    Released<wl_output> output;
    Released<zxdg_output_v1> logical;
    std::string name;
    std::int32_t transform = 0;
    Size millimetres;
    Size preferred;
    Size current;
    std::int32_t scale = 1;
    touch::Point position;
    /// In logical coordinates; none if the compositor does not report it.
    std::optional<touch::Point> logicalPosition;
    std::optional<Size> logicalSize;
};

struct Rectangle {
    touch::Point origin;
    Size size;
};

Rectangle rectangleOf(const Output& output) {
    Size size =
        output.logicalSize.value_or(Size{output.current.width / output.scale, output.current.height / output.scale});
    if (!output.logicalSize && swapsSides(output.transform)) std::swap(size.width, size.height);
    return {output.logicalPosition.value_or(output.position), size};
}

std::optional<Size> known(Size size) {
    if (size.width <= 0.0 || size.height <= 0.0) return std::nullopt;
    return size;
}

class WaylandDesktop final : public touch::DesktopWatch {
public:
    WaylandDesktop(Released<wl_display> display, std::function<void()> changed)
        : changed_(std::move(changed)), display_(std::move(display)) {}

    /// False if the compositor does not answer.
    [[nodiscard]] bool begin(platform::CFRunLoop& loop) {
        registry_.reset(wl_display_get_registry(display_.get()));
        static constexpr wl_registry_listener kListener{onGlobal, onGlobalGone};
        wl_registry_add_listener(registry_.get(), &kListener, this);
        // The first brings the globals, the second their properties.
        if (wl_display_roundtrip(display_.get()) < 0 || wl_display_roundtrip(display_.get()) < 0) return false;
        watch_ = loop.watch(wl_display_get_fd(display_.get()), [this] { read(); });
        settings_ = openDesktopSettings(loop, [this] { tellIfOther(); });
        (void)look();
        return true;
    }

    [[nodiscard]] const Surroundings& surroundings() const override { return surroundings_; }

private:
    static void onGlobal(void* self, wl_registry* registry, std::uint32_t id, const char* interface,
                         std::uint32_t version) {
        auto& desktop = *static_cast<WaylandDesktop*>(self);
        const std::string_view kind(interface);
        if (kind == wl_output_interface.name) {
            desktop.outputs_.emplace_back();
            Output& output = desktop.outputs_.back();
            output.id = id;
            output.output.reset(static_cast<wl_output*>(
                wl_registry_bind(registry, id, &wl_output_interface, std::min(version, kOutputVersion))));
            static constexpr wl_output_listener kListener{onGeometry, onMode, onDone, onScale, onName, onDescription};
            wl_output_add_listener(output.output.get(), &kListener, &output);
            desktop.askForLogical(output);
        } else if (kind == zxdg_output_manager_v1_interface.name) {
            desktop.manager_.reset(static_cast<zxdg_output_manager_v1*>(wl_registry_bind(
                registry, id, &zxdg_output_manager_v1_interface, std::min(version, kXdgOutputVersion))));
            for (Output& output : desktop.outputs_) desktop.askForLogical(output);
        }
    }

    static void onGlobalGone(void* self, wl_registry* /*registry*/, std::uint32_t id) {
        static_cast<WaylandDesktop*>(self)->outputs_.remove_if([&](const Output& output) { return output.id == id; });
    }

    void askForLogical(Output& output) {
        if (!manager_ || output.logical) return;
        output.logical.reset(zxdg_output_manager_v1_get_xdg_output(manager_.get(), output.output.get()));
        static constexpr zxdg_output_v1_listener kListener{onLogicalPosition, onLogicalSize, onLogicalDone,
                                                           onLogicalName, onLogicalDescription};
        zxdg_output_v1_add_listener(output.logical.get(), &kListener, &output);
    }

    static void onGeometry(void* output, wl_output* /*proxy*/, std::int32_t x, std::int32_t y, std::int32_t width,
                           std::int32_t height, std::int32_t /*subpixel*/, const char* /*make*/, const char* /*model*/,
                           std::int32_t transform) {
        auto& told = *static_cast<Output*>(output);
        told.position = {static_cast<double>(x), static_cast<double>(y)};
        told.millimetres = {static_cast<double>(width), static_cast<double>(height)};
        told.transform = transform;
    }
    static void onMode(void* output, wl_output* /*proxy*/, std::uint32_t flags, std::int32_t width, std::int32_t height,
                       std::int32_t /*refresh*/) {
        const Size size{static_cast<double>(width), static_cast<double>(height)};
        if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) static_cast<Output*>(output)->current = size;
        if ((flags & WL_OUTPUT_MODE_PREFERRED) != 0) static_cast<Output*>(output)->preferred = size;
    }
    static void onScale(void* output, wl_output* /*proxy*/, std::int32_t factor) {
        static_cast<Output*>(output)->scale = std::max(factor, 1);
    }
    static void onName(void* output, wl_output* /*proxy*/, const char* name) {
        static_cast<Output*>(output)->name = name;
    }
    static void onDone(void* /*output*/, wl_output* /*proxy*/) {}
    static void onDescription(void* /*output*/, wl_output* /*proxy*/, const char* /*text*/) {}

    static void onLogicalPosition(void* output, zxdg_output_v1* /*proxy*/, std::int32_t x, std::int32_t y) {
        static_cast<Output*>(output)->logicalPosition = touch::Point{static_cast<double>(x), static_cast<double>(y)};
    }
    static void onLogicalSize(void* output, zxdg_output_v1* /*proxy*/, std::int32_t width, std::int32_t height) {
        static_cast<Output*>(output)->logicalSize = Size{static_cast<double>(width), static_cast<double>(height)};
    }
    static void onLogicalName(void* output, zxdg_output_v1* /*proxy*/, const char* name) {
        static_cast<Output*>(output)->name = name;
    }
    static void onLogicalDone(void* /*output*/, zxdg_output_v1* /*proxy*/) {}
    static void onLogicalDescription(void* /*output*/, zxdg_output_v1* /*proxy*/, const char* /*text*/) {}

    /// Processes received events and makes the resulting requests.
    void read() {
        while (wl_display_prepare_read(display_.get()) != 0) wl_display_dispatch_pending(display_.get());
        const bool isThere = wl_display_read_events(display_.get()) >= 0 &&
                             wl_display_dispatch_pending(display_.get()) >= 0 && wl_display_flush(display_.get()) >= 0;
        if (!isThere) {
            watch_.reset();
        } else {
            tellIfOther();
        }
    }

    void tellIfOther() {
        if (look()) changed_();
    }

    /// Whether anything has changed.
    bool look() {
        // The compositor does not report its settings; these are stored by the desktop.
        Surroundings found = settings_ ? settings_->surroundings() : Surroundings();
        found.turnsTouches = true;
        found.monitors = monitors();
        if (found == surroundings_) return false;
        surroundings_ = std::move(found);
        return true;
    }

    [[nodiscard]] std::vector<Monitor> monitors() const {
        std::vector<Monitor> found;
        const Rectangle whole = wholeDesktop();
        for (const Output& output : outputs_) {
            const Rectangle shown = rectangleOf(output);
            if (!known(shown.size)) continue;
            const touch::Point origin = shown.origin - whole.origin;
            found.push_back({.name = output.name,
                             .millimetres = known(output.millimetres),
                             .nativePixels = known(output.preferred),
                             .turns = turnsOf(output.transform),
                             .place = {{origin.x / whole.size.width, origin.y / whole.size.height},
                                       {shown.size.width / whole.size.width, shown.size.height / whole.size.height}}});
        }
        return found;
    }

    /// A rectangle that contains all outputs.
    [[nodiscard]] Rectangle wholeDesktop() const {
        std::optional<touch::Point> first;
        touch::Point last;
        for (const Output& output : outputs_) {
            const Rectangle shown = rectangleOf(output);
            if (!known(shown.size)) continue;
            const touch::Point end{shown.origin.x + shown.size.width, shown.origin.y + shown.size.height};
            if (!first) last = end;
            first = {std::min(first.value_or(shown.origin).x, shown.origin.x),
                     std::min(first.value_or(shown.origin).y, shown.origin.y)};
            last = {std::max(last.x, end.x), std::max(last.y, end.y)};
        }
        const touch::Point origin = first.value_or(touch::Point());
        return {origin, {last.x - origin.x, last.y - origin.y}};
    }

    std::function<void()> changed_;
    Released<wl_display> display_;
    Released<wl_registry> registry_;
    Released<zxdg_output_manager_v1> manager_;
    /// Events of the compositor refer to these objects, so they must not move.
    std::list<Output> outputs_;
    Surroundings surroundings_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    /// None if they are unknown.
    std::unique_ptr<touch::DesktopWatch> settings_;
};

} // namespace

std::unique_ptr<touch::DesktopWatch> openWaylandDesktop(platform::CFRunLoop& loop, std::function<void()> changed) {
    const char* name = std::getenv("WAYLAND_DISPLAY");
    if (!name || !*name) return nullptr;
    Released<wl_display> display(wl_display_connect(nullptr));
    if (!display) return nullptr;
    auto desktop = std::make_unique<WaylandDesktop>(std::move(display), std::move(changed));
    if (!desktop->begin(loop)) return nullptr;
    return desktop;
}

} // namespace kelvo
