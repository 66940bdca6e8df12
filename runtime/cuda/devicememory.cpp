#include "devicememory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace scribo::cpu {

namespace {

constexpr std::size_t alignment = 64;

std::uintptr_t address(const void* pointer)
{
    return reinterpret_cast<std::uintptr_t>(pointer);
}

} // namespace

DeviceMemory& DeviceMemory::instance()
{
    // Never destroyed: a worker thread may still copy while the process ends.
    static auto* memory = new DeviceMemory;
    return *memory;
}

void* DeviceMemory::allocate(std::size_t size)
{
    if (size > std::numeric_limits<std::size_t>::max() - alignment) {
        return nullptr;
    }
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* pointer = std::aligned_alloc(alignment, rounded);
    if (!pointer) {
        return nullptr;
    }
    try {
        const std::lock_guard lock(mutex);
        allocations.emplace(address(pointer), size);
    } catch (const std::bad_alloc&) {
        std::free(pointer);
        return nullptr;
    }
    return pointer;
}

bool DeviceMemory::contains(const void* pointer, std::size_t size) const
{
    const std::lock_guard lock(mutex);
    auto next = allocations.upper_bound(address(pointer));
    if (next == allocations.begin()) {
        return false;
    }
    const auto& [start, extent] = *--next;
    const std::size_t offset = address(pointer) - start;
    return offset <= extent && size <= extent - offset;
}

bool DeviceMemory::touches(const void* pointer, std::size_t size) const
{
    const std::lock_guard lock(mutex);
    auto next = allocations.upper_bound(address(pointer));
    if (next != allocations.end() && size > next->first - address(pointer)) {
        return true;
    }
    if (next == allocations.begin()) {
        return false;
    }
    const auto& [start, extent] = *--next;
    return address(pointer) - start < extent;
}

} // namespace scribo::cpu
