#include "linux/X11Desktop.h"

#include "linux/XSettings.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using touch::Monitor;
using touch::Size;
using touch::Surroundings;

constexpr char kNaturalScrolling[] = "libinput Natural Scrolling Enabled";
constexpr char kSettingsOwner[] = "_XSETTINGS_S0";
constexpr char kSettings[] = "_XSETTINGS_SETTINGS";
/// More than any settings manager stores, in units of four bytes.
constexpr std::uint32_t kMostSettings = 1U << 18U;

struct Freer {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Freer>;

struct Disconnecter {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnecter>;

/// RandR counts counter-clockwise.
std::int64_t turnsOf(std::uint16_t rotation) {
    if ((rotation & XCB_RANDR_ROTATION_ROTATE_90) != 0) return 3;
    if ((rotation & XCB_RANDR_ROTATION_ROTATE_180) != 0) return 2;
    if ((rotation & XCB_RANDR_ROTATION_ROTATE_270) != 0) return 1;
    return 0;
}

std::optional<Size> sizeOf(double width, double height) {
    if (width <= 0.0 || height <= 0.0) return std::nullopt;
    return Size{width, height};
}

class X11Desktop final : public touch::DesktopWatch {
public:
    X11Desktop(Connection connection, xcb_window_t root, std::function<void()> changed)
        : changed_(std::move(changed)), connection_(std::move(connection)), root_(root) {}

    void begin(platform::CFRunLoop& loop) {
        followRoot();
        followMonitors();
        followDevices();
        watch_ = loop.watch(xcb_get_file_descriptor(connection()), [this] { read(); });
        look();
        // Events that arrived during the requests do not make the descriptor readable.
        firstRead_ = loop.scheduleTimer(0.0, [this] { read(); });
    }
    ~X11Desktop() override {
        if (firstRead_) firstRead_->invalidate();
    }
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;

    [[nodiscard]] const Surroundings& surroundings() const override { return surroundings_; }

private:
    [[nodiscard]] xcb_connection_t* connection() const { return connection_.get(); }

    // Following

    void followRoot() {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection(), root_, XCB_CW_EVENT_MASK, &events);
    }

    void followMonitors() {
        if (!hasExtension(&xcb_randr_id)) return;
        const Reply<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(connection(), xcb_randr_query_version(connection(), 1, 5), nullptr));
        hasMonitors_ = version && (version->major_version > 1 || version->minor_version >= 5);
        if (!hasMonitors_) return;
        xcb_randr_select_input(connection(), root_,
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_RESOURCE_CHANGE);
    }

