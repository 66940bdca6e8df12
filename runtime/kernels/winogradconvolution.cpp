#include "winogradconvolution.h"

#include "activation.h"
#include "winograd.h"

#include <algorithm>
#include <optional>

namespace scribo::cpu {

namespace {

using dnnl::convolution_forward;
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

/// Whether the fewer multiplications are worth the transforms. Measured on AVX2: with few channels the transforms cost
/// more than they save, and the ends of tiles that hang over the picture are worked out in vain.
bool isWorthwhile(const PlanBuilder& plan, const WinogradShape& shape)
{
    const std::int64_t channels = plan.shape(plan.input(0))[1];
    const std::int64_t filters = plan.shape(plan.output(0))[1];
    const std::int64_t direct = 9 * shape.resultRows * shape.resultColumns * channels * filters;
    const std::int64_t tiled = WinogradShape::layers * shape.tiles() * shape.channels * shape.filters;
    return channels >= 16 && filters >= 16 && 2 * tiled <= direct;
}

/// The convolution of 1x1 in 36 groups that stands between the transforms; nothing when oneDNN has no kernel of its
/// own for it on this processor.
std::optional<convolution_forward::primitive_desc> betweenLayers(PlanBuilder& plan, const WinogradShape& shape)
{
    constexpr std::int64_t layers = WinogradShape::layers;
    const Layout source = blockedLayout({1, layers * shape.channels, 1, shape.tiles()}, shape.block);
    const Layout result = blockedLayout({1, layers * shape.filters, 1, shape.tiles()}, shape.block);
    const Layout weights = anyLayout({layers, shape.filters, shape.channels, 1, 1});
    const convolution_forward::desc kind(dnnl::prop_kind::forward_inference, dnnl::algorithm::convolution_direct,
        source, weights, result, {1, 1}, {0, 0}, {0, 0});
    convolution_forward::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine(), true);
    const bool isCompiled = description && std::string(description.impl_info_str()).find("jit") != std::string::npos;
    return isCompiled ? std::optional(description) : std::nullopt;
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

bool addWinogradConvolution(PlanBuilder& plan, const format::Convolution& convolution, const Layout& preferred)
{
    const int block = channelBlock(preferred);
    if (block == 0 || !isPlainThreeByThree(plan, convolution)) {
        return false;
    }
    const WinogradShape shape = shapeOf(plan, convolution, block);
    if (!isWorthwhile(plan, shape)) {
        return false;
    }
    const auto between = betweenLayers(plan, shape);
    if (!between) {
        return false;
    }
    const std::int64_t filters = plan.shape(plan.output(0))[1];
    const std::int64_t channels = plan.shape(plan.input(0))[1];
    const memory weights = plan.weights(DNNL_ARG_WEIGHTS_1, between->weights_desc(), [&] {
        return Weights{plainLayout({WinogradShape::layers, shape.filters, shape.channels, 1, 1}), nullptr,
            winogradWeights(shape, plan.constant(plan.input(1)), filters, channels)};
    });
    const memory bias = biasOf(plan, shape, filters);
    const Operand source = plan.operand(plan.input(0), blockedLayout(plan.shape(plan.input(0)), block));
    const Operand result = plan.result(plan.output(0), blockedLayout(plan.shape(plan.output(0)), block));
    const BufferId spread = plan.scratch(stackSize(shape, shape.channels));
    const BufferId products = plan.scratch(stackSize(shape, shape.filters));

    plan.addKernel({source.buffer, spread},
        [shape, transform = winogradSpread(block)](float* const* at) { transform(shape, at[0], at[1]); });
    plan.addPrimitive(convolution_forward(*between), between->scratchpad_desc(),
        {{DNNL_ARG_SRC, spread, between->src_desc()}, {DNNL_ARG_DST, products, between->dst_desc()}},
        {{DNNL_ARG_WEIGHTS, weights}});
    const bool relu = !elementFunctions(convolution.activation()).empty();
    plan.addKernel({products, result.buffer}, [shape, bias, relu, transform = winogradGather(block)](float* const* at) {
        transform(shape, at[0], static_cast<const float*>(bias.get_data_handle()), relu, at[1]);
    });
    return true;
}

} // namespace scribo::cpu
