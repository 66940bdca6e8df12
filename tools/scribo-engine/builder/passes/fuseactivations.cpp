#include "passes.h"

#include <set>

namespace scribo::builder {

namespace {

using format::OperationKind;

/// The place for the activation of an operation that can apply one; null for others.
std::unique_ptr<format::ActivationT>* activationSlot(OperationT* operation)
{
    if (!operation) {
        return nullptr;
    }
    switch (operation->kind.type) {
    case OperationKind::Convolution:
        return &operation->kind.AsConvolution()->activation;
    case OperationKind::FullyConnected:
        return &operation->kind.AsFullyConnected()->activation;
    default:
        return nullptr;
    }
}

} // namespace

bool fuseActivations(NetworkT& network)
{
    std::set<const OperationT*> fused;
    for (const auto& operation : network.operations) {
        if (operation->kind.type != OperationKind::Activation) {
            continue;
        }
        const Uses uses(network);
        const int data = operation->inputs.front();
        auto* slot = activationSlot(uses.producer(data));
        if (!slot || *slot || uses.readers(data) != 1 || !redirect(network, operation->outputs.front(), data)) {
            continue;
        }
        *slot = std::make_unique<format::ActivationT>(*operation->kind.AsActivation());
        fused.insert(operation.get());
        operation->inputs.clear();
    }
    removeOperations(network, [&](const OperationT& operation) { return fused.count(&operation) > 0; });
    return !fused.empty();
}

} // namespace scribo::builder
