#include "peers/devices/LogindSeats.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

struct TextReleaser {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, TextReleaser>;

/// Neither a login screen nor a remote session.
bool isUsersOwn(const char* session) {
    char* kind = nullptr;
    if (sd_session_get_class(session, &kind) < 0) return false;
    const Text releaser(kind);
    return std::string_view(kind) == "user" && sd_session_is_remote(session) == 0;
}

} // namespace

LogindSeats::LogindSeats(platform::CFRunLoop& loop, std::function<void()> changed) : changed_(std::move(changed)) {
    sd_login_monitor* monitor = nullptr;
    if (sd_login_monitor_new("seat", &monitor) < 0) return;
    monitor_.reset(monitor);
    watch_ = loop.watch(sd_login_monitor_get_fd(monitor), [this] {
        sd_login_monitor_flush(monitor_.get());
        changed_();
    });
}

std::optional<uid_t> activeUserAt(const std::string& seat) {
    char* session = nullptr;
    uid_t user = 0;
    if (sd_seat_get_active(seat.c_str(), &session, &user) < 0) return std::nullopt;
    const Text releaser(session);
    if (!session || !isUsersOwn(session)) return std::nullopt;
    return user;
}

} // namespace kelvo
