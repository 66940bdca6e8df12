#pragma once

#include <cstdint>
#include <vector>

/// Products of a few rows with a matrix of weights, for the sizes that recognisers have: tens to hundreds of rows,
/// inner sums of tens to hundreds, weights that stay. oneDNN's kernels reach about two thirds of the processor's peak
/// there (measured on AVX2).
namespace scribo::cpu {

/// Rows x inner times inner x columns. Columns come in whole vectors.
struct RowProduct
{
    int lanes; ///< of a vector: 8 or 16
    std::int64_t rows;
    std::int64_t inner;
    std::int64_t vectors; ///< of columns

    // Element i of row r of the source lies at
    //     r * sourceRow + i / sourceBlock * sourceBlockStep + i % sourceBlock,
    // vector v of row r of the result at r * resultRow + v * resultVector. inner is a multiple of sourceBlock.
    std::int64_t sourceRow;
    std::int64_t sourceBlock;
    std::int64_t sourceBlockStep;
    std::int64_t resultRow;
    std::int64_t resultVector;

    std::int64_t weightCount() const { return inner * vectors * lanes; }
};

/// Weights as multiplyRows() takes them, from `weights`, which holds the `inner` weights of column 0, of column 1, and
/// so on.
std::vector<float> weightsInOrder(const RowProduct& product, const float* weights);

/// Some neighbouring columns of a product, and how many floats into its weights, bias and result they begin.
struct ColumnPart
{
    RowProduct product;
    std::int64_t weight;
    std::int64_t bias;
    std::int64_t result;
};

/// The part `index` of the `parts` into which the columns of `product` are shared; it may be empty.
ColumnPart columnPart(const RowProduct& product, std::int64_t index, std::int64_t parts);

/// `bias` is added to every row (`vectors` vectors); null for none.
using MultiplyRows
    = void (*)(const RowProduct& product, const float* source, const float* weights, const float* bias, float* result);

/// The fastest for vectors of `lanes` floats on this processor.
MultiplyRows multiplyRows(int lanes);

} // namespace scribo::cpu
