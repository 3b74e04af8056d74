#pragma once

#include <linux/input.h>

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace support {

/// An event node without a kernel. While one lives, reading, writing and asking of its descriptors in this process go
/// to it: `read`, `write` and `ioctl` are the test program's own.
class EventNode {
public:
    /// What the device says of itself.
    struct Device {
        std::string name = "Panel";
        std::string phys = "usb-1/input0";
        input_id id{BUS_USB, 0x04f3, 0x0732, 0x0110};
        std::set<unsigned> properties{INPUT_PROP_DIRECT};
        std::set<unsigned> keys{BTN_TOUCH};
        std::map<unsigned, input_absinfo> axes;
    };
    /// A panel of 200 by 100 mm, ten units to a millimetre, with ten slots.
    [[nodiscard]] static Device panel();

    explicit EventNode(Device device);
    ~EventNode();
    EventNode(const EventNode&) = delete;
    EventNode& operator=(const EventNode&) = delete;

    /// Another open file of this node; whoever has it closes it.
    [[nodiscard]] int open();

    /// A change, for all who may see it. What stands in slots is kept as the kernel keeps it.
    void send(std::uint16_t type, std::uint16_t code, std::int32_t value);
    /// A finger lands or moves in a slot, or is lifted.
    void touch(std::int32_t slot, std::int32_t id, std::int32_t x, std::int32_t y);
    void lift(std::int32_t slot);
    /// The end of a report that is stamped with this time.
    void report(std::int64_t microseconds);
    /// What has not been read is lost, as when nobody read for long.
    void loseEvents(std::int64_t microseconds);

    void unplug() { isGone_ = true; }
    /// The next read is interrupted by a signal.
    void interruptReading() { isInterrupted_ = true; }

    /// Which open file has the device to itself; negative where none has.
    [[nodiscard]] int grabber() const { return grabber_; }
    void grabAs(int descriptor) { grabber_ = descriptor; }
    /// Called in the middle of each change of the grab, once.
    std::function<void()> meanwhile;
    /// How often somebody asked to have the device, or gave it up.
    int grabs = 0;
    /// Each `write`, and all the events in it.
    std::vector<std::vector<input_event>> written;
    /// How much of a write is taken; all of it where negative.
    int writeResult = -1;

    /// Asked as the maker of virtual devices, it writes down what was asked for.
    std::string made;

    // What the system calls come to; negative with errno set.
    [[nodiscard]] long answerRead(int descriptor, void* bytes, std::size_t size);
    [[nodiscard]] long answerWrite(int descriptor, const void* bytes, std::size_t size);
    [[nodiscard]] int answerIoctl(int descriptor, unsigned long request, void* argument);
    [[nodiscard]] bool has(int descriptor) const { return pipes_.contains(descriptor); }
    void forget(int descriptor);

private:
    [[nodiscard]] int answerMaking(unsigned long request, void* argument);
    [[nodiscard]] int setGrab(int descriptor, bool isOn);
    void revoke(int descriptor);
    void keep(std::uint16_t code, std::int32_t value);

    Device device_;
    std::map<unsigned, std::vector<std::int32_t>> slots_;
    std::size_t currentSlot_ = 0;
    /// Events since the last report.
    std::vector<input_event> pending_;
    /// The reading end, which is the open file, and the writing one.
    std::map<int, int> pipes_;
    std::set<int> revoked_;
    int grabber_ = -1;
    bool isGone_ = false;
    bool isInterrupted_ = false;
};

} // namespace support
