#include "operationcase.h"
#include "reference.h"

#include "kernels/maxpooling.h"
#include "kernels/winograd.h"

#include <limits>

// Convolutions of 3x3 that are worked out in tiles, and the kernels on blocks of channels by themselves: also those
// that this processor would not choose.

namespace scribo::test {
namespace {

using cpu::WinogradShape;

/// What the runtime promises of every operation. In tiles the numbers pass through differences of larger ones, so that
/// they come out less exact than in the plain form.
constexpr float tolerance = 1e-4F;

format::ConvolutionT threeByThree(std::mt19937& random)
{
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.dilations = {1, 1};
    const auto pad = [&random] { return static_cast<int>(pick(random, 0, 2)); };
    convolution.pads = {pad(), pad(), pad(), pad()};
    return convolution;
}

/// `values` (1 x channels x rows x columns) with its channels in blocks, the last one filled up with zeros.
std::vector<float> inBlocks(const Array& values, std::int64_t block)
{
    const Shape& shape = values.shape;
    const std::int64_t blocks = (shape[1] + block - 1) / block;
    std::vector<float> result(static_cast<std::size_t>(blocks * shape[2] * shape[3] * block));
    for (std::int64_t channel = 0; channel < shape[1]; ++channel) {
        for (std::int64_t pixel = 0; pixel < shape[2] * shape[3]; ++pixel) {
            const std::int64_t to = (channel / block * shape[2] * shape[3] + pixel) * block + channel % block;
            result[static_cast<std::size_t>(to)]
                = values.data[static_cast<std::size_t>(channel * shape[2] * shape[3] + pixel)];
        }
    }
    return result;
}

Array randomArray(std::mt19937& random, const Shape& shape)
{
    Array array = Array::zeros(shape);
    array.data = randomFloats(random, array.count());
    return array;
}

/// The product of the two stacks by its definition: every layer of the source by every layer of the weights.
std::vector<float> layerProducts(
    const WinogradShape& shape, const std::vector<float>& source, const std::vector<float>& weights)
{
    const std::int64_t tiles = shape.tiles();
    const auto place = [&](std::int64_t layer, std::int64_t channels, std::int64_t channel, std::int64_t tile) {
        return static_cast<std::size_t>((layer * channels + channel / shape.block * shape.block) * tiles
            + tile * shape.block + channel % shape.block);
    };
    std::vector<float> products(static_cast<std::size_t>(WinogradShape::layers * shape.filters * tiles));
    for (std::int64_t layer = 0; layer < WinogradShape::layers; ++layer) {
        for (std::int64_t filter = 0; filter < shape.filters; ++filter) {
            for (std::int64_t tile = 0; tile < tiles; ++tile) {
                double sum = 0;
                for (std::int64_t channel = 0; channel < shape.channels; ++channel) {
                    const std::int64_t weight = (layer * shape.filters + filter) * shape.channels + channel;
                    sum += static_cast<double>(source[place(layer, shape.channels, channel, tile)])
                        * static_cast<double>(weights[static_cast<std::size_t>(weight)]);
                }
                products[place(layer, shape.filters, filter, tile)] = static_cast<float>(sum);
            }
        }
    }
    return products;
}

TEST(Winograd, EqualsTheConvolution)
{
    repeatRandomly(60, [](std::mt19937& random) {
        OperationCase test(random);
        format::ConvolutionT convolution = threeByThree(random);
        if (toss(random)) {
            convolution.activation = std::make_unique<format::ActivationT>();
            convolution.activation->kind = format::ActivationKind::Relu;
        }
        Array data;
        Array weights;
        Array bias;
        const std::int64_t channels = pick(random, 14, 40);
        const std::int64_t filters = pick(random, 14, 40);
        std::vector<int> inputs = {test.computed({1, channels, pick(random, 4, 14), pick(random, 4, 30)}, &data),
            test.constant({filters, channels, 3, 3}, &weights, 0.3F)};
        const bool biased = toss(random);
        if (biased) {
            inputs.push_back(test.constant({filters}, &bias));
        }
        const Array expected = reference::convolution(convolution, data, weights, biased ? &bias : nullptr);
        test.expect(test.maker.add(convolution, inputs), expected, tolerance);
    });
}

TEST(Winograd, TransformsMakeTheConvolution)
{
    repeatRandomly(24, [](std::mt19937& random) {
        const int block = toss(random) ? 8 : 16;
        const format::ConvolutionT convolution = threeByThree(random);
        const Array data
            = randomArray(random, {1, pick(random, 1, 2) * block, pick(random, 2, 11), pick(random, 2, 17)});
        const std::int64_t filters = pick(random, 1, 2 * block);
        const Array weights = randomArray(random, {filters, data.shape[1], 3, 3});
        const Array bias = randomArray(random, {filters});
        const Array expected = reference::convolution(convolution, data, weights, &bias);
        if (expected.shape[2] < 1 || expected.shape[3] < 1) {
            return;
        }
        const WinogradShape shape{block, data.shape[1], (filters + block - 1) / block * block, data.shape[2],
            data.shape[3], expected.shape[2], expected.shape[3], convolution.pads[0], convolution.pads[1]};
        std::vector<float> spread(static_cast<std::size_t>(WinogradShape::layers * shape.channels * shape.tiles()));
        const std::vector<float> source = inBlocks(data, block);
        for (std::int64_t i = 0; i < shape.channels / block; ++i) {
            cpu::winogradSpread(block)(shape, i, source.data(), spread.data());
        }
        const std::vector<float> products
            = layerProducts(shape, spread, cpu::winogradWeights(shape, weights.data.data(), filters, data.shape[1]));
        std::vector<float> result(static_cast<std::size_t>(shape.filters * shape.resultRows * shape.resultColumns));
        const std::vector<float> padded = inBlocks({{1, filters, 1, 1}, bias.data}, block);
        for (std::int64_t i = 0; i < shape.filters / block; ++i) {
            cpu::winogradGather(block)(shape, i, products.data(), padded.data(), false, result.data());
        }
        const std::vector<float> wanted = inBlocks(expected, block);
        expectClose({{shape.filters * shape.resultRows * shape.resultColumns}, result},
            {{shape.filters * shape.resultRows * shape.resultColumns}, wanted}, tolerance);
    });
}

TEST(Winograd, AWeightOfOneInTheMiddleCopies)
{
    const WinogradShape shape{8, 8, 8, 5, 7, 5, 7, 1, 1};
    std::vector<float> weights(8 * 8 * 9);
    for (std::size_t channel = 0; channel < 8; ++channel) {
        weights[(channel * 8 + channel) * 9 + 4] = 1;
    }
    std::vector<float> source(8 * 5 * 7);
    std::iota(source.begin(), source.end(), -100.0F);
    std::vector<float> spread(static_cast<std::size_t>(WinogradShape::layers * 8 * shape.tiles()));
    cpu::winogradSpread(8)(shape, 0, source.data(), spread.data());
    const std::vector<float> products = layerProducts(shape, spread, cpu::winogradWeights(shape, weights.data(), 8, 8));
    std::vector<float> result(source.size());
    const std::vector<float> bias(8);
    cpu::winogradGather(8)(shape, 0, products.data(), bias.data(), true, result.data());
    for (std::size_t i = 0; i < source.size(); ++i) {
        EXPECT_NEAR(result[i], std::max(source[i], 0.0F), 1e-3F) << i;
    }
}

TEST(MaxPooling, OfBlocksEqualsItsDefinition)
{
    repeatRandomly(40, [](std::mt19937& random) {
        const int block = toss(random) ? 8 : 16;
        const Array data
            = randomArray(random, {1, pick(random, 1, 3) * block, pick(random, 3, 12), pick(random, 3, 17)});
        format::PoolingT pooling;
        pooling.kind = format::PoolingKind::Max;
        const auto number = [&random](int low, int high) { return static_cast<int>(pick(random, low, high)); };
        pooling.kernel = {number(1, 3), number(1, 3)};
        pooling.strides = {number(1, 3), number(1, 3)};
        pooling.pads = {number(0, pooling.kernel[0] - 1), number(0, pooling.kernel[1] - 1), 0, 0};
        const Array expected = reference::pooling(pooling, data);
        const cpu::MaxPoolingShape shape{block, data.shape[1] / block,
            {pooling.kernel[0], pooling.strides[0], pooling.pads[0], 0, data.shape[2], expected.shape[2]},
            {pooling.kernel[1], pooling.strides[1], pooling.pads[1], 0, data.shape[3], expected.shape[3]}};
        std::vector<float> result(expected.data.size());
        const std::vector<float> source = inBlocks(data, block);
        for (std::int64_t i = 0; i < shape.blocks; ++i) {
            cpu::maxPooling(block)(shape, i, source.data(), result.data());
        }
        EXPECT_EQ(result, inBlocks(expected, block));
    });
}

} // namespace
} // namespace scribo::test
