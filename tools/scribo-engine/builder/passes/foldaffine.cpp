#include "passes.h"
#include "scalaraffine.h"

#include <algorithm>

namespace scribo::builder {

namespace {

using format::OperationKind;

/// y = x * scale + shift, per channel.
struct Affine
{
    std::vector<float> scale;
    std::vector<float> shift;
};

/// One value for each of `channels` channels of N x C x H x W data from a constant that broadcasts
/// over it, as 1 x C x 1 x 1, C x 1 x 1 or a single value; nothing for other constants.
std::optional<std::vector<float>> perChannel(const TensorT& constant, std::size_t channels)
{
    const std::vector<float> values = floatValues(constant);
    if (constant.dims.size() > 4) {
        return std::nullopt;
    }
    if (values.size() == 1) {
        return std::vector<float>(channels, values.front());
    }
    Extents dims = constant.dims;
    dims.insert(dims.begin(), 4 - dims.size(), 1);
    const bool alongChannels = dims == Extents{1, static_cast<std::int64_t>(channels), 1, 1};
    return alongChannels ? std::optional(values) : std::nullopt;
}

/// `operation` as scale and shift of the data in its input `position`; nothing when it is not that.
std::optional<Affine> affineOf(
    const NetworkT& network, const OperationT& operation, std::size_t position, std::size_t channels)
{
    if (operation.kind.type == OperationKind::ChannelAffine) {
        Affine affine = {floatValues(*constantAt(network, operation.inputs[1])),
            floatValues(*constantAt(network, operation.inputs[2]))};
        return affine.scale.size() == channels && affine.shift.size() == channels ? std::optional(affine)
                                                                                  : std::nullopt;
    }
    const TensorT* constant = constantAt(network, operation.inputs[1 - position]);
    const auto values = constant ? perChannel(*constant, channels) : std::nullopt;
    if (!values) {
        return std::nullopt;
    }
    Affine affine;
    for (float value : *values) {
        const auto one = scalarAffine(operation.kind.AsBinary()->kind, position, static_cast<double>(value));
        if (!one) {
            return std::nullopt;
        }
        affine.scale.push_back(static_cast<float>(one->scale));
        affine.shift.push_back(static_cast<float>(one->shift));
    }
    return affine;
}

void applyAffine(NetworkT& network, OperationT& convolution, const Affine& affine)
{
    const TensorT& oldWeights = *constantAt(network, convolution.inputs[1]);
    std::vector<float> weights = floatValues(oldWeights);
    const std::size_t channels = affine.scale.size();
    const std::size_t perFilter = weights.size() / channels;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        weights[i] *= affine.scale[i / perFilter];
    }
    std::vector<float> bias = affine.shift;
    if (convolution.inputs.size() > 2) {
        const std::vector<float> oldBias = floatValues(*constantAt(network, convolution.inputs[2]));
        for (std::size_t channel = 0; channel < channels; ++channel) {
            bias[channel] += oldBias[channel] * affine.scale[channel];
        }
    }
    // The old constants may serve other operations as well.
    const int weightIndex = addTensor(network, makeConstant(oldWeights.name, oldWeights.dims, weights));
    const int biasIndex
        = addTensor(network, makeConstant(oldWeights.name + ".bias", {static_cast<std::int64_t>(channels)}, bias));
    convolution.inputs = {convolution.inputs[0], weightIndex, biasIndex};
}

/// The input of `operation` that comes from a convolution of its own without an activation; nothing
/// when there is none.
std::optional<std::size_t> convolutionInput(const Uses& uses, const OperationT& operation)
{
    const bool binary = operation.kind.type == OperationKind::Binary;
    if (!binary && operation.kind.type != OperationKind::ChannelAffine) {
        return std::nullopt;
    }
    for (std::size_t position = 0; position < (binary ? 2u : 1u); ++position) {
        const OperationT* producer = uses.soleProducer(operation.inputs[position], OperationKind::Convolution);
        if (producer && !producer->kind.AsConvolution()->activation) {
            return position;
        }
    }
    return std::nullopt;
}

} // namespace

bool foldAffine(NetworkT& network)
{
    AbsorbedOperations absorbed;
    for (const auto& operation : network.operations) {
        const Uses uses(network);
        const std::optional<std::size_t> position = convolutionInput(uses, *operation);
        if (!position) {
            continue;
        }
        OperationT& convolution = *uses.producer(operation->inputs[*position]);
        const std::int64_t channels = constantAt(network, convolution.inputs[1])->dims.front();
        const auto affine = affineOf(network, *operation, *position, static_cast<std::size_t>(channels));
        if (!affine || !redirect(network, operation->outputs.front(), operation->inputs[*position])) {
            continue;
        }
        applyAffine(network, convolution, *affine);
        absorbed.add(*operation);
    }
    return absorbed.remove(network);
}

} // namespace scribo::builder
