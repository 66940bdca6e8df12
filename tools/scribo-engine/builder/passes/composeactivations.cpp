#include "passes.h"

#include <cmath>

namespace scribo::builder {

namespace {

using format::ActivationKind;
using format::OperationKind;

/// What x times the activation `inner` of x is; None when it has no name of its own.
ActivationKind selfGated(const format::ActivationT& inner)
{
    if (inner.kind == ActivationKind::Sigmoid) {
        return ActivationKind::Swish;
    }
    constexpr float tolerance = 1e-6f;
    const bool sixth = std::fabs(inner.alpha - 1.0f / 6) < tolerance && std::fabs(inner.beta - 0.5f) < tolerance;
    return inner.kind == ActivationKind::HardSigmoid && sixth ? ActivationKind::HardSwish : ActivationKind::None;
}

bool compose(const Uses& uses, OperationT& product, std::size_t gatePosition)
{
    const OperationT* gate = uses.producer(product.inputs[gatePosition]);
    const int data = product.inputs[1 - gatePosition];
    if (!gate || gate->kind.type != OperationKind::Activation || gate->inputs.front() != data) {
        return false;
    }
    const ActivationKind kind = selfGated(*gate->kind.AsActivation());
    if (kind == ActivationKind::None) {
        return false;
    }
    format::ActivationT activation;
    activation.kind = kind;
    product.kind.Set(std::move(activation));
    product.inputs = {data};
    return true;
}

} // namespace

bool composeActivations(NetworkT& network)
{
    bool changed = false;
    const Uses uses(network);
    for (const auto& operation : network.operations) {
        if (operation->kind.type == OperationKind::Binary
            && operation->kind.AsBinary()->kind == format::BinaryKind::Multiply) {
            changed |= compose(uses, *operation, 0) || compose(uses, *operation, 1);
        }
    }
    return changed;
}

} // namespace scribo::builder
