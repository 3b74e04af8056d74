#include "touch/SlotTable.h"

#include <algorithm>

namespace touch {

namespace {

// The kernel's codes, which belong to its interface and do not change (linux/input-event-codes.h).
constexpr std::uint16_t kSynchronisation = 0x00;
constexpr std::uint16_t kReport = 0x00;
constexpr std::uint16_t kDropped = 0x03;
constexpr std::uint16_t kAbsolute = 0x03;
constexpr std::uint16_t kSlot = 0x2f;
constexpr std::uint16_t kPositionX = 0x35;
constexpr std::uint16_t kPositionY = 0x36;
constexpr std::uint16_t kToolType = 0x37;
constexpr std::uint16_t kTrackingId = 0x39;
constexpr std::int32_t kToolIsPalm = 2;

} // namespace

bool SlotTable::take(const KernelEvent& event) {
    if (event.type == kSynchronisation && event.code == kDropped) hasDropped_ = true;
    if (event.type == kSynchronisation && event.code == kReport) {
        time_ = event.time;
        const bool isWhole = !hasDropped_;
        hasDropped_ = false;
        return isWhole;
    }
    if (event.type == kAbsolute && !hasDropped_) takeAxis(event.code, event.value);
    return false;
}

void SlotTable::takeAxis(std::uint16_t code, std::int32_t value) {
    if (code == kSlot) {
        current_ = static_cast<std::size_t>(std::max(value, 0));
        return;
    }
    if (current_ >= std::min(slots_, kMostSlots)) return;
    Slot& slot = table_[current_];
    switch (code) {
    case kTrackingId:
        slot.id = value;
        if (value >= 0) slot.isPalm = false;
        return;
    case kPositionX:
        slot.x = value;
        return;
    case kPositionY:
        slot.y = value;
        return;
    case kToolType:
        slot.isPalm = value == kToolIsPalm;
        return;
    default:
        return;
    }
}

Frame SlotTable::frame() const {
    Frame frame{.time = time_, .contacts = {}};
    for (const Slot& slot : table_) {
        if (slot.id >= 0) frame.contacts.add({slot.id, glass_.placeOf(slot.x, slot.y), slot.isPalm});
    }
    return frame;
}

} // namespace touch
