// The least that stands between a display and a copy of it: what is read from the one is written to the other. What the
// driver's time for a frame is compared with.

#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <linux/input.h>
#include <unistd.h>

#include <array>
#include <cstddef>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const int node = ::open(argv[1], O_RDONLY | O_CLOEXEC);
    libevdev* device = nullptr;
    libevdev_uinput* copy = nullptr;
    if (node < 0 || libevdev_new_from_fd(node, &device) != 0 || libevdev_grab(device, LIBEVDEV_GRAB) != 0 ||
        libevdev_uinput_create_from_device(device, LIBEVDEV_UINPUT_OPEN_MANAGED, &copy) != 0) {
        return 1;
    }
    std::array<input_event, 64> events{};
    for (;;) {
        const ssize_t length = ::read(node, events.data(), sizeof events);
        if (length <= 0) return 1;
        if (::write(libevdev_uinput_get_fd(copy), events.data(), static_cast<std::size_t>(length)) != length) return 1;
    }
}
