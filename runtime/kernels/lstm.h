#pragma once

#include <cstdint>
#include <vector>

/// A long short-term memory over one sequence. What the inputs add to the gates of all steps is a product of two
/// matrices that is known before; here is the rest, which has to go step by step. With a batch of one each weight is
/// used once a step, so the time is that of reading them: they lie in the order in which they are used.
///
/// Hidden units lie in blocks of as many as a vector holds, the last block filled up with units whose weights are 0;
/// the gates of a block lie together, in ONNX's order: input, output, forget, cell.
namespace scribo::cpu {

struct LstmShape
{
    static constexpr int gates = 4;

    int block; ///< hidden units in a block: 8 or 16
    std::int64_t steps;
    std::int64_t hidden;
    std::int64_t directions;
    bool backwards; ///< with one direction: from the last step to the first; of two the second always does

    std::int64_t blocks() const { return (hidden + block - 1) / block; }
    std::int64_t gateRow() const { return blocks() * block * gates; } ///< gates of a direction
    std::int64_t stateSize() const { return (2 + gates) * blocks() * block; } ///< floats that a direction needs
};

/// Rows of gates as ONNX has them (directions x gates x hidden x `columns`) with the gates in blocks: directions x
/// gateRow x `columns`.
std::vector<float> gatesInBlocks(const LstmShape& shape, const float* weights, std::int64_t columns);
/// The sums of ONNX's two biases (directions x 2 x gates x hidden): directions x gates x hidden.
std::vector<float> lstmBias(const LstmShape& shape, const float* biases);
/// ONNX's recurrent weights (directions x gates x hidden x hidden) in the order in which a step uses them.
std::vector<float> recurrentInOrder(const LstmShape& shape, const float* weights);

/// Runs one direction. `inputs`: steps x directions x gateRow, what inputs and biases add. `weights`: from
/// recurrentInOrder(). `state`: directions x stateSize() floats of room. `result`: steps x directions x hidden. The
/// states before the first step are zeros.
void runLstm(const LstmShape& shape, std::int64_t direction, const float* inputs, const float* weights, float* state,
    float* result);

} // namespace scribo::cpu
