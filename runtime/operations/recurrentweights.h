#pragma once

#include "plan/weightstore.h"

#include "engine_generated.h"

namespace scribo::cpu {

/// The sizes of a recurrent layer's weights.
struct RecurrentSizes
{
    format::CellKind cell;
    bool linearBeforeReset;
    std::int64_t directions;
    std::int64_t inputs;
    std::int64_t hidden;

    std::int64_t gates() const { return cell == format::CellKind::Lstm ? 4 : 3; }
    /// oneDNN's GRU with the reset after the product has a bias of its own for that product.
    std::int64_t biasGates() const { return gates() + (cell == format::CellKind::Gru && linearBeforeReset ? 1 : 0); }
};

/// oneDNN's gate at each position, as its position in ONNX: i o f c becomes i f c o; the GRU's
/// z r h is already oneDNN's u r o.
std::vector<std::int64_t> gateOrder(format::CellKind cell);

/// `columns` weights for each gate and hidden unit (D x gates*H x columns) in oneDNN's order of gates.
Weights recurrentWeights(const RecurrentSizes& sizes, const float* weights, std::int64_t columns);

/// The two halves of ONNX's bias (D x 2*gates*H; null for none) added up, in oneDNN's order of gates.
Weights recurrentBias(const RecurrentSizes& sizes, const float* bias);

} // namespace scribo::cpu
