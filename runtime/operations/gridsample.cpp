#include "operations.h"

#include "kernels/gridsample.h"

namespace scribo::cpu {

void addGridSample(PlanBuilder& plan, const format::Operation& operation)
{
    const format::GridSample& sample = *operation.kind_as_GridSample();
    const Shape& data = plan.shape(plan.input(0));
    const Shape& grid = plan.shape(plan.input(1));
    const GridSampling sampling{data[1], data[2], data[3], grid[1] * grid[2], sample.border(), sample.align_corners()};
    const std::int64_t pictures = data[0];
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand places = plan.plainOperand(plan.input(1));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({source.buffer, places.buffer, result.buffer}, static_cast<int>(pictures),
        [sampling](float* const* at, int picture) {
            sampleGrid(sampling, at[0] + picture * sampling.channels * sampling.rows * sampling.columns,
                at[1] + picture * sampling.places * 2, at[2] + picture * sampling.channels * sampling.places);
        });
}

} // namespace scribo::cpu
