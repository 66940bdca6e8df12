#include "passes.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// The target that gives a Reshape these output extents, with its one open extent as -1; nothing
/// when there are more of them.
std::optional<Extents> constantTarget(const Extents& extents)
{
    const bool expressible = !extents.empty() && std::count(extents.begin(), extents.end(), 0) == 0
        && std::count(extents.begin(), extents.end(), -1) <= 1;
    return expressible ? std::optional(extents) : std::nullopt;
}

/// Makes `tensor`, which an operation computes, a constant when it is integers known at every width.
bool fix(TensorT& tensor, const TensorProfile& profile)
{
    if (isConstant(tensor) || tensor.type != format::ElementType::Int64 || profile.integers.empty()) {
        return false;
    }
    tensor = makeConstant(tensor.name, profile.extents, profile.integers);
    return true;
}

} // namespace

bool foldShapes(NetworkT& network, const Profile& profile)
{
    bool changed = false;
    for (const auto& operation : network.operations) {
        const int output = operation->outputs.front();
        if (operation->kind.type == format::OperationKind::Reshape && !constantAt(network, operation->inputs[1])) {
            if (const auto target = constantTarget(profile[static_cast<std::size_t>(output)].extents)) {
                operation->inputs[1]
                    = addTensor(network, makeConstant({}, {static_cast<std::int64_t>(target->size())}, *target));
                changed = true;
            }
        }
    }
    removeOperations(network, [&](const OperationT& operation) {
        const auto output = static_cast<std::size_t>(operation.outputs.front());
        const bool fixed = operation.outputs.size() == 1 && fix(*network.tensors[output], profile[output]);
        changed |= fixed;
        return fixed;
    });
    return changed;
}

} // namespace scribo::builder
