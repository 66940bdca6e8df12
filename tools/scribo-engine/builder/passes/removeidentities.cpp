#include "passes.h"
#include "scalaraffine.h"

#include <algorithm>
#include <numeric>

namespace scribo::builder {

namespace {

using format::OperationKind;

bool inOrder(const std::vector<int>& permutation)
{
    for (std::size_t axis = 0; axis < permutation.size(); ++axis) {
        if (permutation[axis] != static_cast<int>(axis)) {
            return false;
        }
    }
    return true;
}

bool allZero(const std::vector<std::int64_t>& values)
{
    return std::all_of(values.begin(), values.end(), [](std::int64_t value) { return value == 0; });
}

/// The input that a sum with 0 or a product with 1 gives again; nothing for other operations.
std::optional<std::size_t> neutral(const NetworkT& network, const OperationT& operation)
{
    std::size_t position = 0;
    const auto affine = scalarAffine(network, operation, &position);
    return affine && affine->scale == 1 && affine->shift == 0 ? std::optional(position) : std::nullopt;
}

/// Whether the operation gives exactly what it gets in its first input.
bool isIdentity(const NetworkT& network, const OperationT& operation)
{
    const format::OperationKindUnion& kind = operation.kind;
    switch (kind.type) {
    case OperationKind::Transpose:
        return inOrder(kind.AsTranspose()->permutation);
    case OperationKind::Squeeze:
        return kind.AsSqueeze()->axes.empty();
    case OperationKind::Unsqueeze:
        return kind.AsUnsqueeze()->axes.empty();
    case OperationKind::Pad:
        return allZero(kind.AsPad()->begin) && allZero(kind.AsPad()->end);
    case OperationKind::Cast:
        return network.tensors[static_cast<std::size_t>(operation.inputs.front())]->type == kind.AsCast()->to;
    case OperationKind::Concat:
        return operation.inputs.size() == 1;
    case OperationKind::Activation:
        return kind.AsActivation()->kind == format::ActivationKind::None;
    default:
        return false;
    }
}

/// Two transposes one after the other are one.
bool joinTransposes(NetworkT& network)
{
    bool changed = false;
    const Uses uses(network);
    for (const auto& operation : network.operations) {
        const OperationT* first = uses.producer(operation->inputs.empty() ? -1 : operation->inputs.front());
        if (operation->kind.type != OperationKind::Transpose || !first
            || first->kind.type != OperationKind::Transpose) {
            continue;
        }
        std::vector<int>& permutation = operation->kind.AsTranspose()->permutation;
        const std::vector<int>& before = first->kind.AsTranspose()->permutation;
        if (permutation.size() != before.size()) {
            continue;
        }
        for (int& axis : permutation) {
            axis = before[static_cast<std::size_t>(axis)];
        }
        operation->inputs.front() = first->inputs.front();
        changed = true;
    }
    return changed;
}

} // namespace

bool removeIdentities(NetworkT& network)
{
    bool changed = joinTransposes(network);
    std::vector<const OperationT*> redundant;
    for (const auto& operation : network.operations) {
        const std::optional<std::size_t> position
            = isIdentity(network, *operation) ? std::optional<std::size_t>(0) : neutral(network, *operation);
        if (position && redirect(network, operation->outputs.front(), operation->inputs[*position])) {
            redundant.push_back(operation.get());
        }
    }
    removeOperations(network, [&](const OperationT& operation) {
        return std::find(redundant.begin(), redundant.end(), &operation) != redundant.end();
    });
    return changed || !redundant.empty();
}

} // namespace scribo::builder
