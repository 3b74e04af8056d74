#include "peers/driver/ServiceSource.h"

#include "linux/BusService.h"
#include "linux/TouchScreenMonitor.h"
#include "peers/DevicesBus.h"
#include "platform/Log.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

/// A lost bus is retried at these intervals, which double each time.
constexpr double kFirstRetrySeconds = 0.1;
constexpr double kLongestRetrySeconds = 2.0;

/// The message closes its own descriptor; this is a duplicate.
Descriptor duplicateOf(int file) { return Descriptor(::fcntl(file, F_DUPFD_CLOEXEC, 0)); }

/// The service is not running, and the bus cannot start it.
bool isAbsence(const sd_bus_error& error) {
    return isNameAbsent(error) || std::string_view(error.name).starts_with("org.freedesktop.DBus.Error.Spawn");
}

/// Exceptions must not pass through the bus.
template <typename Act>
int guarded(const Act& act) noexcept {
    try {
        act();
        return 0;
    } catch (const std::exception&) {
        return -ENOMEM;
    }
}

} // namespace

ServiceSource::ServiceSource(platform::CFRunLoop& loop, std::string address)
    : loop_(loop), address_(std::move(address)), retryInterval_(kFirstRetrySeconds) {}

ServiceSource::~ServiceSource() {
    if (retry_) retry_->invalidate();
}

void ServiceSource::begin(Handlers handlers) {
    handlers_ = std::move(handlers);
    if (connect()) return;
    // A copy, because the callback may destroy this.
    const auto missing = handlers_.missing;
    missing();
}

bool ServiceSource::connect() {
    // Everything that uses the connection must go before it.
    signals_.reset();
    owner_.reset();
    list_.reset();
    requests_.clear();
    connection_ = BusConnection::open(loop_, address_, [this] { afterProcessing(); });
    if (!connection_ || !listen() || !askForDisplays()) return false;
    connection_->process();
    return true;
}

/// Until the bus is back; the first answer shows whether it is.
void ServiceSource::connectLater() {
    if (retry_) return;
    retry_ = loop_.scheduleTimer(retryInterval_, [this] {
        retry_.reset();
        if (!connect()) connectLater();
    });
    retryInterval_ = std::min(2.0 * retryInterval_, kLongestRetrySeconds);
}

bool ServiceSource::listen() {
    const std::string name(kDevicesName);
    const std::string signals = "type='signal',sender='" + name + "',interface='" + name + "'";
    const std::string owner =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'";
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(connection_->bus(), &slot, signals.c_str(), onSignal, nullptr, this) < 0) return false;
    signals_.reset(slot);
    if (sd_bus_add_match_async(connection_->bus(), &slot, owner.c_str(), onOwnerChanged, nullptr, this) < 0) {
        return false;
    }
    owner_.reset(slot);
    return true;
}

bool ServiceSource::askForDisplays() {
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(connection_->bus(), &slot, kDevicesName, kDevicesPath, kDevicesName,
                                                kDisplaysMethod, onDisplays, this, "");
    if (result < 0) return false;
    list_.reset(slot);
    return true;
}

int ServiceSource::onDisplays(sd_bus_message* answer, void* self, sd_bus_error* /*error*/) noexcept {
    return guarded([&] { static_cast<ServiceSource*>(self)->takeList(answer); });
}

void ServiceSource::takeList(sd_bus_message* answer) {
    retryInterval_ = kFirstRetrySeconds;
    if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
        isMissing_ = !hasLooked_ && isAbsence(*error);
        if (!isMissing_) {
            platform::NSLog("kelvo-touch-devices does not say which displays there are: %@",
                            std::string_view(error->message ? error->message : error->name));
        }
        return;
    }
    std::uint32_t id = 0;
    const char* name = nullptr;
    std::size_t count = 0;
    sd_bus_message_enter_container(answer, 'a', "(us)");
    for (; sd_bus_message_read(answer, "(us)", &id, &name) > 0; ++count) ask(id, name);
    if (!std::exchange(hasLooked_, true)) handlers_.looked(count);
}

int ServiceSource::onSignal(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
    return guarded([&] { static_cast<ServiceSource*>(self)->takeSignal(signal); });
}

void ServiceSource::takeSignal(sd_bus_message* signal) {
    const std::string_view kind = sd_bus_message_get_member(signal);
    std::uint32_t id = 0;
    if (sd_bus_message_read(signal, "u", &id) <= 0) return;
    if (kind == kAddedSignal) {
        const char* name = nullptr;
        if (sd_bus_message_read(signal, "s", &name) > 0) ask(id, name);
    } else if (kind == kRevokedSignal) {
        if (std::erase(held_, id) > 0) handlers_.suspended(id);
    } else if (kind == kRemovedSignal) {
        std::erase(held_, id);
        handlers_.went(id);
    }
}

/// A killed service cannot revoke anything, and its virtual devices are gone. The bus starts the next one, whose
/// displays count as new ones.
int ServiceSource::onOwnerChanged(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
    return guarded([&] {
        auto& source = *static_cast<ServiceSource*>(self);
        const char* owner = nullptr;
        if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) <= 0) return;
        if (std::string_view(owner).empty()) source.loseAll();
        if (!source.askForDisplays()) platform::NSLog("kelvo-touch-devices cannot be asked");
    });
}

void ServiceSource::loseAll() {
    for (const std::uint32_t id : std::exchange(held_, {})) handlers_.went(id);
}

void ServiceSource::ask(std::uint32_t id, const std::string& name) {
    const bool isAsked = std::any_of(requests_.begin(), requests_.end(),
                                     [&](const Request& request) { return request.id == id && !request.isOver; });
    if (isAsked || std::find(held_.begin(), held_.end(), id) != held_.end()) return;
    requests_.push_back({*this, id, name, nullptr, false});
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(connection_->bus(), &slot, kDevicesName, kDevicesPath, kDevicesName,
                                                kOpenMethod, onOpened, &requests_.back(), "u", id);
    requests_.back().question.reset(slot);
    requests_.back().isOver = result < 0;
}

int ServiceSource::onOpened(sd_bus_message* answer, void* request, sd_bus_error* /*error*/) noexcept {
    auto& asked = *static_cast<Request*>(request);
    asked.isOver = true;
    return guarded([&] { asked.source.takeAnswer(asked, answer); });
}

void ServiceSource::takeAnswer(Request& request, sd_bus_message* answer) {
    if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
        handlers_.refused(request.id, request.name, error->message ? error->message : error->name);
        return;
    }
    FoundDisplay found{.id = request.id, .name = request.name, .identity = {}, .file = {}, .nodes = {}, .devices = {}};
    int file = -1;
    if (sd_bus_message_read(answer, "h", &file) <= 0) return;
    found.file = duplicateOf(file);
    sd_bus_message_enter_container(answer, 'a', "h");
    for (Descriptor& node : found.nodes) {
        if (sd_bus_message_read(answer, "h", &file) <= 0) return;
        node = duplicateOf(file);
    }
    found.identity = identityOf(found.file.number());
    held_.push_back(request.id);
    handlers_.came(std::move(found));
}

void ServiceSource::afterProcessing() {
    requests_.remove_if([](const Request& request) { return request.isOver; });
    const bool isLost = !connection_->isOpen();
    if (isMissing_ || (isLost && !hasLooked_)) {
        const auto missing = handlers_.missing;
        return missing();
    }
    if (!isLost) return;
    loseAll();
    connectLater();
}

} // namespace kelvo
