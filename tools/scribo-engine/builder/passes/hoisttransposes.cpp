#include "passes.h"

#include <algorithm>
#include <optional>

namespace scribo::builder {

namespace {

using format::OperationKind;

bool keepsLastAxis(const std::vector<int>& permutation)
{
    return !permutation.empty() && permutation.back() == static_cast<int>(permutation.size()) - 1;
}

/// The position of the input that `operation` works on row by row, along the last of `rank` axes;
/// nothing for operations that do not.
std::optional<std::size_t> rowsPosition(const NetworkT& network, const OperationT& operation, int rank)
{
    const auto isRow = [&](int tensor) {
        const TensorT* constant = constantAt(network, tensor);
        return constant && constant->dims.size() <= 1;
    };
    switch (operation.kind.type) {
    case OperationKind::Activation:
    case OperationKind::FullyConnected:
        return 0;
    case OperationKind::Softmax: {
        const int axis = operation.kind.AsSoftmax()->axis;
        return axis == -1 || axis == rank - 1 ? std::optional<std::size_t>(0) : std::nullopt;
    }
    case OperationKind::Binary:
        if (isRow(operation.inputs[1])) {
            return 0;
        }
        return isRow(operation.inputs[0]) ? std::optional<std::size_t>(1) : std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace

bool hoistTransposes(NetworkT& network)
{
    bool changed = false;
    for (std::size_t i = 1; i < network.operations.size(); ++i) {
        OperationT& transpose = *network.operations[i];
        if (transpose.kind.type != OperationKind::Transpose
            || !keepsLastAxis(transpose.kind.AsTranspose()->permutation)) {
            continue;
        }
        const int rank = static_cast<int>(transpose.kind.AsTranspose()->permutation.size());
        const Uses uses(network);
        const auto producer = std::find_if(network.operations.begin(), network.operations.end(),
            [&](const auto& one) { return one.get() == uses.producer(transpose.inputs.front()); });
        const int between = transpose.inputs.front();
        const auto position = producer != network.operations.end() && uses.readers(between) == 1
            ? rowsPosition(network, **producer, rank)
            : std::nullopt;
        if (!position) {
            continue;
        }
        // The transpose takes the place of its producer, which now writes what the transpose wrote.
        OperationT& rows = **producer;
        std::swap(rows.inputs[*position], transpose.inputs.front());
        std::swap(rows.outputs.front(), transpose.outputs.front());
        std::swap(*producer, network.operations[i]);
        network.tensors[static_cast<std::size_t>(between)]->name.clear();
        changed = true;
    }
    return changed;
}

} // namespace scribo::builder
