#include "evaluate.h"
#include "passes.h"

#include <set>

namespace scribo::builder {

bool foldConstants(NetworkT& network)
{
    // What a model of a sane size folds stays far below; the rest is computed at run time.
    std::size_t room = std::size_t(256) << 20;
    std::set<const OperationT*> folded;
    for (const auto& operation : network.operations) {
        std::optional<TensorT> value = evaluate(network, *operation);
        if (!value || value->constant.size() > room) {
            continue;
        }
        room -= value->constant.size();
        TensorT& output = *network.tensors[static_cast<std::size_t>(operation->outputs.front())];
        output.dims = std::move(value->dims);
        output.constant = std::move(value->constant);
        folded.insert(operation.get());
    }
    removeOperations(network, [&](const OperationT& operation) { return folded.count(&operation) > 0; });
    return !folded.empty();
}

} // namespace scribo::builder
