#include "adapt.h"
#include "networkedit.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// The network's channels as weighted sums of the picture's, plus an offset each.
struct Mixture
{
    std::size_t from; ///< channels of the picture
    std::size_t to; ///< channels of the network
    std::vector<float> weights; ///< `to` rows of `from`
    std::vector<float> offsets; ///< `to` numbers

    bool hasOffsets() const
    {
        return std::any_of(offsets.begin(), offsets.end(), [](float offset) { return offset != 0; });
    }
};

bool isDefault(const PictureOptions& options)
{
    return options.channels == Channels::Rgb
        && std::all_of(options.ranges.begin(), options.ranges.end(),
            [](const ValueRange& range) { return range.black == -1 && range.white == 1; });
}

/// The rows of a mixture that leave the values as they are.
std::vector<float> channelWeights(Channels channels, std::size_t count)
{
    if (channels == Channels::Grey) {
        // The luma of ITU-R BT.601, which OpenCV and PIL take for grey.
        return {0.299f, 0.587f, 0.114f};
    }
    std::vector<float> weights(count * count, 0);
    for (std::size_t i = 0; i < count; ++i) {
        weights[i * count + (channels == Channels::Bgr ? count - 1 - i : i)] = 1;
    }
    return weights;
}

Result<Mixture> mixture(const PictureOptions& options, std::size_t channels)
{
    const bool grey = options.channels == Channels::Grey;
    const std::size_t wanted = grey ? 1 : 3;
    if (channels != wanted) {
        return failure("has " + std::to_string(channels) + " channels, not the " + std::to_string(wanted) + " of "
            + (grey ? "a grey picture" : "a picture in colour"));
    }
    if (options.ranges.size() != 1 && options.ranges.size() != channels) {
        return failure("has " + std::to_string(channels) + " channels, but " + std::to_string(options.ranges.size())
            + " ranges of values are given");
    }
    Mixture mixture = {grey ? 3 : channels, channels, channelWeights(options.channels, channels), {}};
    for (std::size_t i = 0; i < channels; ++i) {
        const ValueRange& range = options.ranges[options.ranges.size() == 1 ? 0 : i];
        const auto row = mixture.weights.begin() + static_cast<std::ptrdiff_t>(i * mixture.from);
        const float scale = (range.white - range.black) / 2;
        std::transform(row, row + static_cast<std::ptrdiff_t>(mixture.from), row,
            [scale](float weight) { return weight * scale; });
        mixture.offsets.push_back((range.white + range.black) / 2);
    }
    return mixture;
}

/// Whether weights and bias of `convolution` are made for `channels` channels. Shapes are only checked later, with the
/// mixture in place.
bool fits(const NetworkT& network, const OperationT& convolution, std::size_t channels)
{
    const Extents& weights = constantAt(network, convolution.inputs[1])->dims;
    return weights.size() == 4 && weights[1] == static_cast<std::int64_t>(channels)
        && (convolution.inputs.size() < 3 || constantAt(network, convolution.inputs[2])->dims == Extents{weights[0]});
}

/// Whether `operation`, which reads the picture, can take the mixture into its weights. A convolution pads with zeros,
/// which the mixture would not have changed: where there are pads, the mixture must have no offsets.
bool absorbs(const NetworkT& network, const OperationT& operation, const Mixture& mixture)
{
    const auto* convolution = operation.kind.AsConvolution();
    return convolution && convolution->groups == 1 && fits(network, operation, mixture.to)
        && (!mixture.hasOffsets()
            || std::all_of(convolution->pads.begin(), convolution->pads.end(), [](int pad) { return pad == 0; }));
}

/// Gives a convolution whose weights are O x C x rows x columns those for the picture's channels.
void absorb(NetworkT& network, OperationT& convolution, const Mixture& mixture)
{
    const TensorT& old = *constantAt(network, convolution.inputs[1]);
    const std::vector<float> before = floatValues(old);
    const auto filters = static_cast<std::size_t>(old.dims[0]);
    const std::size_t taps = before.size() / (filters * mixture.to);
    std::vector<float> after(filters * mixture.from * taps, 0);
    std::vector<float> bias(filters, 0);
    if (convolution.inputs.size() > 2) {
        bias = floatValues(*constantAt(network, convolution.inputs[2]));
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
        const std::size_t filter = i / (mixture.to * taps);
        const std::size_t channel = i / taps % mixture.to;
        bias[filter] += before[i] * mixture.offsets[channel];
        for (std::size_t source = 0; source < mixture.from; ++source) {
            after[(filter * mixture.from + source) * taps + i % taps]
                += before[i] * mixture.weights[channel * mixture.from + source];
        }
    }
    Extents dims = old.dims;
    dims[1] = static_cast<std::int64_t>(mixture.from);
    const int weightIndex = addTensor(network, makeConstant(old.name, dims, after));
    const int biasIndex = addTensor(network, makeConstant({}, {old.dims[0]}, bias));
    convolution.inputs = {convolution.inputs[0], weightIndex, biasIndex};
}

/// Puts a convolution with the mixture between the picture and whatever reads it.
void prepend(NetworkT& network, const Mixture& mixture)
{
    const int before = network.inputs.front();
    TensorT picture = *network.tensors[static_cast<std::size_t>(before)];
    picture.dims[1] = static_cast<std::int64_t>(mixture.from);
    TensorT& mixed = *network.tensors[static_cast<std::size_t>(before)];
    mixed.name.clear();
    mixed.dims.clear();
    network.inputs = {addTensor(network, std::move(picture))};
    const auto rows = static_cast<std::int64_t>(mixture.to);
    const auto columns = static_cast<std::int64_t>(mixture.from);
    auto operation = std::make_unique<OperationT>();
    operation->name = "picture";
    operation->inputs
        = {network.inputs.front(), addTensor(network, makeConstant({}, {rows, columns, 1, 1}, mixture.weights)),
            addTensor(network, makeConstant({}, {rows}, mixture.offsets))};
    operation->outputs = {before};
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.dilations = {1, 1};
    convolution.pads = {0, 0, 0, 0};
    operation->kind.Set(std::move(convolution));
    network.operations.insert(network.operations.begin(), std::move(operation));
}

} // namespace

Result<void> adaptPicture(NetworkT& network, const PictureOptions& options)
{
    if (isDefault(options)) {
        return {};
    }
    const int input = network.inputs.front();
    TensorT& picture = *network.tensors[static_cast<std::size_t>(input)];
    const auto mix = mixture(options, static_cast<std::size_t>(picture.dims[1]));
    if (!mix) {
        return failure("input '" + picture.name + "' " + mix.error().message);
    }
    std::vector<OperationT*> readers;
    for (const auto& operation : network.operations) {
        if (std::count(operation->inputs.begin(), operation->inputs.end(), input) > 0) {
            readers.push_back(operation.get());
        }
    }
    if (!std::all_of(readers.begin(), readers.end(), [&](const auto* one) { return absorbs(network, *one, *mix); })) {
        prepend(network, *mix);
        return {};
    }
    for (OperationT* reader : readers) {
        absorb(network, *reader, *mix);
    }
    network.tensors[static_cast<std::size_t>(input)]->dims[1] = static_cast<std::int64_t>(mix->from);
    return {};
}

} // namespace scribo::builder
