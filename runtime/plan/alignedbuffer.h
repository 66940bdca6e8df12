#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace scribo::cpu {

/// Uninitialised memory that starts at a cache line, as the kernels like it.
class AlignedBuffer
{
public:
    static constexpr std::size_t alignment = 64;

    /// Throws std::bad_alloc.
    explicit AlignedBuffer(std::size_t size)
        : bytes(rounded(size))
        , memory(std::aligned_alloc(alignment, bytes))
    {
        if (!memory) {
            throw std::bad_alloc();
        }
    }

    /// `size` rounded up to whole cache lines, at least one.
    static std::size_t rounded(std::size_t size)
    {
        return size == 0 ? alignment : (size + alignment - 1) / alignment * alignment;
    }

    void* data() const { return memory.get(); }
    float* floats() const { return static_cast<float*>(memory.get()); }
    std::size_t size() const { return bytes; }

private:
    struct Release
    {
        void operator()(void* released) const { std::free(released); }
    };

    std::size_t bytes;
    std::unique_ptr<void, Release> memory;
};

} // namespace scribo::cpu
