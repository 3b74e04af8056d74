// Answers messages of the same bytes with nothing behind it: one sd-bus connection, one method.

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

int onSend(sd_bus_message* call, void*, sd_bus_error*) {
    std::int32_t id = 0;
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read(call, "i", &id) < 0 || sd_bus_message_read_array(call, 'y', &bytes, &size) < 0) return -1;
    return sd_bus_reply_method_return(call, "ay", 0);
}

const sd_bus_vtable kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Send", "iay", "ay", onSend, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

} // namespace

int main() {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/bare", "com.kelvo.BarePeer", kMethods, nullptr) < 0 ||
        sd_bus_request_name(bus, "com.kelvo.BarePeer", 0) < 0) {
        return EXIT_FAILURE;
    }
    (void)std::puts("ready");
    (void)std::fflush(stdout);
    for (;;) {
        const int progress = sd_bus_process(bus, nullptr);
        if (progress < 0) return EXIT_FAILURE;
        if (progress == 0) (void)sd_bus_wait(bus, UINT64_MAX);
    }
}
