#include "operations.h"

#include "kernels/normalisation.h"

namespace scribo::cpu {

void addChannelAffine(PlanBuilder& plan, const format::Operation&)
{
    const Shape& shape = plan.shape(plan.input(0));
    const std::int64_t batch = shape[0];
    const std::int64_t channels = shape[1];
    const std::int64_t inner = countRange(shape, 2, static_cast<int>(shape.size()));
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand scale = plan.plainOperand(plan.input(1));
    const Operand shift = plan.plainOperand(plan.input(2));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({source.buffer, scale.buffer, shift.buffer, result.buffer}, [=](float* const* operands) {
        const float* from = operands[0];
        float* to = operands[3];
        for (std::int64_t plane = 0; plane < batch * channels; ++plane) {
            scaleRow(from, operands[1][plane % channels], operands[2][plane % channels], to, inner);
            from += inner;
            to += inner;
        }
    });
}

void addLayerNormalisation(PlanBuilder& plan, const format::Operation& operation)
{
    const format::LayerNormalisation& normalisation = *operation.kind_as_LayerNormalisation();
    const Shape& shape = plan.shape(plan.input(0));
    const int rank = static_cast<int>(shape.size());
    const int axis = normalAxis(normalisation.axis(), rank);
    const std::int64_t rows = countRange(shape, 0, axis);
    const std::int64_t count = countRange(shape, axis, rank);
    const float epsilon = normalisation.epsilon();
    const bool shifted = plan.input(2) >= 0;
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand scale = plan.plainOperand(plan.input(1));
    // Without a shift the scale stands in its place, unread.
    const Operand shift = shifted ? plan.plainOperand(plan.input(2)) : scale;
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({source.buffer, scale.buffer, shift.buffer, result.buffer}, [=](float* const* operands) {
        for (std::int64_t row = 0; row < rows; ++row) {
            normaliseRow(operands[0] + row * count, operands[1], shifted ? operands[2] : nullptr, epsilon,
                operands[3] + row * count, count);
        }
    });
}

} // namespace scribo::cpu
