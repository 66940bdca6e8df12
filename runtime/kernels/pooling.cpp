#include "maxpooling.h"
#include "operations.h"

#include "graph/poolwindow.h"

#include <algorithm>
#include <limits>

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
    PoolWindow windows[2];
    std::int64_t source[2];
    std::int64_t result[2];

    /// The padding behind the source that makes oneDNN, which rounds down, come to the same number of
    /// windows: what is given, or what the last window needs. Below 0 when there is none.
    std::int64_t padAfter(int axis) const
    {
        const PoolWindow& window = windows[axis];
        const std::int64_t needed
            = (result[axis] - 1) * window.stride + window.kernel - window.padBefore - source[axis];
        const std::int64_t most = std::max(needed, window.padAfter);
        const std::int64_t room = source[axis] + window.padBefore + most - window.kernel;
        return room / window.stride + 1 == result[axis] ? most : needed;
    }
};

Geometry describe(const PlanBuilder& plan, const format::Pooling& pooling)
{
    const Shape& source = plan.shape(plan.input(0));
    const Shape& result = plan.shape(plan.output(0));
    return {pooling.kind(), {poolWindow(pooling, 0), poolWindow(pooling, 1)}, {source[2], source[3]},
        {result[2], result[3]}};
}

/// oneDNN divides by the whole window even where it goes beyond the padding; PyTorch does not.
bool fitsPrimitive(const Geometry& pooling)
{
    for (int axis = 0; axis < 2; ++axis) {
        const bool overhangs = pooling.windows[axis].overhangs(pooling.source[axis], pooling.result[axis]);
        if ((overhangs && pooling.kind == PoolingKind::AverageIncludePad) || pooling.padAfter(axis) < 0) {
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
    const PoolWindow& rows = pooling.windows[0];
    const PoolWindow& columns = pooling.windows[1];
    const pooling_forward::desc kind(dnnl::prop_kind::forward_inference, primitiveKind(pooling.kind), source.layout,
        anyLayout(plan.shape(plan.output(0))), {rows.stride, columns.stride}, {rows.kernel, columns.kernel},
        {rows.padBefore, columns.padBefore}, {pooling.padAfter(0), pooling.padAfter(1)});
    const pooling_forward::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const Operand result = plan.result(plan.output(0), description.dst_desc());
    plan.addPrimitive(pooling_forward(description), description.scratchpad_desc(),
        {{DNNL_ARG_SRC, source.buffer, source.layout}, {DNNL_ARG_DST, result.buffer, result.layout}});
}

/// The part of a window along one axis that lies on the source, and how many positions count.
struct Span
{
    std::int64_t begin;
    std::int64_t end;
    std::int64_t counted;
};

Span spanOf(const Geometry& pooling, int axis, std::int64_t index)
{
    const PoolWindow& window = pooling.windows[axis];
    const std::int64_t extent = pooling.source[axis];
    const std::int64_t start = index * window.stride - window.padBefore;
    const std::int64_t padded = std::min(start + window.kernel, extent + window.padAfter);
    const Span span{std::max<std::int64_t>(start, 0), std::min(start + window.kernel, extent), padded - start};
    return pooling.kind == PoolingKind::AverageIncludePad ? span : Span{span.begin, span.end, span.end - span.begin};
}

float poolWindowAt(const Geometry& pooling, const float* plane, const Span& rows, const Span& columns)
{
    const bool max = pooling.kind == PoolingKind::Max;
    float result = max ? -std::numeric_limits<float>::infinity() : 0;
    for (std::int64_t y = rows.begin; y < rows.end; ++y) {
        const float* row = plane + y * pooling.source[1];
        for (std::int64_t x = columns.begin; x < columns.end; ++x) {
            result = max ? std::max(result, row[x]) : result + row[x];
        }
    }
    return max ? result : result / static_cast<float>(rows.counted * columns.counted);
}

void pool(const Geometry& pooling, std::int64_t planes, const float* source, float* result)
{
    for (std::int64_t plane = 0; plane < planes; ++plane) {
        for (std::int64_t y = 0; y < pooling.result[0]; ++y) {
            const Span rows = spanOf(pooling, 0, y);
            for (std::int64_t x = 0; x < pooling.result[1]; ++x) {
                *result++ = poolWindowAt(pooling, source, rows, spanOf(pooling, 1, x));
            }
        }
        source += pooling.source[0] * pooling.source[1];
    }
}

/// Whether every window meets the source, as it must for a maximum.
bool allMeetSource(const Geometry& pooling)
{
    for (int axis = 0; axis < 2; ++axis) {
        for (const std::int64_t index : {std::int64_t(0), pooling.result[axis] - 1}) {
            const Span span = spanOf(pooling, axis, index);
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
    const MaxPoolingShape shape{block, extents[0] * ((extents[1] + block - 1) / block), pooling.windows[0],
        pooling.windows[1], pooling.source[0], pooling.source[1], pooling.result[0], pooling.result[1]};
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
    plan.addKernel({source.buffer, result.buffer},
        [=](float* const* operands) { pool(pooling, planes, operands[0], operands[1]); });
}

} // namespace scribo::cpu
