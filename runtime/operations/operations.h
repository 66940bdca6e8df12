#pragma once

#include "plan/planbuilder.h"

namespace scribo::cpu {

/// Adds the steps of an operation whose shapes are known to a plan. Each of the functions below does
/// it for one kind, in the file of the same name.
void addOperation(PlanBuilder& plan, const format::Operation& operation);

void addActivation(PlanBuilder& plan, const format::Operation& operation);
void addConvolution(PlanBuilder& plan, const format::Operation& operation);
void addPooling(PlanBuilder& plan, const format::Operation& operation);
void addReduction(PlanBuilder& plan, const format::Operation& operation);
void addResize(PlanBuilder& plan, const format::Operation& operation);
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

} // namespace scribo::cpu
