#include "operationcase.h"
#include "reference.h"

#include "kernels/lstm.h"
#include "kernels/rowproduct.h"
#include "kernels/vectormath.h"

#include <cmath>
#include <limits>

// The kernels behind a recurrent layer by themselves: also those that this processor would not choose.

namespace scribo::test {
namespace {

Array randomArray(std::mt19937& random, const Shape& shape, float spread)
{
    Array array = Array::zeros(shape);
    array.data = randomFloats(random, array.count());
    for (float& value : array.data) {
        value *= spread;
    }
    return array;
}

template <class Vector>
float first(const Vector& vector)
{
    return vector[0];
}

TEST(VectorMath, EqualsTheStandardLibrary)
{
    for (float x = -86.5F; x < 87; x += 0.01F) {
        const float expected = std::exp(x);
        EXPECT_NEAR(first(cpu::exponential(cpu::splat<cpu::Float8>(x))) / expected, 1, 3e-7) << x;
        const double exact = 1 / (1 + std::exp(-static_cast<double>(x)));
        EXPECT_NEAR(first(cpu::sigmoid(cpu::splat<cpu::Float16>(x))), exact, 2e-7) << x;
        EXPECT_NEAR(first(cpu::tangens(cpu::splat<cpu::Float8>(x))), std::tanh(static_cast<double>(x)), 4e-7) << x;
    }
}

TEST(VectorMath, AtTheEndsOfTheNumbers)
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float large : {100.0F, 1e30F, infinity}) {
        EXPECT_NEAR(first(cpu::sigmoid(cpu::splat<cpu::Float8>(large))), 1, 1e-7);
        EXPECT_NEAR(first(cpu::sigmoid(cpu::splat<cpu::Float8>(-large))), 0, 1e-7);
        EXPECT_NEAR(first(cpu::tangens(cpu::splat<cpu::Float8>(large))), 1, 1e-7);
        EXPECT_NEAR(first(cpu::tangens(cpu::splat<cpu::Float8>(-large))), -1, 1e-7);
    }
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(first(cpu::sigmoid(cpu::splat<cpu::Float8>(none)))));
    EXPECT_TRUE(std::isnan(first(cpu::tangens(cpu::splat<cpu::Float16>(none)))));
}

TEST(RowProduct, EqualsItsDefinition)
{
    repeatRandomly(60, [](std::mt19937& random) {
        const int lanes = toss(random) ? 8 : 16;
        const std::int64_t block = pick(random, 1, 9);
        const std::int64_t blocks = pick(random, 1, 5);
        const std::int64_t rows = pick(random, 1, 20);
        const std::int64_t vectors = pick(random, 1, 5);
        const std::int64_t inner = block * blocks;
        // Rows of a block lie together, blocks behind each other; results likewise.
        const cpu::RowProduct product{
            lanes, rows, inner, vectors, block, block, rows * block, std::int64_t(lanes), rows * lanes};
        const std::vector<float> source = randomFloats(random, rows * inner);
        const std::vector<float> weights = randomFloats(random, vectors * lanes * inner);
        const std::vector<float> bias = randomFloats(random, vectors * lanes);
        const bool biased = toss(random);
        std::vector<float> result(static_cast<std::size_t>(rows * vectors * lanes));
        cpu::multiplyRows(lanes)(product, source.data(), cpu::weightsInOrder(product, weights.data()).data(),
            biased ? bias.data() : nullptr, result.data());
        for (std::int64_t row = 0; row < rows; ++row) {
            for (std::int64_t column = 0; column < vectors * lanes; ++column) {
                double sum = biased ? static_cast<double>(bias[static_cast<std::size_t>(column)]) : 0;
                for (std::int64_t i = 0; i < inner; ++i) {
                    const std::int64_t at = i / block * rows * block + row * block + i % block;
                    sum += static_cast<double>(source[static_cast<std::size_t>(at)])
                        * static_cast<double>(weights[static_cast<std::size_t>(column * inner + i)]);
                }
                const std::int64_t at = column / lanes * rows * lanes + row * lanes + column % lanes;
                ASSERT_NEAR(result[static_cast<std::size_t>(at)], sum, 1e-5) << row << ", " << column;
            }
        }
    });
}

/// The kernel's results for the inputs of an ONNX node, its inputs summed up here.
Array runKernel(const format::RecurrentT& layer, const Array& data, const Array& weights, const Array& recurrent,
    const Array& bias, int block)
{
    const std::int64_t directions = weights.shape[0];
    const std::int64_t inputs = data.shape[2];
    const cpu::LstmShape shape{
        block, data.shape[0], layer.hidden_size, directions, layer.direction == format::Direction::Reverse};
    const std::vector<float> rows = cpu::gatesInBlocks(shape, weights.data.data(), inputs);
    const std::vector<float> sums = cpu::gatesInBlocks(shape, cpu::lstmBias(shape, bias.data.data()).data(), 1);
    std::vector<float> projected;
    for (std::int64_t step = 0; step < shape.steps; ++step) {
        for (std::int64_t row = 0; row < directions * shape.gateRow(); ++row) {
            double sum = static_cast<double>(sums[static_cast<std::size_t>(row)]);
            for (std::int64_t i = 0; i < inputs; ++i) {
                sum += static_cast<double>(data.data[static_cast<std::size_t>(step * inputs + i)])
                    * static_cast<double>(rows[static_cast<std::size_t>(row * inputs + i)]);
            }
            projected.push_back(static_cast<float>(sum));
        }
    }
    Array result = Array::zeros({shape.steps, directions, 1, layer.hidden_size});
    std::vector<float> state(static_cast<std::size_t>(directions * shape.stateSize()), 7.0F);
    std::vector<float> natural(result.data.size());
    const std::vector<float> ordered = cpu::recurrentInOrder(shape, recurrent.data.data());
    for (std::int64_t direction = 0; direction < directions; ++direction) {
        cpu::runLstm(shape, direction, projected.data(), ordered.data(), state.data(), natural.data());
    }
    result.data = natural; // steps x directions x hidden, as with a batch of one
    return result;
}

TEST(Lstm, EqualsItsDefinition)
{
    repeatRandomly(40, [](std::mt19937& random) {
        format::RecurrentT layer;
        layer.cell = format::CellKind::Lstm;
        layer.hidden_size = static_cast<int>(pick(random, 1, 50));
        layer.direction = static_cast<format::Direction>(pick(random, 0, 2));
        const std::int64_t directions = layer.direction == format::Direction::Bidirectional ? 2 : 1;
        const std::int64_t hidden = layer.hidden_size;
        const Array data = randomArray(random, {pick(random, 1, 30), 1, pick(random, 1, 12)}, 1);
        const Array weights = randomArray(random, {directions, 4 * hidden, data.shape[2]}, 1);
        const Array recurrent = randomArray(random, {directions, 4 * hidden, hidden}, 0.4F);
        const Array bias = randomArray(random, {directions, 8 * hidden}, 0.5F);
        const Array expected = reference::recurrent(layer, {data, weights, recurrent, &bias, nullptr, nullptr}).front();
        for (const int block : {8, 16}) {
            expectClose(runKernel(layer, data, weights, recurrent, bias, block), expected, 2e-5F);
        }
    });
}

} // namespace
} // namespace scribo::test
