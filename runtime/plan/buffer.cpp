#include "buffer.h"

#include "alignedbuffer.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

bool liveTogether(const Buffer& a, const Buffer& b)
{
    return a.firstStep <= b.lastStep && b.firstStep <= a.lastStep;
}

/// The lowest offset at which `size` bytes fit between the `taken` ranges, which are sorted.
std::size_t firstGap(const std::vector<const Buffer*>& taken, std::size_t size)
{
    std::size_t offset = 0;
    for (const Buffer* other : taken) {
        if (other->offset >= offset + size) {
            break;
        }
        offset = std::max(offset, other->offset + AlignedBuffer::rounded(other->size));
    }
    return offset;
}

} // namespace

std::size_t arrangeArena(std::vector<Buffer>* buffers)
{
    std::vector<Buffer*> waiting;
    for (Buffer& buffer : *buffers) {
        if (buffer.kind == Buffer::Kind::Arena && buffer.firstStep >= 0) {
            waiting.push_back(&buffer);
        }
    }
    // The large ones first: small ones find room between them.
    std::stable_sort(
        waiting.begin(), waiting.end(), [](const Buffer* a, const Buffer* b) { return a->size > b->size; });

    std::size_t total = 0;
    std::vector<const Buffer*> placed;
    for (Buffer* buffer : waiting) {
        std::vector<const Buffer*> taken;
        std::copy_if(placed.begin(), placed.end(), std::back_inserter(taken),
            [&](const Buffer* other) { return liveTogether(*buffer, *other); });
        const std::size_t size = AlignedBuffer::rounded(buffer->size);
        buffer->offset = firstGap(taken, size);
        total = std::max(total, buffer->offset + size);
        const auto position = std::upper_bound(placed.begin(), placed.end(), buffer,
            [](const Buffer* a, const Buffer* b) { return a->offset < b->offset; });
        placed.insert(position, buffer);
    }
    return total;
}

} // namespace scribo::cpu
