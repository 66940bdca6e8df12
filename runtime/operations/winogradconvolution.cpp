#include "winogradconvolution.h"

#include "activation.h"

#include "kernels/processor.h"
#include "kernels/rowproduct.h"
#include "kernels/winograd.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

using dnnl::memory;

bool areAll(const flatbuffers::Vector<int>& list, int value)
{
    return std::all_of(list.begin(), list.end(), [value](int element) { return element == value; });
}

/// Whether the activation is none or Relu, which the last transform applies.
bool isGathered(const format::Activation* activation)
{
    const std::vector<ElementFunction> functions = elementFunctions(activation);
    return functions.empty()
        || (functions.size() == 1 && functions[0].algorithm == dnnl::algorithm::eltwise_relu
            && functions[0].alpha == 0.0F);
}

bool isPlainThreeByThree(const PlanBuilder& plan, const format::Convolution& convolution)
{
    const Shape& weights = plan.shape(plan.input(1));
    return weights[2] == 3 && weights[3] == 3 && convolution.groups() == 1 && areAll(*convolution.strides(), 1)
        && areAll(*convolution.dilations(), 1) && isGathered(convolution.activation())
        && plan.shape(plan.input(0))[0] == 1 && plan.constant(plan.input(1))
        && (plan.input(2) < 0 || plan.constant(plan.input(2)));
}

WinogradShape shapeOf(const PlanBuilder& plan, const format::Convolution& convolution, int block)
{
    const Shape& source = plan.shape(plan.input(0));
    const Shape& result = plan.shape(plan.output(0));
    const auto wholeBlocks = [block](std::int64_t channels) { return (channels + block - 1) / block * block; };
    return {block, wholeBlocks(source[1]), wholeBlocks(result[1]), source[2], source[3], result[2], result[3],
        convolution.pads()->Get(0), convolution.pads()->Get(1)};
}

/// Whether the fewer multiplications are worth the transforms. These cost the same however few channels share them,
/// and the ends of tiles that hang over the picture are worked out in vain.
bool isWorthwhile(const PlanBuilder& plan, const WinogradShape& shape)
{
    const std::int64_t channels = plan.shape(plan.input(0))[1];
    const std::int64_t filters = plan.shape(plan.output(0))[1];
    const std::int64_t direct = 9 * shape.resultRows * shape.resultColumns * channels * filters;
    const std::int64_t tiled = WinogradShape::layers * shape.tiles() * shape.channels * shape.filters;
    return channels >= 16 && filters >= 16 && 2 * tiled <= direct;
}

/// A layer of the source times the weights of that layer.
RowProduct layerProduct(const WinogradShape& shape)
{
    const std::int64_t blockStep = shape.tiles() * shape.block;
    return {shape.block, shape.tiles(), shape.channels, shape.filters / shape.block, shape.block, shape.block,
        blockStep, shape.block, blockStep};
}

std::vector<float> layerWeights(
    const WinogradShape& shape, const float* weights, std::int64_t filters, std::int64_t channels)
{
    const RowProduct product = layerProduct(shape);
    const std::vector<float> layers = winogradWeights(shape, weights, filters, channels);
    std::vector<float> ordered;
    ordered.reserve(layers.size());
    for (std::int64_t layer = 0; layer < WinogradShape::layers; ++layer) {
        const std::vector<float> part = weightsInOrder(product, layers.data() + layer * product.weightCount());
        ordered.insert(ordered.end(), part.begin(), part.end());
    }
    return ordered;
}

/// Bias in whole blocks, zeros where there is none.
memory biasOf(PlanBuilder& plan, const WinogradShape& shape, std::int64_t filters)
{
    return plan.weights(DNNL_ARG_BIAS, plainLayout({shape.filters}), [&] {
        std::vector<float> bias(static_cast<std::size_t>(shape.filters));
        if (plan.input(2) >= 0) {
            std::copy_n(plan.constant(plan.input(2)), filters, bias.begin());
        }
        return Weights{plainLayout({shape.filters}), nullptr, std::move(bias)};
    });
}

std::size_t stackSize(const WinogradShape& shape, std::int64_t channels)
{
    return static_cast<std::size_t>(WinogradShape::layers * channels * shape.tiles()) * sizeof(float);
}

} // namespace

bool addWinogradConvolution(PlanBuilder& plan, const format::Convolution& convolution)
{
    if (!isPlainThreeByThree(plan, convolution)) {
        return false;
    }
    // Whatever layout oneDNN would take: with AVX-512 it wants the channels last, and takes about twice as long.
    const int block = widestLanes();
    const WinogradShape shape = shapeOf(plan, convolution, block);
    if (!isWorthwhile(plan, shape)) {
        return false;
    }
    const std::int64_t filters = plan.shape(plan.output(0))[1];
    const std::int64_t channels = plan.shape(plan.input(0))[1];
    const Layout weightLayout = plainLayout({WinogradShape::layers, shape.filters, shape.channels});
    const memory weights = plan.weights(DNNL_ARG_WEIGHTS_1, weightLayout, [&] {
        return Weights{weightLayout, nullptr, layerWeights(shape, plan.constant(plan.input(1)), filters, channels)};
    });
    const memory bias = biasOf(plan, shape, filters);
    const Operand source = plan.operand(plan.input(0), blockedLayout(plan.shape(plan.input(0)), block));
    const Operand result = plan.result(plan.output(0), blockedLayout(plan.shape(plan.output(0)), block));
    const BufferId spread = plan.scratch(stackSize(shape, shape.channels));
    const BufferId products = plan.scratch(stackSize(shape, shape.filters));

    plan.addKernel({source.buffer, spread}, static_cast<int>(shape.channels / block),
        [shape, transform = winogradSpread(block)](
            float* const* at, int index) { transform(shape, index, at[0], at[1]); });
    plan.addKernel({spread, products}, static_cast<int>(WinogradShape::layers),
        [shape, weights, multiply = multiplyRows(block)](float* const* at, int layer) {
            const RowProduct product = layerProduct(shape);
            const auto* layerWeights = static_cast<const float*>(weights.get_data_handle());
            multiply(product, at[0] + layer * shape.channels * shape.tiles(),
                layerWeights + layer * product.weightCount(), nullptr, at[1] + layer * shape.filters * shape.tiles());
        });
    const bool relu = !elementFunctions(convolution.activation()).empty();
    plan.addKernel({products, result.buffer}, static_cast<int>(shape.filters / block),
        [shape, bias, relu, transform = winogradGather(block)](float* const* at, int index) {
            transform(shape, index, at[0], static_cast<const float*>(bias.get_data_handle()), relu, at[1]);
        });
    return true;
}

} // namespace scribo::cpu
