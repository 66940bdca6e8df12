#include "passes.h"

#include <algorithm>

namespace scribo::builder {

bool dropZeroStates(NetworkT& network)
{
    bool changed = false;
    for (const auto& operation : network.operations) {
        if (operation->kind.type != format::OperationKind::Recurrent) {
            continue;
        }
        // The initial hidden and cell state, behind data, weights, recurrent weights and bias.
        for (std::size_t position = 4; position < operation->inputs.size(); ++position) {
            const TensorT* state = constantAt(network, operation->inputs[position]);
            const std::vector<float> values = state ? floatValues(*state) : std::vector<float>();
            if (state && std::all_of(values.begin(), values.end(), [](float value) { return value == 0; })) {
                operation->inputs[position] = -1;
                changed = true;
            }
        }
    }
    return changed;
}

} // namespace scribo::builder
