#include "linux/BusService.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

/// Opening gives up on a hung bus after this many seconds.
constexpr double kOpenTimeoutSeconds = 2.0;
/// A lost bus is retried at these intervals, which double each time.
constexpr double kFirstRetrySeconds = 0.1;
constexpr double kLongestRetrySeconds = 2.0;
/// The answer to RequestName that means ownership.
constexpr std::uint32_t kPrimaryOwner = 1;

} // namespace

bool isNameAbsent(const sd_bus_error& error) {
    return sd_bus_error_has_names(&error, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
}

BusService::BusService(platform::CFRunLoop& loop, std::string address, Offer offer)
    : loop_(loop), address_(std::move(address)), offer_(std::move(offer)), retryInterval_(kFirstRetrySeconds) {}

BusService::~BusService() { close(); }

bool BusService::open() {
    connect();
    loop_.runUntil([this] { return hasName() || hasFailed(); }, kOpenTimeoutSeconds);
    isKept_ = hasName();
    return isKept_;
}

void BusService::close() {
    isKept_ = false;
    if (retry_) retry_->invalidate();
    retry_.reset();
    connection_.reset();
}

void BusService::process() {
    if (isConnected()) connection_->process();
}

void BusService::connect() {
    connection_ = BusConnection::open(loop_, address_, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->afterProcessing();
    });
    nameState_ = connection_ && requestName() ? NameState::Requested : NameState::Refused;
    if (connection_) connection_->process();
    keepName();
}

/// Does not wait; the bus answers through onNameAnswer(). False if the name cannot be requested at all.
bool BusService::requestName() {
    sd_bus* bus = connection_->bus();
    // Without flags, the request neither queues behind another owner nor replaces it.
    return sd_bus_add_object_vtable(bus, nullptr, offer_.objectPath, offer_.interface, offer_.vtable,
                                    offer_.userData) >= 0 &&
           sd_bus_request_name_async(bus, nullptr, offer_.busName.c_str(), 0, onNameAnswer, this) >= 0;
}

int BusService::onNameAnswer(sd_bus_message* answer, void* userData, sd_bus_error* /*error*/) noexcept {
    std::uint32_t result = 0;
    const bool isOwner = !sd_bus_message_is_method_error(answer, nullptr) &&
                         sd_bus_message_read(answer, "u", &result) > 0 && result == kPrimaryOwner;
    static_cast<BusService*>(userData)->nameState_ = isOwner ? NameState::Owned : NameState::Refused;
    return 0;
}

void BusService::afterProcessing() {
    keepName();
    // A copy, because the callback may release this service.
    if (const auto processed = offer_.processed) processed();
}

/// Called after each change of the connection. While the service does not own its name, tries to get it back.
void BusService::keepName() {
    if (hasName()) retryInterval_ = kFirstRetrySeconds;
    if (!isKept_ || !hasFailed() || retry_) return;
    retry_ = loop_.scheduleTimer(retryInterval_, [weakSelf = weak_from_this()] {
        const auto self = weakSelf.lock();
        if (!self) return;
        self->retry_.reset();
        self->connect();
    });
    retryInterval_ = std::min(2.0 * retryInterval_, kLongestRetrySeconds);
}

} // namespace kelvo
