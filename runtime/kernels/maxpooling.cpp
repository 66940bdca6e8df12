#include "maxpooling.h"

#include "vector.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// The part of a window that lies on the source.
struct Span
{
    std::int64_t begin;
    std::int64_t end;
};

SCRIBO_INLINE Span spanOf(const PoolWindow& window, std::int64_t index, std::int64_t extent)
{
    const std::int64_t start = index * window.stride - window.padBefore;
    return {std::max<std::int64_t>(start, 0), std::min(start + window.kernel, extent)};
}

template <class Vector>
SCRIBO_INLINE void pool(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
{
    constexpr std::int64_t block = lanes<Vector>;
    const std::int64_t rowSize = shape.columns * block;
    source += index * shape.rows * rowSize;
    result += index * shape.resultRows * shape.resultColumns * block;
    for (std::int64_t y = 0; y < shape.resultRows; ++y) {
        const Span rows = spanOf(shape.down, y, shape.rows);
        for (std::int64_t x = 0; x < shape.resultColumns; ++x, result += block) {
            const Span columns = spanOf(shape.across, x, shape.columns);
            const float* row = source + rows.begin * rowSize;
            Vector most = load<Vector>(row + columns.begin * block);
            for (std::int64_t i = rows.begin; i < rows.end; ++i, row += rowSize) {
                for (std::int64_t column = columns.begin; column < columns.end; ++column) {
                    most = larger(load<Vector>(row + column * block), most);
                }
            }
            store(result, most);
        }
    }
}

void pool8(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
{
    pool<Float8>(shape, index, source, result);
}

void pool16(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
{
    pool<Float16>(shape, index, source, result);
}

#if SCRIBO_X86
SCRIBO_AVX2 void pool8Avx2(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
{
    pool<Float8>(shape, index, source, result);
}

SCRIBO_AVX512 void pool16Avx512(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
{
    pool<Float16>(shape, index, source, result);
}
#endif

} // namespace

MaxPooling maxPooling(int block)
{
#if SCRIBO_X86
    if (block == 16 && hasAvx512()) {
        return pool16Avx512;
    }
    if (block == 8 && hasAvx2()) {
        return pool8Avx2;
    }
#endif
    return block == 16 ? pool16 : pool8;
}

} // namespace scribo::cpu
