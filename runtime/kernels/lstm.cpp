#include "lstm.h"

#include "vectormath.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace scribo::cpu {

namespace {

constexpr int gates = LstmShape::gates;

/// Blocks whose gates are summed up at once: as many sums as keep the multipliers busy.
constexpr std::int64_t together = 2;

/// The sums of `count` blocks of gates over all units of the state before; returns the weights that follow.
template <class Vector, std::int64_t count>
SCRIBO_INLINE const float* sumGates(
    const float* inputs, const float* weights, const float* before, std::int64_t hidden, float* sums)
{
    constexpr std::int64_t block = lanes<Vector>;
    Vector sum[count * gates];
    for (std::int64_t i = 0; i < count * gates; ++i) {
        sum[i] = load<Vector>(inputs + i * block);
    }
    for (std::int64_t unit = 0; unit < hidden; ++unit) {
        const float value = before[unit];
        for (std::int64_t i = 0; i < count * gates; ++i) {
            sum[i] += load<Vector>(weights + i * block) * value;
        }
        weights += count * gates * block;
    }
    for (std::int64_t i = 0; i < count * gates; ++i) {
        store(sums + i * block, sum[i]);
    }
    return weights;
}

template <class Vector>
SCRIBO_INLINE void updateBlock(const float* sums, float* cell, float* after)
{
    constexpr std::int64_t block = lanes<Vector>;
    const Vector in = sigmoid(load<Vector>(sums));
    const Vector out = sigmoid(load<Vector>(sums + block));
    const Vector keep = sigmoid(load<Vector>(sums + 2 * block));
    const Vector kept = keep * load<Vector>(cell) + in * tangens(load<Vector>(sums + 3 * block));
    store(cell, kept);
    store(after, Vector(out * tangens(kept)));
}

template <class Vector>
SCRIBO_INLINE void step(
    const LstmShape& shape, const float* inputs, const float* weights, const float* before, float* after, float* cell)
{
    constexpr std::int64_t block = lanes<Vector>;
    const std::int64_t blocks = shape.blocks();
    float sums[together * gates * block];
    for (std::int64_t first = 0; first < blocks; first += together) {
        const std::int64_t count = std::min(together, blocks - first);
        const float* rows = inputs + first * gates * block;
        weights = count == together ? sumGates<Vector, together>(rows, weights, before, shape.hidden, sums)
                                    : sumGates<Vector, 1>(rows, weights, before, shape.hidden, sums);
        for (std::int64_t i = 0; i < count; ++i) {
            updateBlock<Vector>(sums + i * gates * block, cell + (first + i) * block, after + (first + i) * block);
        }
    }
}

template <class Vector>
SCRIBO_INLINE void run(const LstmShape& shape, const float* inputs, const float* weights, float* state, float* result)
{
    const std::int64_t size = shape.blocks() * lanes<Vector>;
    for (std::int64_t direction = 0; direction < shape.directions; ++direction) {
        float* before = state;
        float* after = state + size;
        float* cell = state + 2 * size;
        std::fill_n(state, 3 * size, 0.0F);
        const bool backwards = direction == 1 || shape.backwards;
        for (std::int64_t i = 0; i < shape.steps; ++i) {
            const std::int64_t at = (backwards ? shape.steps - 1 - i : i) * shape.directions + direction;
            step<Vector>(shape, inputs + at * shape.gateRow(), weights, before, after, cell);
            std::copy_n(after, shape.hidden, result + at * shape.hidden);
            std::swap(before, after);
        }
        weights += shape.gateRow() * shape.hidden;
    }
}

void run8(const LstmShape& shape, const float* inputs, const float* weights, float* state, float* result)
{
    run<Float8>(shape, inputs, weights, state, result);
}

void run16(const LstmShape& shape, const float* inputs, const float* weights, float* state, float* result)
{
    run<Float16>(shape, inputs, weights, state, result);
}

#if SCRIBO_X86
SCRIBO_AVX2 void run8Avx2(
    const LstmShape& shape, const float* inputs, const float* weights, float* state, float* result)
{
    run<Float8>(shape, inputs, weights, state, result);
}

SCRIBO_AVX512 void run16Avx512(
    const LstmShape& shape, const float* inputs, const float* weights, float* state, float* result)
{
    run<Float16>(shape, inputs, weights, state, result);
}
#endif

} // namespace

std::vector<float> gatesInBlocks(const LstmShape& shape, const float* weights, std::int64_t columns)
{
    std::vector<float> rows(static_cast<std::size_t>(shape.directions * shape.gateRow() * columns));
    for (std::int64_t direction = 0; direction < shape.directions; ++direction) {
        for (std::int64_t gate = 0; gate < gates; ++gate) {
            for (std::int64_t unit = 0; unit < shape.hidden; ++unit, weights += columns) {
                const std::int64_t row = (unit / shape.block * gates + gate) * shape.block + unit % shape.block;
                std::copy_n(weights, columns, rows.begin() + (direction * shape.gateRow() + row) * columns);
            }
        }
    }
    return rows;
}

std::vector<float> lstmBias(const LstmShape& shape, const float* biases)
{
    const std::int64_t half = gates * shape.hidden;
    std::vector<float> sums;
    for (std::int64_t direction = 0; direction < shape.directions; ++direction, biases += 2 * half) {
        std::transform(biases, biases + half, biases + half, std::back_inserter(sums), std::plus<>());
    }
    return sums;
}

std::vector<float> recurrentInOrder(const LstmShape& shape, const float* weights)
{
    const std::vector<float> rows = gatesInBlocks(shape, weights, shape.hidden);
    std::vector<float> ordered;
    ordered.reserve(rows.size());
    const std::int64_t blockRows = gates * shape.block;
    for (std::int64_t direction = 0; direction < shape.directions; ++direction) {
        const float* from = rows.data() + direction * shape.gateRow() * shape.hidden;
        for (std::int64_t first = 0; first < shape.blocks(); first += together) {
            const std::int64_t count = std::min(together, shape.blocks() - first) * blockRows;
            for (std::int64_t unit = 0; unit < shape.hidden; ++unit) {
                for (std::int64_t row = first * blockRows; row < first * blockRows + count; ++row) {
                    ordered.push_back(from[row * shape.hidden + unit]);
                }
            }
        }
    }
    return ordered;
}

LstmRun lstmRun(int block)
{
#if SCRIBO_X86
    if (block == 16 && hasAvx512()) {
        return run16Avx512;
    }
    if (block == 8 && hasAvx2()) {
        return run8Avx2;
    }
#endif
    return block == 16 ? run16 : run8;
}

} // namespace scribo::cpu
