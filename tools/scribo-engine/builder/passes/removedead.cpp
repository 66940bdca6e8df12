#include "passes.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// Gives the tensors that are left new numbers, in their old order.
void compactTensors(NetworkT& network, const std::vector<bool>& used)
{
    std::vector<int> number(network.tensors.size(), -1);
    std::vector<std::unique_ptr<TensorT>> kept;
    for (std::size_t i = 0; i < network.tensors.size(); ++i) {
        if (used[i]) {
            number[i] = static_cast<int>(kept.size());
            kept.push_back(std::move(network.tensors[i]));
        }
    }
    network.tensors = std::move(kept);
    const auto renumber = [&number](std::vector<int>* list) {
        for (int& tensor : *list) {
            tensor = tensor < 0 ? -1 : number[static_cast<std::size_t>(tensor)];
        }
    };
    for (const auto& operation : network.operations) {
        renumber(&operation->inputs);
        renumber(&operation->outputs);
    }
    renumber(&network.inputs);
    renumber(&network.outputs);
}

} // namespace

bool removeDead(NetworkT& network)
{
    const std::size_t operationsBefore = network.operations.size();
    const std::size_t tensorsBefore = network.tensors.size();
    std::vector<bool> used(tensorsBefore, false);
    const auto isUsed = [&used](int tensor) { return tensor >= 0 && used[static_cast<std::size_t>(tensor)]; };
    const auto use = [&used](int tensor) {
        if (tensor >= 0) {
            used[static_cast<std::size_t>(tensor)] = true;
        }
    };
    std::for_each(network.inputs.begin(), network.inputs.end(), use);
    std::for_each(network.outputs.begin(), network.outputs.end(), use);
    // Readers come behind writers, so one walk from the back sees every use.
    for (auto it = network.operations.rbegin(); it != network.operations.rend(); ++it) {
        OperationT& operation = **it;
        if (!std::any_of(operation.outputs.begin(), operation.outputs.end(), isUsed)) {
            operation.outputs.clear();
            continue;
        }
        std::for_each(operation.inputs.begin(), operation.inputs.end(), use);
        if (operation.kind.type == format::OperationKind::Recurrent) {
            std::replace_if(
                operation.outputs.begin(), operation.outputs.end(), [&](int one) { return !isUsed(one); }, -1);
        } else {
            std::for_each(operation.outputs.begin(), operation.outputs.end(), use);
        }
    }
    removeOperations(network, [](const OperationT& operation) { return operation.outputs.empty(); });
    compactTensors(network, used);
    return network.operations.size() != operationsBefore || network.tensors.size() != tensorsBefore;
}

} // namespace scribo::builder
