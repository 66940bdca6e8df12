#include "gridsample.h"

#include <algorithm>
#include <cmath>

namespace scribo::cpu {

namespace {

/// The two pixels along one axis between which a place lies, and how much each of them counts.
struct Neighbours
{
    std::int64_t first = 0, second = 0;
    float firstWeight = 0, secondWeight = 0;
};

Neighbours neighbours(const GridSampling& sampling, float place, std::int64_t extent)
{
    const auto size = static_cast<float>(extent);
    float at = sampling.alignCorners ? (place + 1) / 2 * (size - 1) : ((place + 1) * size - 1) / 2;
    if (sampling.border) {
        at = at > 0 ? std::min(at, size - 1) : 0.0F;
    }
    // Also for what is not a number; what passes fits an integer.
    if (!(at > -1 && at < size)) {
        return {};
    }
    const float before = std::floor(at);
    const auto first = static_cast<std::int64_t>(before);
    Neighbours found;
    if (first >= 0) {
        found.first = first;
        found.firstWeight = 1 - (at - before);
    }
    if (first + 1 < extent) {
        found.second = first + 1;
        found.secondWeight = at - before;
    }
    return found;
}

} // namespace

void sampleGrid(const GridSampling& sampling, const float* source, const float* grid, float* result)
{
    for (std::int64_t place = 0; place < sampling.places; ++place) {
        const Neighbours columns = neighbours(sampling, grid[2 * place], sampling.columns);
        const Neighbours rows = neighbours(sampling, grid[2 * place + 1], sampling.rows);
        const float* above = source + rows.first * sampling.columns;
        const float* below = source + rows.second * sampling.columns;
        for (std::int64_t channel = 0; channel < sampling.channels; ++channel) {
            const float upper
                = columns.firstWeight * above[columns.first] + columns.secondWeight * above[columns.second];
            const float lower
                = columns.firstWeight * below[columns.first] + columns.secondWeight * below[columns.second];
            result[channel * sampling.places + place] = rows.firstWeight * upper + rows.secondWeight * lower;
            above += sampling.rows * sampling.columns;
            below += sampling.rows * sampling.columns;
        }
    }
}

} // namespace scribo::cpu
