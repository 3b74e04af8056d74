#pragma once

#include "linux/BusConnection.h"
#include "peers/driver/DisplaySource.h"
#include "platform/RunLoop.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// The displays that `kelvo-touch-devices` hands out. The bus starts that service when it is first asked. A bus that
/// went away is found again.
class ServiceSource final : public DisplaySource {
public:
    /// `address` is that of the system's bus. The loop outlives the source.
    ServiceSource(platform::CFRunLoop& loop, std::string address);
    ~ServiceSource() override;

    void begin(Handlers handlers) override;

private:
    /// A display that was asked for.
    struct Request {
        ServiceSource& source;
        std::uint32_t id = 0;
        std::string name;
        BusSlot question;
        bool isOver = false;
    };

    static int onDisplays(sd_bus_message* answer, void* self, sd_bus_error* error) noexcept;
    static int onOpened(sd_bus_message* answer, void* request, sd_bus_error* error) noexcept;
    static int onSignal(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;
    static int onOwnerChanged(sd_bus_message* signal, void* self, sd_bus_error* error) noexcept;

    [[nodiscard]] bool connect();
    [[nodiscard]] bool listen();
    [[nodiscard]] bool askForDisplays();
    void takeList(sd_bus_message* answer);
    void takeSignal(sd_bus_message* signal);
    void ask(std::uint32_t id, const std::string& name);
    void takeAnswer(Request& request, sd_bus_message* answer);
    void loseAll();
    void connectLater();
    void afterProcessing();

    platform::CFRunLoop& loop_;
    std::string address_;
    Handlers handlers_;
    std::shared_ptr<BusConnection> connection_;
    BusSlot signals_;
    BusSlot owner_;
    BusSlot list_;
    std::list<Request> requests_;
    std::vector<std::uint32_t> held_;
    bool hasLooked_ = false;
    bool isMissing_ = false;
    double retryInterval_;
    std::shared_ptr<platform::NSTimer> retry_;
};

} // namespace kelvo
