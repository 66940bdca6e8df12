#include "passes.h"

#include <algorithm>

namespace scribo::builder {

bool simplifyScalars(NetworkT& network, const Profile& profile)
{
    bool changed = false;
    for (const auto& operation : network.operations) {
        if (operation->kind.type != format::OperationKind::Binary) {
            continue;
        }
        for (std::size_t position = 0; position < 2; ++position) {
            const TensorT* constant = constantAt(network, operation->inputs[position]);
            const auto data = static_cast<std::size_t>(operation->inputs[1 - position]);
            // Without its axes the constant must not take any from the result.
            if (!constant || constant->type != format::ElementType::Float32 || constant->dims.empty()
                || elementCount(constant->dims) != 1 || data >= profile.size()
                || profile[data].extents.size() < constant->dims.size()) {
                continue;
            }
            operation->inputs[position] = addTensor(network, makeConstant(constant->name, {}, floatValues(*constant)));
            changed = true;
        }
    }
    return changed;
}

} // namespace scribo::builder
