#pragma once

#include "format/kindtable.h"
#include "plan/planbuilder.h"

namespace scribo::cpu {

// How each kind of operation is added to a plan, in the file of the same name.

void addActivation(PlanBuilder& plan, const format::Operation& operation);
void addConvolution(PlanBuilder& plan, const format::Operation& operation);
void addPooling(PlanBuilder& plan, const format::Operation& operation);
void addReduction(PlanBuilder& plan, const format::Operation& operation);
void addResize(PlanBuilder& plan, const format::Operation& operation);
void addGridSample(PlanBuilder& plan, const format::Operation& operation);
void addRecurrent(PlanBuilder& plan, const format::Operation& operation);
void addFullyConnected(PlanBuilder& plan, const format::Operation& operation);
void addMatrixProduct(PlanBuilder& plan, const format::Operation& operation);
void addSoftmax(PlanBuilder& plan, const format::Operation& operation);

// elementwise.cpp
void addBinary(PlanBuilder& plan, const format::Operation& operation);
void addUnary(PlanBuilder& plan, const format::Operation& operation);

// normalisation.cpp
void addChannelAffine(PlanBuilder& plan, const format::Operation& operation);
void addLayerNormalisation(PlanBuilder& plan, const format::Operation& operation);

// datamovement.cpp
void addTranspose(PlanBuilder& plan, const format::Operation& operation);
void addReshape(PlanBuilder& plan, const format::Operation& operation);
void addCast(PlanBuilder& plan, const format::Operation& operation);
void addFill(PlanBuilder& plan, const format::Operation& operation);
void addMovement(PlanBuilder& plan, const format::Operation& operation);

/// Adds nothing: a kind that gives integers only, which are known before the plan is made.
inline void addNothing(PlanBuilder&, const format::Operation&)
{
}

/// How a kind of operation is added to a plan.
struct PlanOperation
{
    format::OperationKind kind;
    AddOperation add;
};

inline constexpr PlanOperation planOperations[] = {
    {format::OperationKind::Activation, addActivation},
    {format::OperationKind::Convolution, addConvolution},
    {format::OperationKind::Pooling, addPooling},
    {format::OperationKind::Reduction, addReduction},
    {format::OperationKind::Recurrent, addRecurrent},
    {format::OperationKind::FullyConnected, addFullyConnected},
    {format::OperationKind::MatrixProduct, addMatrixProduct},
    {format::OperationKind::Binary, addBinary},
    {format::OperationKind::Unary, addUnary},
    {format::OperationKind::ChannelAffine, addChannelAffine},
    {format::OperationKind::LayerNormalisation, addLayerNormalisation},
    {format::OperationKind::Softmax, addSoftmax},
    {format::OperationKind::Transpose, addTranspose},
    {format::OperationKind::Reshape, addReshape},
    {format::OperationKind::Squeeze, addReshape},
    {format::OperationKind::Unsqueeze, addReshape},
    {format::OperationKind::Concat, addMovement},
    {format::OperationKind::Gather, addMovement},
    {format::OperationKind::Slice, addMovement},
    {format::OperationKind::ShapeOf, addNothing},
    {format::OperationKind::Cast, addCast},
    {format::OperationKind::Fill, addFill},
    {format::OperationKind::Expand, addMovement},
    {format::OperationKind::Split, addMovement},
    {format::OperationKind::Pad, addMovement},
    {format::OperationKind::Resize, addResize},
    {format::OperationKind::GridSample, addGridSample},
};

static_assert(format::coversEveryKind(planOperations));

} // namespace scribo::cpu
