#include "rowproduct.h"

#include "dispatch.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// Vectors of columns and rows whose sums are held in registers at once: on AVX2 twelve sums, two weights and a value
/// of the source fill the sixteen.
constexpr std::int64_t vectorsAtOnce = 2;
constexpr std::int64_t rowsAtOnce = 6;

template <class Vector, std::int64_t rows, std::int64_t vectors>
SCRIBO_INLINE void multiplyTile(
    const RowProduct& product, const float* source, const float* weights, const float* bias, float* result)
{
    constexpr std::int64_t width = lanes<Vector>;
    Vector sums[rows][vectors];
    for (std::int64_t row = 0; row < rows; ++row) {
        for (std::int64_t v = 0; v < vectors; ++v) {
            sums[row][v] = bias ? load<Vector>(bias + v * width) : Vector{};
        }
    }
    for (std::int64_t begin = 0; begin < product.inner; begin += product.sourceBlock) {
        for (std::int64_t i = 0; i < product.sourceBlock; ++i, weights += vectors * width) {
            Vector weight[vectors];
            for (std::int64_t v = 0; v < vectors; ++v) {
                weight[v] = load<Vector>(weights + v * width);
            }
            for (std::int64_t row = 0; row < rows; ++row) {
                const float value = source[row * product.sourceRow + i];
                for (std::int64_t v = 0; v < vectors; ++v) {
                    sums[row][v] += value * weight[v];
                }
            }
        }
        source += product.sourceBlockStep;
    }
    for (std::int64_t row = 0; row < rows; ++row) {
        for (std::int64_t v = 0; v < vectors; ++v) {
            store(result + row * product.resultRow + v * product.resultVector, sums[row][v]);
        }
    }
}

/// As many rows as are left below rowsAtOnce.
template <class Vector, std::int64_t vectors>
SCRIBO_INLINE void multiplyRest(const RowProduct& product, std::int64_t rows, const float* source, const float* weights,
    const float* bias, float* result)
{
    switch (rows) {
    case 1:
        return multiplyTile<Vector, 1, vectors>(product, source, weights, bias, result);
    case 2:
        return multiplyTile<Vector, 2, vectors>(product, source, weights, bias, result);
    case 3:
        return multiplyTile<Vector, 3, vectors>(product, source, weights, bias, result);
    case 4:
        return multiplyTile<Vector, 4, vectors>(product, source, weights, bias, result);
    case 5:
        return multiplyTile<Vector, 5, vectors>(product, source, weights, bias, result);
    default:
        return;
    }
}

template <class Vector, std::int64_t vectors>
SCRIBO_INLINE void multiplyColumns(
    const RowProduct& product, const float* source, const float* weights, const float* bias, float* result)
{
    std::int64_t row = 0;
    for (; row + rowsAtOnce <= product.rows; row += rowsAtOnce) {
        multiplyTile<Vector, rowsAtOnce, vectors>(
            product, source + row * product.sourceRow, weights, bias, result + row * product.resultRow);
    }
    multiplyRest<Vector, vectors>(
        product, product.rows - row, source + row * product.sourceRow, weights, bias, result + row * product.resultRow);
}

struct Multiply
{
    template <class Vector>
    SCRIBO_INLINE static void run(
        const RowProduct& product, const float* source, const float* weights, const float* bias, float* result)
    {
        constexpr std::int64_t width = lanes<Vector>;
        std::int64_t vector = 0;
        for (; vector + vectorsAtOnce <= product.vectors; vector += vectorsAtOnce) {
            multiplyColumns<Vector, vectorsAtOnce>(product, source, weights + vector * product.inner * width,
                bias ? bias + vector * width : nullptr, result + vector * product.resultVector);
        }
        if (vector < product.vectors) {
            multiplyColumns<Vector, 1>(product, source, weights + vector * product.inner * width,
                bias ? bias + vector * width : nullptr, result + vector * product.resultVector);
        }
    }
};

} // namespace

std::vector<float> weightsInOrder(const RowProduct& product, const float* weights)
{
    std::vector<float> ordered;
    ordered.reserve(static_cast<std::size_t>(product.weightCount()));
    for (std::int64_t vector = 0; vector < product.vectors; vector += vectorsAtOnce) {
        const std::int64_t begin = vector * product.lanes;
        const std::int64_t end = std::min(vector + vectorsAtOnce, product.vectors) * product.lanes;
        for (std::int64_t i = 0; i < product.inner; ++i) {
            for (std::int64_t column = begin; column < end; ++column) {
                ordered.push_back(weights[column * product.inner + i]);
            }
        }
    }
    return ordered;
}

ColumnPart columnPart(const RowProduct& product, std::int64_t index, std::int64_t parts)
{
    // Weights of vectors that are multiplied at once lie together, so that parts begin between such groups.
    const std::int64_t groups = (product.vectors + vectorsAtOnce - 1) / vectorsAtOnce;
    const std::int64_t begin = index * groups / parts * vectorsAtOnce;
    const std::int64_t end = std::min((index + 1) * groups / parts * vectorsAtOnce, product.vectors);
    ColumnPart part{
        product, begin * product.inner * product.lanes, begin * product.lanes, begin * product.resultVector};
    part.product.vectors = end - begin;
    return part;
}

MultiplyRows multiplyRows(int lanes)
{
    return fastestForm<Multiply, MultiplyRows>(lanes);
}

} // namespace scribo::cpu
