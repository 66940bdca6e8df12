#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

namespace scribo::cpu {

/// Every allocation that cudaMalloc() ever made in this process. Device memory is never given back
/// (the API of this runtime has no cudaFree), so what is known of an allocation stays true.
class DeviceMemory
{
public:
    static DeviceMemory& instance();

    /// `size` bytes at the start of a cache line; null when there is no room.
    void* allocate(std::size_t size);
    /// Whether the `size` bytes at `pointer` lie inside one allocation.
    bool contains(const void* pointer, std::size_t size) const;
    /// Whether any of the `size` bytes at `pointer` lies in an allocation.
    bool touches(const void* pointer, std::size_t size) const;

private:
    mutable std::mutex mutex;
    /// Start to size.
    std::map<std::uintptr_t, std::size_t> allocations;
};

} // namespace scribo::cpu
