#pragma once

#include <cstdint>

namespace scribo::cpu {

/// Pixels of planes at the places of a grid, linear between the centres of pixels.
struct GridSampling
{
    std::int64_t channels;
    std::int64_t rows, columns; ///< of the source
    std::int64_t places; ///< of the grid, and so of each plane of the result
    bool border; ///< beyond the source lies what its outermost pixels hold, not zeros
    bool alignCorners; ///< -1 and 1 are the centres of the outermost pixels, not their outer edges
};

/// One picture: `source` channels x rows x columns, `grid` places x 2 (column, row), `result` channels x places. Any
/// float may stand in the grid.
void sampleGrid(const GridSampling& sampling, const float* source, const float* grid, float* result);

} // namespace scribo::cpu
