#pragma once

#include "engine_generated.h"

#include <algorithm>
#include <cstdint>

namespace scribo::cpu {

/// How a pooling's windows lie along one axis.
struct PoolWindow
{
    std::int64_t kernel = 1;
    std::int64_t stride = 1;
    std::int64_t padBefore = 0;
    std::int64_t padAfter = 0;
    bool ceiling = false;

    /// The number of windows over `extent` elements; below 1 when none fits. Rounding up adds a
    /// window only if it starts within the input or the padding before it, as PyTorch does.
    std::int64_t results(std::int64_t extent) const
    {
        const std::int64_t room = extent + padBefore + padAfter - kernel;
        if (room < 0) {
            return 0;
        }
        if (!ceiling) {
            return room / stride + 1;
        }
        const std::int64_t windows = (room + stride - 1) / stride + 1;
        return (windows - 1) * stride >= extent + padBefore ? windows - 1 : windows;
    }
};

/// Along axis 0 (rows) or 1 (columns).
inline PoolWindow poolWindow(const format::Pooling& pooling, int axis)
{
    const auto i = static_cast<flatbuffers::uoffset_t>(axis);
    return {pooling.kernel()->Get(i), pooling.strides()->Get(i), pooling.pads()->Get(i), pooling.pads()->Get(2 + i),
        pooling.ceil_mode()};
}

} // namespace scribo::cpu