    void followDevices() {
        if (!hasExtension(&xcb_input_id)) return;
        const Reply<xcb_input_xi_query_version_reply_t> version(
            xcb_input_xi_query_version_reply(connection(), xcb_input_xi_query_version(connection(), 2, 2), nullptr));
        hasDevices_ = version != nullptr;
        if (!hasDevices_) return;
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } wanted{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY | XCB_INPUT_XI_EVENT_MASK_PROPERTY};
        xcb_input_xi_select_events(connection(), root_, 1, &wanted.head);
    }

    [[nodiscard]] bool hasExtension(xcb_extension_t* extension) const {
        const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection(), extension);
        return data && data->present != 0;
    }

    void read() {
        bool isOther = false;
        // Looking also reads events that arrived meanwhile, which do not make the descriptor readable.
        while (takeEvents()) isOther = look() || isOther;
        if (xcb_connection_has_error(connection()) != 0) watch_.reset();
        if (isOther) changed_();
    }

    /// All selected events are about something that is looked at. False if there was none.
    [[nodiscard]] bool takeEvents() const {
        bool hasTaken = false;
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection())}) hasTaken = true;
        return hasTaken;
    }

    // Looking

    /// Whether anything has changed.
    bool look() {
        Surroundings found;
        found.monitors = monitors();
        lookAtSettings(found);
        found.naturalTouchpads = naturalTouchpads();
        // If the server ends in the middle, nothing counts.
        if (xcb_connection_has_error(connection()) != 0 || found == surroundings_) return false;
        surroundings_ = std::move(found);
        return true;
    }

    [[nodiscard]] std::vector<Monitor> monitors() const {
        std::vector<Monitor> found;
        if (!hasMonitors_) return found;
        const Reply<xcb_get_geometry_reply_t> whole(
            xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), root_), nullptr));
        const Reply<xcb_randr_get_monitors_reply_t> list(
            xcb_randr_get_monitors_reply(connection(), xcb_randr_get_monitors(connection(), root_, 1), nullptr));
        if (!whole || !list || whole->width == 0 || whole->height == 0) return found;
        const Size desktop{static_cast<double>(whole->width), static_cast<double>(whole->height)};
        for (auto each = xcb_randr_get_monitors_monitors_iterator(list.get()); each.rem > 0;
             xcb_randr_monitor_info_next(&each)) {
            found.push_back(monitorOf(*each.data, desktop));
        }
        return found;
    }

    [[nodiscard]] Monitor monitorOf(xcb_randr_monitor_info_t& info, Size desktop) const {
        Monitor monitor;
        monitor.name = nameOf(info.name);
        monitor.millimetres =
            sizeOf(static_cast<double>(info.width_in_millimeters), static_cast<double>(info.height_in_millimeters));
        monitor.place = {{info.x / desktop.width, info.y / desktop.height},
                         {info.width / desktop.width, info.height / desktop.height}};
        if (xcb_randr_monitor_info_outputs_length(&info) > 0) {
            lookAtOutput(xcb_randr_monitor_info_outputs(&info)[0], monitor);
        }
        return monitor;
    }

    /// What the panel of a monitor reports, regardless of its rotation.
    void lookAtOutput(xcb_randr_output_t output, Monitor& monitor) const {
        const Reply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            connection(), xcb_randr_get_output_info(connection(), output, XCB_CURRENT_TIME), nullptr));
        if (!info) return;
        monitor.millimetres = sizeOf(static_cast<double>(info->mm_width), static_cast<double>(info->mm_height));
        if (info->num_preferred > 0 && xcb_randr_get_output_info_modes_length(info.get()) > 0) {
            monitor.nativePixels = pixelsOf(xcb_randr_get_output_info_modes(info.get())[0]);
        }
        const Reply<xcb_randr_get_crtc_info_reply_t> crtc(xcb_randr_get_crtc_info_reply(
            connection(), xcb_randr_get_crtc_info(connection(), info->crtc, XCB_CURRENT_TIME), nullptr));
        if (crtc) monitor.turns = turnsOf(crtc->rotation);
    }

    [[nodiscard]] std::optional<Size> pixelsOf(xcb_randr_mode_t mode) const {
        const Reply<xcb_randr_get_screen_resources_current_reply_t> resources(
            xcb_randr_get_screen_resources_current_reply(
                connection(), xcb_randr_get_screen_resources_current(connection(), root_), nullptr));
        if (!resources) return std::nullopt;
        for (auto each = xcb_randr_get_screen_resources_current_modes_iterator(resources.get()); each.rem > 0;
             xcb_randr_mode_info_next(&each)) {
            if (each.data->id == mode) return sizeOf(each.data->width, each.data->height);
        }
        return std::nullopt;
    }

    void lookAtSettings(Surroundings& found) {
        const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            connection(), xcb_get_selection_owner(connection(), atomOf(kSettingsOwner)), nullptr));
        const auto settings =
            owner && owner->owner != XCB_NONE ? settingsOf(owner->owner) : std::vector<std::uint8_t>();
        const auto resources = propertyOf(root_, XCB_ATOM_RESOURCE_MANAGER);
        const std::string_view database(reinterpret_cast<const char*>(resources.data()), resources.size());
        auto milliseconds = xSetting(settings, "Net/DoubleClickTime");
        if (!milliseconds) milliseconds = xResource(database, "multiClickTime");
        if (milliseconds && *milliseconds > 0) found.doubleClickInterval = std::chrono::milliseconds(*milliseconds);
        const auto distance = xSetting(settings, "Net/DoubleClickDistance");
        if (distance && *distance > 0) found.doubleClickDistance = *distance;
    }

    /// Followed from now on.
    [[nodiscard]] std::vector<std::uint8_t> settingsOf(xcb_window_t manager) {
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection(), manager, XCB_CW_EVENT_MASK, &events);
        return propertyOf(manager, atomOf(kSettings));
    }

    [[nodiscard]] std::vector<std::uint8_t> propertyOf(xcb_window_t window, xcb_atom_t property) const {
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
            connection(), xcb_get_property(connection(), 0, window, property, XCB_ATOM_ANY, 0, kMostSettings),
            nullptr));
        if (!reply || reply->format != 8) return {};
        const auto* bytes = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
        return {bytes, bytes + xcb_get_property_value_length(reply.get())};
    }

    [[nodiscard]] std::vector<std::string> naturalTouchpads() const {
        std::vector<std::string> names;
        if (!hasDevices_) return names;
        const xcb_atom_t property = atomOf(kNaturalScrolling);
        const Reply<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
            connection(), xcb_input_xi_query_device(connection(), XCB_INPUT_DEVICE_ALL), nullptr));
        if (!devices) return names;
        for (auto each = xcb_input_xi_query_device_infos_iterator(devices.get()); each.rem > 0;
             xcb_input_xi_device_info_next(&each)) {
            if (!isOn(each.data->deviceid, property)) continue;
            names.emplace_back(xcb_input_xi_device_info_name(each.data),
                               static_cast<std::size_t>(xcb_input_xi_device_info_name_length(each.data)));
        }
        return names;
    }

    [[nodiscard]] bool isOn(xcb_input_device_id_t device, xcb_atom_t property) const {
        const Reply<xcb_input_xi_get_property_reply_t> reply(xcb_input_xi_get_property_reply(
            connection(), xcb_input_xi_get_property(connection(), device, 0, property, XCB_ATOM_ANY, 0, 1), nullptr));
        if (!reply || reply->format != 8 || reply->num_items == 0) return false;
        return *static_cast<const std::uint8_t*>(xcb_input_xi_get_property_items(reply.get())) != 0;
    }

    [[nodiscard]] xcb_atom_t atomOf(std::string_view name) const {
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            connection(), xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    [[nodiscard]] std::string nameOf(xcb_atom_t atom) const {
        const Reply<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(connection(), xcb_get_atom_name(connection(), atom), nullptr));
        if (!reply) return {};
        return {xcb_get_atom_name_name(reply.get()),
                static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
    }

    std::function<void()> changed_;
    Connection connection_;
    xcb_window_t root_;
    bool hasMonitors_ = false;
    bool hasDevices_ = false;
    Surroundings surroundings_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::shared_ptr<platform::NSTimer> firstRead_;
};

} // namespace

std::unique_ptr<touch::DesktopWatch> openX11Desktop(platform::CFRunLoop& loop, std::function<void()> changed) {
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) return nullptr;
    Connection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) return nullptr;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    if (!screen) return nullptr;
    auto desktop = std::make_unique<X11Desktop>(std::move(connection), screen->root, std::move(changed));
    desktop->begin(loop);
    return desktop;
}

} // namespace kelvo
