#include "support/CountedAllocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t allocationCount = 0;

void* allocate(std::size_t size) noexcept {
    ++allocationCount;
    return std::malloc(std::max<std::size_t>(size, 1));
}

void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
    ++allocationCount;
    const auto step = static_cast<std::size_t>(alignment);
    return std::aligned_alloc(step, (std::max<std::size_t>(size, 1) + step - 1) / step * step);
}

void* orThrow(void* memory) {
    if (!memory) throw std::bad_alloc();
    return memory;
}

} // namespace

std::size_t support::allocations() { return allocationCount; }

using Alignment = std::align_val_t;
using NoThrow = const std::nothrow_t&;

void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new[](std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, NoThrow /*tag*/) noexcept { return allocate(size); }
void* operator new[](std::size_t size, NoThrow /*tag*/) noexcept { return allocate(size); }
void* operator new(std::size_t size, Alignment alignment) { return orThrow(allocate(size, alignment)); }
void* operator new[](std::size_t size, Alignment alignment) { return orThrow(allocate(size, alignment)); }
void* operator new(std::size_t size, Alignment alignment, NoThrow /*tag*/) noexcept {
    return allocate(size, alignment);
}
void* operator new[](std::size_t size, Alignment alignment, NoThrow /*tag*/) noexcept {
    return allocate(size, alignment);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void* memory, NoThrow /*tag*/) noexcept { std::free(memory); }
void operator delete[](void* memory, NoThrow /*tag*/) noexcept { std::free(memory); }
void operator delete(void* memory, Alignment /*alignment*/) noexcept { std::free(memory); }
void operator delete[](void* memory, Alignment /*alignment*/) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/, Alignment /*alignment*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/, Alignment /*alignment*/) noexcept { std::free(memory); }
void operator delete(void* memory, Alignment /*alignment*/, NoThrow /*tag*/) noexcept { std::free(memory); }
void operator delete[](void* memory, Alignment /*alignment*/, NoThrow /*tag*/) noexcept { std::free(memory); }
