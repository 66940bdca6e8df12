#pragma once

#include <cstddef>
#include <vector>

namespace scribo::cpu {

/// A place in memory that a plan uses. Steps know it by its number; the address is known only when
/// the plan is bound to an arena and to the caller's buffers.
using BufferId = int;

struct Buffer
{
    enum class Kind {
        /// A part of the arena, which other buffers use before and after.
        Arena,
        /// The caller's buffer of a binding.
        Binding,
        /// Memory that outlives the plan's runs: a weight, or something worked out once.
        Fixed
    };

    Kind kind = Kind::Arena;
    std::size_t size = 0;
    int binding = -1;
    const void* fixed = nullptr;

    /// The steps between which an arena buffer is in use, both included; -1 when it is in none.
    int firstStep = -1;
    int lastStep = -1;
    std::size_t offset = 0;
};

/// Turns buffer numbers into addresses.
class Addresses
{
public:
    Addresses(const std::vector<Buffer>& buffers, void* arena, void* const* bindings)
        : buffers(buffers)
        , arena(static_cast<std::byte*>(arena))
        , bindings(bindings)
    {
    }

    void* at(BufferId id) const
    {
        const Buffer& buffer = buffers[static_cast<std::size_t>(id)];
        switch (buffer.kind) {
        case Buffer::Kind::Arena:
            return arena + buffer.offset;
        case Buffer::Kind::Binding:
            return bindings[buffer.binding];
        case Buffer::Kind::Fixed:
            break;
        }
        // Steps write to fixed memory only while the plan is made.
        return const_cast<void*>(buffer.fixed);
    }
    float* floats(BufferId id) const { return static_cast<float*>(at(id)); }

private:
    const std::vector<Buffer>& buffers;
    std::byte* arena;
    void* const* bindings;
};

/// Gives every arena buffer its offset, such that two that are in use at the same time do not
/// overlap. Returns the size of the arena.
std::size_t arrangeArena(std::vector<Buffer>* buffers);

} // namespace scribo::cpu
