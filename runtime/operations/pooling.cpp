#include "operations.h"

#include "graph/poolwindow.h"
#include "kernels/maxpooling.h"
#include "kernels/pooling.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

using dnnl::algorithm;
using dnnl::pooling_forward;
using format::PoolingKind;

/// One pooling with all its extents.
struct Geometry
{
    PoolingKind kind;
    /// Along rows, along columns.
    WindowAxis axes[2];

    /// The padding behind the source that makes oneDNN, which rounds down, come to the same number of
    /// windows: what is given, or what the last window needs. Below 0 when there is none.
    std::int64_t padAfter(int i) const
    {
        const WindowAxis& axis = axes[i];
        const std::int64_t needed = (axis.results - 1) * axis.stride + axis.window - axis.padBefore - axis.source;
        const std::int64_t most = std::max(needed, axis.padAfter);
        const std::int64_t room = axis.source + axis.padBefore + most - axis.window;
        return room / axis.stride + 1 == axis.results ? most : needed;
    }

    /// Whether the last window goes beyond the padding.
    bool overhangs(int i) const
    {
        const WindowAxis& axis = axes[i];
        return (axis.results - 1) * axis.stride + axis.window > axis.source + axis.padBefore + axis.padAfter;
    }
};

WindowAxis axisOf(const PoolWindow& window, std::int64_t source, std::int64_t results)
{
    return {window.kernel, window.stride, window.padBefore, window.padAfter, source, results};
}

Geometry describe(const PlanBuilder& plan, const format::Pooling& pooling)
{
    const Shape& source = plan.shape(plan.input(0));
    const Shape& result = plan.shape(plan.output(0));
    return {pooling.kind(),
        {axisOf(poolWindow(pooling, 0), source[2], result[2]), axisOf(poolWindow(pooling, 1), source[3], result[3])}};
}

/// oneDNN divides by the whole window even where it goes beyond the padding; PyTorch does not.
bool fitsPrimitive(const Geometry& pooling)
{
    for (int axis = 0; axis < 2; ++axis) {
        const bool wrongMean = pooling.overhangs(axis) && pooling.kind == PoolingKind::AverageIncludePad;
        if (wrongMean || pooling.padAfter(axis) < 0) {
            return false;
        }
    }
    return true;
}

algorithm primitiveKind(PoolingKind kind)
{
    switch (kind) {
    case PoolingKind::AverageIncludePad:
        return algorithm::pooling_avg_include_padding;
    case PoolingKind::AverageExcludePad:
        return algorithm::pooling_avg_exclude_padding;
    case PoolingKind::Max:
        break;
    }
    return algorithm::pooling_max;
}

void addPrimitive(PlanBuilder& plan, const Geometry& pooling)
{
    const Operand source = plan.operand(plan.input(0));
    const WindowAxis& rows = pooling.axes[0];
    const WindowAxis& columns = pooling.axes[1];
    const pooling_forward::desc kind(dnnl::prop_kind::forward_inference, primitiveKind(pooling.kind), source.layout,
        anyLayout(plan.shape(plan.output(0))), {rows.stride, columns.stride}, {rows.window, columns.window},
        {rows.padBefore, columns.padBefore}, {pooling.padAfter(0), pooling.padAfter(1)});
    const pooling_forward::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const Operand result = plan.result(plan.output(0), description.dst_desc());
    plan.addPrimitive(pooling_forward(description), description.scratchpad_desc(),
        {{DNNL_ARG_SRC, source.buffer, source.layout}, {DNNL_ARG_DST, result.buffer, result.layout}});
}

PoolingMode modeOf(PoolingKind kind)
{
    switch (kind) {
    case PoolingKind::AverageIncludePad:
        return PoolingMode::AverageWithPadding;
    case PoolingKind::AverageExcludePad:
        return PoolingMode::AverageOfSource;
    case PoolingKind::Max:
        break;
    }
    return PoolingMode::Maximum;
}

/// Whether every window meets the source, as it must for a maximum.
bool allMeetSource(const Geometry& pooling)
{
    for (const WindowAxis& axis : pooling.axes) {
        for (const std::int64_t index : {std::int64_t(0), axis.results - 1}) {
            const WindowSpan span = spanOf(axis, index);
            if (span.begin >= span.end) {
                return false;
            }
        }
    }
    return true;
}

/// A maximum over channels in blocks, for which oneDNN takes several times as long. False, with nothing added, when
/// it is something else.
bool addBlockedMaximum(PlanBuilder& plan, const Geometry& pooling)
{
    const Operand source = plan.operand(plan.input(0));
    const int block = channelBlock(source.layout);
    if (pooling.kind != PoolingKind::Max || block == 0 || !allMeetSource(pooling)) {
        return false;
    }
    const Shape& extents = plan.shape(plan.input(0));
    const MaxPoolingShape shape{
        block, extents[0] * ((extents[1] + block - 1) / block), pooling.axes[0], pooling.axes[1]};
    const Operand result = plan.result(plan.output(0), blockedLayout(plan.shape(plan.output(0)), block));
    plan.addKernel({source.buffer, result.buffer}, static_cast<int>(shape.blocks),
        [shape, kernel = maxPooling(block)](float* const* at, int index) { kernel(shape, index, at[0], at[1]); });
    return true;
}

} // namespace

void addPooling(PlanBuilder& plan, const format::Operation& operation)
{
    const Geometry pooling = describe(plan, *operation.kind_as_Pooling());
    if (addBlockedMaximum(plan, pooling)) {
        return;
    }
    if (fitsPrimitive(pooling)) {
        addPrimitive(plan, pooling);
        return;
    }
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand result = plan.plainResult(plan.output(0));
    const std::int64_t planes = countRange(plan.shape(plan.input(0)), 0, 2);
    const PlanePooling planePooling{modeOf(pooling.kind), pooling.axes[0], pooling.axes[1]};
    plan.addKernel({source.buffer, result.buffer},
        [=](float* const* operands) { poolPlanes(planePooling, planes, operands[0], operands[1]); });
}

} // namespace scribo::cpu
