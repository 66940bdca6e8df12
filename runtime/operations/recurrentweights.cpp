#include "recurrentweights.h"

#include <algorithm>

namespace scribo::cpu {

std::vector<std::int64_t> gateOrder(format::CellKind cell)
{
    return cell == format::CellKind::Lstm ? std::vector<std::int64_t>{0, 2, 3, 1} : std::vector<std::int64_t>{0, 1, 2};
}

Weights recurrentWeights(const RecurrentSizes& sizes, const float* weights, std::int64_t columns)
{
    const std::int64_t block = sizes.hidden * columns;
    std::vector<float> ordered;
    ordered.reserve(static_cast<std::size_t>(sizes.directions * sizes.gates() * block));
    for (std::int64_t direction = 0; direction < sizes.directions; ++direction) {
        for (std::int64_t gate : gateOrder(sizes.cell)) {
            const float* from = weights + (direction * sizes.gates() + gate) * block;
            ordered.insert(ordered.end(), from, from + block);
        }
    }
    // Layer, direction, input, gate, hidden unit; the inputs of a unit lie one behind the other.
    const Layout layout = stridedLayout({1, sizes.directions, columns, sizes.gates(), sizes.hidden},
        {sizes.directions * sizes.gates() * block, sizes.gates() * block, 1, block, columns});
    return {layout, nullptr, std::move(ordered)};
}

Weights recurrentBias(const RecurrentSizes& sizes, const float* bias)
{
    const std::int64_t hidden = sizes.hidden;
    const std::int64_t half = sizes.gates() * hidden;
    const std::int64_t row = sizes.biasGates() * hidden;
    std::vector<float> sums(static_cast<std::size_t>(sizes.directions * row), 0.0F);
    const std::vector<std::int64_t> order = gateOrder(sizes.cell);
    for (std::int64_t direction = 0; bias && direction < sizes.directions; ++direction) {
        const float* input = bias + direction * 2 * half;
        const float* recurrent = input + half;
        float* sum = sums.data() + direction * row;
        for (std::int64_t gate = 0; gate < sizes.gates(); ++gate) {
            const std::int64_t from = order[static_cast<std::size_t>(gate)] * hidden;
            // The last gate's recurrent bias stands alone where there is a place for it.
            const bool apart = gate + 1 == sizes.gates() && sizes.biasGates() > sizes.gates();
            float* alone = apart ? sum + half : nullptr;
            for (std::int64_t unit = 0; unit < hidden; ++unit) {
                sum[gate * hidden + unit] = input[from + unit] + (apart ? 0.0F : recurrent[from + unit]);
                if (alone) {
                    alone[unit] = recurrent[from + unit];
                }
            }
        }
    }
    return {plainLayout({1, sizes.directions, sizes.biasGates(), hidden}), nullptr, std::move(sums)};
}

} // namespace scribo::cpu
