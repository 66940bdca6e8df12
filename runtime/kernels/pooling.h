#pragma once

#include "windows.h"

namespace scribo::cpu {

enum class PoolingMode {
    Maximum,
    AverageWithPadding, ///< zeros in the padding count, what lies beyond it does not
    AverageOfSource ///< only elements of the source count
};

/// Pooling of planes that lie one behind the other, row by row, for what no faster form does.
struct PlanePooling
{
    PoolingMode mode;
    WindowAxis down, across;
};

/// `source`: planes x down.source x across.source; `result`: planes x down.results x across.results.
void poolPlanes(const PlanePooling& pooling, std::int64_t planes, const float* source, float* result);

} // namespace scribo::cpu
