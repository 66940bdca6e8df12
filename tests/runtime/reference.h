#pragma once

#include "array.h"

/// Every operation of an engine written down as its definition reads, one element at a time and
/// summed in double precision. What the runtime is held against.
namespace scribo::test::reference {

Array activation(const format::ActivationT& activation, Array data);
Array convolution(const format::ConvolutionT& convolution, const Array& data, const Array& weights, const Array* bias);
Array pooling(const format::PoolingT& pooling, const Array& data);
Array reduction(const format::ReductionT& reduction, const Array& data);
/// Every pixel counts for those whose centres lie less than one pixel from its own.
Array resize(const Array& data, const Shape& shape);
/// Every pixel counts for those places that lie less than one pixel from its centre.
Array gridSample(const format::GridSampleT& sample, const Array& data, const Array& grid);

/// Any of the last three may be null.
struct RecurrentInputs
{
    const Array& data;
    const Array& weights;
    const Array& recurrentWeights;
    const Array* bias;
    const Array* initialHidden;
    const Array* initialCell;
};
/// Sequence, last hidden state, last cell state.
std::vector<Array> recurrent(const format::RecurrentT& recurrent, const RecurrentInputs& inputs);

Array fullyConnected(const format::FullyConnectedT& layer, const Array& data, const Array& weights, const Array* bias);
Array matrixProduct(const Array& left, const Array& right);
Array softmax(const format::SoftmaxT& softmax, const Array& data);

Array binary(format::BinaryKind kind, const Array& left, const Array& right);
Array unary(format::UnaryKind kind, Array data);
Array channelAffine(Array data, const Array& scale, const Array& shift);
Array layerNormalisation(
    const format::LayerNormalisationT& normalisation, const Array& data, const Array& scale, const Array* shift);

Array transpose(const std::vector<int>& permutation, const Array& data);
Array concat(int axis, const std::vector<Array>& parts);
Array gather(int axis, const Array& data, const Shape& indexShape, const std::vector<std::int64_t>& indices);
/// `count` elements from `start` on along `axis`, `step` apart.
Array slice(const Array& data, int axis, std::int64_t start, std::int64_t count, std::int64_t step);
Array expand(const Array& data, const Shape& shape);
Array pad(const format::PadT& pad, const Array& data);

} // namespace scribo::test::reference
