#pragma once

#include "processor.h"

#include <algorithm>
#include <cstdint>

namespace scribo::cpu {

/// How the windows of a pooling lie along one axis of its source.
struct WindowAxis
{
    std::int64_t window; ///< elements that a window covers
    std::int64_t stride;
    std::int64_t padBefore, padAfter;
    std::int64_t source; ///< elements of the source
    std::int64_t results; ///< number of windows
};

/// The part of a window that lies on the source; it may be empty.
struct WindowSpan
{
    std::int64_t begin;
    std::int64_t end;
};

SCRIBO_INLINE WindowSpan spanOf(const WindowAxis& axis, std::int64_t index)
{
    const std::int64_t start = index * axis.stride - axis.padBefore;
    return {std::max<std::int64_t>(start, 0), std::min(start + axis.window, axis.source)};
}

} // namespace scribo::cpu
