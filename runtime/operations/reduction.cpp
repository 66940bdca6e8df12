#include "operations.h"

#include "graph/stridedwalk.h"
#include "kernels/reduction.h"

#include <algorithm>
#include <limits>

namespace scribo::cpu {

namespace {

using format::ReductionKind;

/// The strides of the result along the axes of the source: 0 along those that are reduced.
Shape resultStrides(const Shape& source, const flatbuffers::Vector<int>& axes)
{
    Shape kept = source;
    std::vector<bool> reduced(source.size(), false);
    for (int axis : axes) {
        const auto i = static_cast<std::size_t>(normalAxis(axis, static_cast<int>(source.size())));
        kept[i] = 1;
        reduced[i] = true;
    }
    Shape strides = denseStrides(kept);
    for (std::size_t axis = 0; axis < source.size(); ++axis) {
        strides[axis] = reduced[axis] ? 0 : strides[axis];
    }
    return strides;
}

} // namespace

void addReduction(PlanBuilder& plan, const format::Operation& operation)
{
    const format::Reduction& reduction = *operation.kind_as_Reduction();
    const Shape& shape = plan.shape(plan.input(0));
    const std::int64_t results = countElements(plan.shape(plan.output(0)));
    const ReductionKind kind = reduction.kind();
    const JoinRow join = kind == ReductionKind::Max ? joinMaximum : joinSum;
    const float start = kind == ReductionKind::Max ? -std::numeric_limits<float>::infinity() : 0.0F;
    const float scale
        = kind == ReductionKind::Mean ? static_cast<float>(results) / static_cast<float>(countElements(shape)) : 1.0F;
    const StridedWalk<2> walk
        = collapsed(StridedWalk<2>{shape, {denseStrides(shape), resultStrides(shape, *reduction.axes())}});
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({source.buffer, result.buffer}, [=](float* const* operands) {
        std::fill_n(operands[1], results, start);
        forEachRow(walk, [&](const auto& positions) {
            join(operands[0] + positions[0], walk.rowStep(0), operands[1] + positions[1], walk.rowStep(1),
                walk.rowLength());
        });
        for (std::int64_t i = 0; kind == ReductionKind::Mean && i < results; ++i) {
            operands[1][i] *= scale;
        }
    });
}

} // namespace scribo::cpu
