#include "passes.h"
#include "scalaraffine.h"

#include <set>

namespace scribo::builder {

bool scaleActivations(NetworkT& network)
{
    std::set<const OperationT*> folded;
    for (const auto& operation : network.operations) {
        std::size_t position = 0;
        const auto affine = scalarAffine(network, *operation, &position);
        if (!affine) {
            continue;
        }
        const Uses uses(network);
        const int data = operation->inputs[position];
        OperationT* producer = uses.soleProducer(data, format::OperationKind::Activation);
        if (!producer || !redirect(network, operation->outputs.front(), data)) {
            continue;
        }
        format::ActivationT& activation = *producer->kind.AsActivation();
        const double scale = static_cast<double>(activation.scale) * affine->scale;
        const double shift = static_cast<double>(activation.shift) * affine->scale + affine->shift;
        activation.scale = static_cast<float>(scale);
        activation.shift = static_cast<float>(shift);
        folded.insert(operation.get());
        // It must not be counted as a reader any more.
        operation->inputs.clear();
        operation->kind.Reset();
    }
    removeOperations(network, [&](const OperationT& operation) { return folded.count(&operation) > 0; });
    return !folded.empty();
}

} // namespace scribo::builder
