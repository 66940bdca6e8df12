#include "passes.h"

#include <algorithm>
#include <set>

namespace scribo::builder {

namespace {

using format::OperationKind;

/// A constant that adds one value to each of `count` columns, or the same to all; nothing for others.
std::optional<std::vector<float>> columnValues(const TensorT& constant, std::size_t count)
{
    const std::vector<float> values = floatValues(constant);
    if (constant.dims.size() > 1 || (values.size() != 1 && values.size() != count)) {
        return std::nullopt;
    }
    return values.size() == count ? values : std::vector<float>(count, values.front());
}

/// Merges the sum `operation` into the layer that gives its input `position`.
bool fuse(NetworkT& network, OperationT& operation, std::size_t position)
{
    const Uses uses(network);
    OperationT* layer = uses.soleProducer(operation.inputs[position], OperationKind::FullyConnected);
    const TensorT* constant = constantAt(network, operation.inputs[1 - position]);
    if (!layer || !constant || layer->kind.AsFullyConnected()->activation) {
        return false;
    }
    const auto columns = static_cast<std::size_t>(constantAt(network, layer->inputs[1])->dims.back());
    std::optional<std::vector<float>> values = columnValues(*constant, columns);
    if (!values || !redirect(network, operation.outputs.front(), operation.inputs[position])) {
        return false;
    }
    if (layer->inputs.size() > 2) {
        const std::vector<float> before = floatValues(*constantAt(network, layer->inputs[2]));
        std::transform(before.begin(), before.end(), values->begin(), values->begin(), std::plus<float>());
        layer->inputs.pop_back();
    }
    layer->inputs.push_back(
        addTensor(network, makeConstant(constant->name, {static_cast<std::int64_t>(columns)}, *values)));
    return true;
}

} // namespace

bool fuseBias(NetworkT& network)
{
    std::set<const OperationT*> fused;
    for (const auto& operation : network.operations) {
        if (operation->kind.type != OperationKind::Binary
            || operation->kind.AsBinary()->kind != format::BinaryKind::Add) {
            continue;
        }
        if (fuse(network, *operation, 0) || fuse(network, *operation, 1)) {
            fused.insert(operation.get());
            operation->inputs.clear();
        }
    }
    removeOperations(network, [&](const OperationT& operation) { return fused.count(&operation) > 0; });
    return !fused.empty();
}

} // namespace scribo::builder
