#include "operations.h"

#include "graph/scalarmath.h"
#include "graph/stridedwalk.h"
#include "kernels/elementwise.h"

namespace scribo::cpu {

namespace {

using format::BinaryKind;
using format::UnaryKind;

/// One row of an operation with two operands, each read with its own step.
using BinaryRow = void (*)(
    const float* a, std::int64_t aStep, const float* b, std::int64_t bStep, float* result, std::int64_t count);

template <BinaryKind kind>
void binaryRow(
    const float* a, std::int64_t aStep, const float* b, std::int64_t bStep, float* result, std::int64_t count)
{
    combineRow([](float x, float y) { return applyBinary(kind, x, y); }, a, aStep, b, bStep, result, count);
}

BinaryRow binaryRowOf(BinaryKind kind)
{
    switch (kind) {
    case BinaryKind::Add:
        return binaryRow<BinaryKind::Add>;
    case BinaryKind::Subtract:
        return binaryRow<BinaryKind::Subtract>;
    case BinaryKind::Multiply:
        return binaryRow<BinaryKind::Multiply>;
    case BinaryKind::Divide:
        return binaryRow<BinaryKind::Divide>;
    case BinaryKind::Power:
        return binaryRow<BinaryKind::Power>;
    case BinaryKind::Maximum:
        return binaryRow<BinaryKind::Maximum>;
    case BinaryKind::Minimum:
        break;
    }
    return binaryRow<BinaryKind::Minimum>;
}

using UnaryLoop = void (*)(const float* source, float* result, std::int64_t count);

template <UnaryKind kind>
void unaryLoop(const float* source, float* result, std::int64_t count)
{
    mapRow([](float x) { return applyUnary(kind, x); }, source, result, count);
}

UnaryLoop unaryLoopOf(UnaryKind kind)
{
    switch (kind) {
    case UnaryKind::Sqrt:
        return unaryLoop<UnaryKind::Sqrt>;
    case UnaryKind::Exp:
        return unaryLoop<UnaryKind::Exp>;
    case UnaryKind::Log:
        return unaryLoop<UnaryKind::Log>;
    case UnaryKind::Negate:
        return unaryLoop<UnaryKind::Negate>;
    case UnaryKind::Absolute:
        return unaryLoop<UnaryKind::Absolute>;
    case UnaryKind::Reciprocal:
        return unaryLoop<UnaryKind::Reciprocal>;
    case UnaryKind::Erf:
        return unaryLoop<UnaryKind::Erf>;
    case UnaryKind::Floor:
        return unaryLoop<UnaryKind::Floor>;
    case UnaryKind::Ceil:
        break;
    }
    return unaryLoop<UnaryKind::Ceil>;
}

} // namespace

void addBinary(PlanBuilder& plan, const format::Operation& operation)
{
    const Shape& shape = plan.shape(plan.output(0));
    const StridedWalk<3> walk = collapsed(StridedWalk<3>{shape,
        {broadcastStrides(plan.shape(plan.input(0)), shape), broadcastStrides(plan.shape(plan.input(1)), shape),
            denseStrides(shape)}});
    const BinaryRow row = binaryRowOf(operation.kind_as_Binary()->kind());
    const Operand left = plan.plainOperand(plan.input(0));
    const Operand right = plan.plainOperand(plan.input(1));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({left.buffer, right.buffer, result.buffer}, [walk, row](float* const* operands) {
        forEachRow(walk, [&](const auto& positions) {
            row(operands[0] + positions[0], walk.rowStep(0), operands[1] + positions[1], walk.rowStep(1),
                operands[2] + positions[2], walk.rowLength());
        });
    });
}

void addUnary(PlanBuilder& plan, const format::Operation& operation)
{
    const std::int64_t count = countElements(plan.shape(plan.output(0)));
    const UnaryLoop loop = unaryLoopOf(operation.kind_as_Unary()->kind());
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addKernel({source.buffer, result.buffer},
        [loop, count](float* const* operands) { loop(operands[0], operands[1], count); });
}

} // namespace scribo::cpu
