#include "maxpooling.h"

#include "dispatch.h"

namespace scribo::cpu {

namespace {

struct Pool
{
    template <class Vector>
    SCRIBO_INLINE static void run(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result)
    {
        constexpr std::int64_t block = lanes<Vector>;
        const std::int64_t rowSize = shape.across.source * block;
        source += index * shape.down.source * rowSize;
        result += index * shape.down.results * shape.across.results * block;
        for (std::int64_t y = 0; y < shape.down.results; ++y) {
            const WindowSpan rows = spanOf(shape.down, y);
            for (std::int64_t x = 0; x < shape.across.results; ++x, result += block) {
                const WindowSpan columns = spanOf(shape.across, x);
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
};

} // namespace

MaxPooling maxPooling(int block)
{
    return fastestForm<Pool, MaxPooling>(block);
}

} // namespace scribo::cpu
