#include "lstm.h"

#include "dispatch.h"
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
SCRIBO_INLINE const float* sumBlocks(
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

// The two halves of a step. They are functions of their own so that the constants of the second do not take the
// registers that the sums of the first need.

struct Sum
{
    template <class Vector>
    SCRIBO_INLINE static void run(
        const LstmShape& shape, const float* inputs, const float* weights, const float* before, float* sums)
    {
        const std::int64_t row = gates * lanes<Vector>;
        std::int64_t block = 0;
        for (; block + together <= shape.blocks(); block += together) {
            weights
                = sumBlocks<Vector, together>(inputs + block * row, weights, before, shape.hidden, sums + block * row);
        }
        if (block < shape.blocks()) {
            sumBlocks<Vector, 1>(inputs + block * row, weights, before, shape.hidden, sums + block * row);
        }
    }
};

struct Update
{
    template <class Vector>
    SCRIBO_INLINE static void run(const LstmShape& shape, const float* sums, float* cell, float* after)
    {
        constexpr std::int64_t block = lanes<Vector>;
        for (std::int64_t i = 0; i < shape.blocks(); ++i, sums += gates * block, cell += block, after += block) {
            const Vector in = sigmoid(load<Vector>(sums));
            const Vector out = sigmoid(load<Vector>(sums + block));
            const Vector keep = sigmoid(load<Vector>(sums + 2 * block));
            const Vector kept = keep * load<Vector>(cell) + in * tangens(load<Vector>(sums + 3 * block));
            store(cell, kept);
            store(after, Vector(out * tangens(kept)));
        }
    }
};

using StepSum
    = void (*)(const LstmShape& shape, const float* inputs, const float* weights, const float* before, float* sums);
using StepUpdate = void (*)(const LstmShape& shape, const float* sums, float* cell, float* after);

} // namespace

void runLstm(const LstmShape& shape, std::int64_t direction, const float* inputs, const float* weights, float* state,
    float* result)
{
    const auto sum = fastestForm<Sum, StepSum>(shape.block);
    const auto update = fastestForm<Update, StepUpdate>(shape.block);
    const std::int64_t size = shape.blocks() * shape.block;
    float* const hidden = state + direction * shape.stateSize();
    float* const cell = hidden + size;
    float* const sums = cell + size;
    weights += direction * shape.gateRow() * shape.hidden;
    std::fill_n(hidden, 2 * size, 0.0F);
    const bool backwards = direction == 1 || shape.backwards;
    for (std::int64_t i = 0; i < shape.steps; ++i) {
        const std::int64_t at = (backwards ? shape.steps - 1 - i : i) * shape.directions + direction;
        sum(shape, inputs + at * shape.gateRow(), weights, hidden, sums);
        update(shape, sums, cell, hidden);
        std::copy_n(hidden, shape.hidden, result + at * shape.hidden);
    }
}

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

} // namespace scribo::cpu
