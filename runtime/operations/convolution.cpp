#include "activation.h"
#include "operations.h"
#include "winogradconvolution.h"

namespace scribo::cpu {

namespace {

using dnnl::convolution_forward;
using dnnl::memory;

memory::dims pairOf(const flatbuffers::Vector<int>& list, flatbuffers::uoffset_t first)
{
    return {list.Get(first), list.Get(first + 1)};
}

/// O x I x rows x columns, with an axis of groups in front when there are several.
Shape groupedShape(const Shape& weights, std::int64_t groups)
{
    if (groups == 1) {
        return weights;
    }
    return {groups, weights[0] / groups, weights[1], weights[2], weights[3]};
}

convolution_forward::desc describe(const PlanBuilder& plan, const format::Convolution& convolution)
{
    const Layout source = anyLayout(plan.shape(plan.input(0)));
    const Layout weights = anyLayout(groupedShape(plan.shape(plan.input(1)), convolution.groups()));
    const Layout bias = plan.input(2) >= 0 ? plainLayout(plan.shape(plan.input(2))) : Layout();
    const Layout result = anyLayout(plan.shape(plan.output(0)));
    memory::dims gaps = pairOf(*convolution.dilations(), 0);
    for (auto& gap : gaps) {
        // oneDNN counts the elements left out between two taps.
        --gap;
    }
    return {dnnl::prop_kind::forward_inference, dnnl::algorithm::convolution_direct, source, weights, bias, result,
        pairOf(*convolution.strides(), 0), gaps, pairOf(*convolution.pads(), 0), pairOf(*convolution.pads(), 2)};
}

} // namespace

void addConvolution(PlanBuilder& plan, const format::Operation& operation)
{
    const format::Convolution& convolution = *operation.kind_as_Convolution();
    if (addWinogradConvolution(plan, convolution)) {
        return;
    }
    dnnl::primitive_attr attributes = PlanBuilder::attributes();
    appendActivation(&attributes, convolution.activation());
    const convolution_forward::primitive_desc description(describe(plan, convolution), attributes, plan.engine());
    const Operand source = plan.operand(plan.input(0), description.src_desc());
    const memory weights = plan.weights(DNNL_ARG_WEIGHTS, description.weights_desc(), [&] {
        const Shape shape = groupedShape(plan.shape(plan.input(1)), convolution.groups());
        return Weights{plainLayout(shape), plan.constant(plan.input(1)), {}};
    });
    const Operand result = plan.result(plan.output(0), description.dst_desc());
    std::vector<PlanBuilder::Argument> arguments
        = {{DNNL_ARG_SRC, source.buffer, source.layout}, {DNNL_ARG_DST, result.buffer, result.layout}};
    if (plan.input(2) >= 0) {
        const Operand bias = plan.plainOperand(plan.input(2));
        arguments.push_back({DNNL_ARG_BIAS, bias.buffer, bias.layout});
    }
    plan.addPrimitive(
        convolution_forward(description), description.scratchpad_desc(), arguments, {{DNNL_ARG_WEIGHTS, weights}});
}

} // namespace scribo::cpu
