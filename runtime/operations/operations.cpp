#include "operations.h"

namespace scribo::cpu {

using format::OperationKind;

void addOperation(PlanBuilder& plan, const format::Operation& operation)
{
    switch (operation.kind_type()) {
    case OperationKind::Activation:
        return addActivation(plan, operation);
    case OperationKind::Convolution:
        return addConvolution(plan, operation);
    case OperationKind::Pooling:
        return addPooling(plan, operation);
    case OperationKind::Reduction:
        return addReduction(plan, operation);
    case OperationKind::Resize:
        return addResize(plan, operation);
    case OperationKind::Recurrent:
        return addRecurrent(plan, operation);
    case OperationKind::FullyConnected:
        return addFullyConnected(plan, operation);
    case OperationKind::MatrixProduct:
        return addMatrixProduct(plan, operation);
    case OperationKind::Binary:
        return addBinary(plan, operation);
    case OperationKind::Unary:
        return addUnary(plan, operation);
    case OperationKind::ChannelAffine:
        return addChannelAffine(plan, operation);
    case OperationKind::LayerNormalisation:
        return addLayerNormalisation(plan, operation);
    case OperationKind::Softmax:
        return addSoftmax(plan, operation);
    case OperationKind::Transpose:
        return addTranspose(plan, operation);
    case OperationKind::Reshape:
    case OperationKind::Squeeze:
    case OperationKind::Unsqueeze:
        return addReshape(plan, operation);
    case OperationKind::Cast:
        return addCast(plan, operation);
    case OperationKind::Fill:
        return addFill(plan, operation);
    case OperationKind::Concat:
    case OperationKind::Gather:
    case OperationKind::Slice:
    case OperationKind::Expand:
    case OperationKind::Split:
    case OperationKind::Pad:
        return addMovement(plan, operation);
    case OperationKind::ShapeOf:
    case OperationKind::NONE:
        // Gives integers, which are known before the plan is made.
        return;
    }
}

} // namespace scribo::cpu
