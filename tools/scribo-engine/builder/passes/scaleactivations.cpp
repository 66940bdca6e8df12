#include "passes.h"
#include "scalaraffine.h"

#include <cmath>

namespace scribo::builder {

namespace {

/// `activation` with `affine` behind it; nothing where the numbers become too large.
std::optional<format::ActivationT> scaledBy(const ScalarAffine& affine, format::ActivationT activation)
{
    activation.scale = static_cast<float>(static_cast<double>(activation.scale) * affine.scale);
    activation.shift = static_cast<float>(static_cast<double>(activation.shift) * affine.scale + affine.shift);
    const bool finite = std::isfinite(activation.scale) && std::isfinite(activation.shift);
    return finite ? std::optional(activation) : std::nullopt;
}

} // namespace

bool scaleActivations(NetworkT& network)
{
    AbsorbedOperations absorbed;
    for (const auto& operation : network.operations) {
        std::size_t position = 0;
        const auto affine = scalarAffine(network, *operation, &position);
        if (!affine) {
            continue;
        }
        const Uses uses(network);
        const int data = operation->inputs[position];
        OperationT* producer = uses.soleProducer(data, format::OperationKind::Activation);
        const auto scaled = producer ? scaledBy(*affine, *producer->kind.AsActivation()) : std::nullopt;
        if (!scaled || !redirect(network, operation->outputs.front(), data)) {
            continue;
        }
        *producer->kind.AsActivation() = *scaled;
        absorbed.add(*operation);
    }
    return absorbed.remove(network);
}

} // namespace scribo::builder
