#include "operations.h"

#include "graph/operationrow.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// The parts of a movement that make one output, ready to be carried out.
struct Gathering
{
    std::vector<BufferId> buffers;
    struct Part
    {
        std::size_t operand;
        StridedWalk<2> walk;
    };
    std::vector<Part> parts;
    std::optional<float> filler;
    std::int64_t count;

    /// `operands` are the sources, then the result.
    void run(float* const* operands) const
    {
        float* result = operands[buffers.size() - 1];
        if (filler) {
            std::fill_n(result, count, *filler);
        }
        for (const Part& part : parts) {
            copyStrided(part.walk, static_cast<const float*>(operands[part.operand]), result);
        }
    }
};

void addGathering(PlanBuilder& plan, const Movement& movement, std::size_t output)
{
    Gathering gathering;
    for (std::size_t i = 0; plan.input(i) >= 0 && !plan.value(plan.input(i)).isInteger(); ++i) {
        gathering.buffers.push_back(plan.plainOperand(plan.input(i)).buffer);
    }
    for (const Movement::Part& part : movement.parts) {
        if (part.output == output) {
            gathering.parts.push_back({part.input, part.copy.walk()});
        }
    }
    gathering.filler = movement.filler;
    gathering.count = countElements(movement.results[output]);
    gathering.buffers.push_back(plan.plainResult(plan.output(output)).buffer);
    const std::vector<BufferId> buffers = gathering.buffers;
    plan.addKernel(buffers, [gathering = std::move(gathering)](float* const* operands) { gathering.run(operands); });
}

} // namespace

/// Only the way in which the memory is looked at changes; whoever needs another order reorders it.
void addTranspose(PlanBuilder& plan, const format::Operation& operation)
{
    const auto* permutation = operation.kind_as_Transpose()->permutation();
    const Operand source = plan.operand(plan.input(0));
    const std::vector<int> order
        = permutation ? std::vector<int>(permutation->begin(), permutation->end()) : std::vector<int>();
    plan.setResult(plan.output(0), {source.buffer, transposed(source.layout, order)});
}

void addReshape(PlanBuilder& plan, const format::Operation&)
{
    const Operand source = plan.operand(plan.input(0));
    const Shape& shape = plan.shape(plan.output(0));
    if (const std::optional<Layout> layout = reshaped(source.layout, shape)) {
        plan.setResult(plan.output(0), {source.buffer, *layout});
    } else {
        plan.setResult(plan.output(0), {plan.plainOperand(plan.input(0)).buffer, plainLayout(shape)});
    }
}

void addCast(PlanBuilder& plan, const format::Operation&)
{
    const Value& source = plan.value(plan.input(0));
    if (!source.isInteger()) {
        plan.setResult(plan.output(0), plan.operand(plan.input(0)));
        return;
    }
    const std::vector<std::int64_t> integers = source.integers;
    plan.addKernel({plan.plainResult(plan.output(0)).buffer}, [integers](float* const* operands) {
        std::transform(integers.begin(), integers.end(), operands[0],
            [](std::int64_t integer) { return static_cast<float>(integer); });
    });
}

void addFill(PlanBuilder& plan, const format::Operation& operation)
{
    const std::int64_t count = countElements(plan.shape(plan.output(0)));
    const float value = operation.kind_as_Fill()->value();
    plan.addKernel({plan.plainResult(plan.output(0)).buffer},
        [count, value](float* const* operands) { std::fill_n(operands[0], count, value); });
}

void addMovement(PlanBuilder& plan, const format::Operation& operation)
{
    // It was described once already, when the shapes were worked out.
    const Movement movement = operationRow(operation.kind_type()).movement(Node(operation, plan.allValues())).value();
    for (std::size_t output = 0; output < movement.results.size(); ++output) {
        if (plan.isRead(output)) {
            addGathering(plan, movement, output);
        }
    }
}

} // namespace scribo::cpu
