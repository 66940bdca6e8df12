#include "passes.h"
#include "scalaraffine.h"

#include <algorithm>
#include <cmath>

namespace scribo::builder {

namespace {

using format::ActivationKind;
using format::ActivationT;
using format::OperationKind;

bool near(double a, double b)
{
    return std::fabs(a - b) < 1e-6;
}

/// The activation that gives `tensor`; null when something else does.
ActivationT* activationAt(const Uses& uses, int tensor)
{
    OperationT* producer = uses.producer(tensor);
    return producer && producer->kind.type == OperationKind::Activation ? producer->kind.AsActivation() : nullptr;
}

/// x times the activation `gate` of x; nothing when it has no name of its own.
std::optional<ActivationT> selfGated(const ActivationT& gate)
{
    ActivationT product;
    product.scale = gate.scale;
    if (gate.shift != 0) {
        return std::nullopt;
    }
    if (gate.kind == ActivationKind::Sigmoid) {
        product.kind = ActivationKind::Swish;
        return product;
    }
    if (gate.kind == ActivationKind::HardSigmoid && near(gate.alpha, 1.0 / 6) && near(gate.beta, 0.5)) {
        product.kind = ActivationKind::HardSwish;
        return product;
    }
    return std::nullopt;
}

/// x times x + 3 cut to 0 to 6, which is six times the hard swish of x.
bool composeHardSwish(const NetworkT& network, const Uses& uses, OperationT& product, std::size_t gatePosition)
{
    const int data = product.inputs[1 - gatePosition];
    const ActivationT* gate = activationAt(uses, product.inputs[gatePosition]);
    if (!gate || gate->kind != ActivationKind::Clip || !near(gate->alpha, 0) || !near(gate->beta, 6)
        || gate->shift != 0) {
        return false;
    }
    const OperationT* sum = uses.producer(uses.producer(product.inputs[gatePosition])->inputs.front());
    std::size_t position = 0;
    const auto affine = sum ? scalarAffine(network, *sum, &position) : std::nullopt;
    if (!affine || affine->scale != 1 || !near(affine->shift, 3) || sum->inputs[position] != data) {
        return false;
    }
    ActivationT activation;
    activation.kind = ActivationKind::HardSwish;
    activation.scale = 6 * gate->scale;
    product.kind.Set(std::move(activation));
    product.inputs = {data};
    return true;
}

bool compose(const Uses& uses, OperationT& product, std::size_t gatePosition)
{
    const OperationT* gate = uses.producer(product.inputs[gatePosition]);
    const int data = product.inputs[1 - gatePosition];
    if (!gate || gate->kind.type != OperationKind::Activation || gate->inputs.front() != data) {
        return false;
    }
    std::optional<ActivationT> activation = selfGated(*gate->kind.AsActivation());
    if (!activation) {
        return false;
    }
    product.kind.Set(std::move(*activation));
    product.inputs = {data};
    return true;
}

/// What a rectifier leaves to a cut behind it is one cut from 0.
bool joinClip(const Uses& uses, OperationT& operation)
{
    ActivationT& clip = *operation.kind.AsActivation();
    const int data = operation.inputs.front();
    const ActivationT* before = activationAt(uses, data);
    if (clip.kind != ActivationKind::Clip || !before || before->kind != ActivationKind::Relu || before->scale != 1
        || before->shift != 0 || clip.beta < 0) {
        return false;
    }
    clip.alpha = std::max(clip.alpha, 0.0f);
    operation.inputs = {uses.producer(data)->inputs.front()};
    return true;
}

} // namespace

bool composeActivations(NetworkT& network)
{
    bool changed = false;
    const Uses uses(network);
    for (const auto& operation : network.operations) {
        if (operation->kind.type == OperationKind::Activation) {
            changed |= joinClip(uses, *operation);
        } else if (operation->kind.type == OperationKind::Binary
            && operation->kind.AsBinary()->kind == format::BinaryKind::Multiply) {
            changed |= compose(uses, *operation, 0) || compose(uses, *operation, 1)
                || composeHardSwish(network, uses, *operation, 0) || composeHardSwish(network, uses, *operation, 1);
        }
    }
    return changed;
}

} // namespace scribo::builder
