#include "networkedit.h"

#include <algorithm>

namespace scribo::builder {

Uses::Uses(NetworkT& network)
    : producers(network.tensors.size(), nullptr)
    , readerCounts(network.tensors.size(), 0)
{
    const auto count = [this](int tensor) {
        if (tensor >= 0) {
            ++readerCounts[static_cast<std::size_t>(tensor)];
        }
    };
    for (const auto& operation : network.operations) {
        std::for_each(operation->inputs.begin(), operation->inputs.end(), count);
        for (int tensor : operation->outputs) {
            if (tensor >= 0) {
                producers[static_cast<std::size_t>(tensor)] = operation.get();
            }
        }
    }
    std::for_each(network.outputs.begin(), network.outputs.end(), count);
}

OperationT* Uses::producer(int tensor) const
{
    return tensor < 0 ? nullptr : producers[static_cast<std::size_t>(tensor)];
}

int Uses::readers(int tensor) const
{
    return tensor < 0 ? 0 : readerCounts[static_cast<std::size_t>(tensor)];
}

OperationT* Uses::soleProducer(int tensor, format::OperationKind kind) const
{
    OperationT* operation = producer(tensor);
    return operation && operation->kind.type == kind && readers(tensor) == 1 ? operation : nullptr;
}

const format::TensorT* constantAt(const NetworkT& network, int tensor)
{
    if (tensor < 0 || network.tensors[static_cast<std::size_t>(tensor)]->constant.empty()) {
        return nullptr;
    }
    return network.tensors[static_cast<std::size_t>(tensor)].get();
}

int addTensor(NetworkT& network, format::TensorT tensor)
{
    network.tensors.push_back(std::make_unique<format::TensorT>(std::move(tensor)));
    return static_cast<int>(network.tensors.size()) - 1;
}

bool redirect(NetworkT& network, int from, int to)
{
    const auto contains
        = [](const std::vector<int>& list, int tensor) { return std::count(list.begin(), list.end(), tensor) > 0; };
    if (contains(network.outputs, from)) {
        if (contains(network.inputs, to) || contains(network.outputs, to) || constantAt(network, to)) {
            return false;
        }
        network.tensors[static_cast<std::size_t>(to)]->name = network.tensors[static_cast<std::size_t>(from)]->name;
    }
    std::replace(network.outputs.begin(), network.outputs.end(), from, to);
    for (const auto& operation : network.operations) {
        std::replace(operation->inputs.begin(), operation->inputs.end(), from, to);
    }
    return true;
}

void removeOperations(NetworkT& network, const std::function<bool(const OperationT&)>& unwanted)
{
    auto& operations = network.operations;
    operations.erase(
        std::remove_if(operations.begin(), operations.end(), [&](const auto& one) { return unwanted(*one); }),
        operations.end());
}

void AbsorbedOperations::add(OperationT& operation)
{
    operations.insert(&operation);
    operation.inputs.clear();
    operation.kind.Reset();
}

bool AbsorbedOperations::remove(NetworkT& network) const
{
    removeOperations(network, [this](const OperationT& operation) { return operations.count(&operation) > 0; });
    return !operations.empty();
}

} // namespace scribo::builder
