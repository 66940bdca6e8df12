#include "pooling.h"

#include <limits>

namespace scribo::cpu {

namespace {

/// A window along one axis: its part on the source, and how many of its positions count.
struct CountedSpan
{
    WindowSpan span;
    std::int64_t counted;
};

CountedSpan countedSpan(PoolingMode mode, const WindowAxis& axis, std::int64_t index)
{
    const WindowSpan span = spanOf(axis, index);
    if (mode != PoolingMode::AverageWithPadding) {
        return {span, span.end - span.begin};
    }
    const std::int64_t start = index * axis.stride - axis.padBefore;
    return {span, std::min(start + axis.window, axis.source + axis.padAfter) - start};
}

float poolWindow(const PlanePooling& pooling, const float* plane, const CountedSpan& rows, const CountedSpan& columns)
{
    const bool max = pooling.mode == PoolingMode::Maximum;
    float result = max ? -std::numeric_limits<float>::infinity() : 0;
    for (std::int64_t y = rows.span.begin; y < rows.span.end; ++y) {
        const float* row = plane + y * pooling.across.source;
        for (std::int64_t x = columns.span.begin; x < columns.span.end; ++x) {
            result = max ? std::max(result, row[x]) : result + row[x];
        }
    }
    return max ? result : result / static_cast<float>(rows.counted * columns.counted);
}

} // namespace

void poolPlanes(const PlanePooling& pooling, std::int64_t planes, const float* source, float* result)
{
    for (std::int64_t plane = 0; plane < planes; ++plane) {
        for (std::int64_t y = 0; y < pooling.down.results; ++y) {
            const CountedSpan rows = countedSpan(pooling.mode, pooling.down, y);
            for (std::int64_t x = 0; x < pooling.across.results; ++x) {
                *result++ = poolWindow(pooling, source, rows, countedSpan(pooling.mode, pooling.across, x));
            }
        }
        source += pooling.down.source * pooling.across.source;
    }
}

} // namespace scribo::cpu
