#include "evaluate.h"
#include "passes.h"

#include <set>

namespace scribo::builder {

bool foldConstants(NetworkT& network)
{
    std::set<const OperationT*> folded;
    for (const auto& operation : network.operations) {
        std::optional<TensorT> value = evaluate(network, *operation);
        if (!value) {
            continue;
        }
        TensorT& output = *network.tensors[static_cast<std::size_t>(operation->outputs.front())];
        output.dims = std::move(value->dims);
        output.constant = std::move(value->constant);
        folded.insert(operation.get());
    }
    removeOperations(network, [&](const OperationT& operation) { return folded.count(&operation) > 0; });
    return !folded.empty();
}

} // namespace scribo::builder
