#include "scalaraffine.h"

#include "tensordata.h"

#include <cmath>

namespace scribo::builder {

std::optional<ScalarAffine> scalarAffine(format::BinaryKind kind, std::size_t position, double constant)
{
    switch (kind) {
    case format::BinaryKind::Add:
        return ScalarAffine{1, constant};
    case format::BinaryKind::Subtract:
        return position == 0 ? ScalarAffine{1, -constant} : ScalarAffine{-1, constant};
    case format::BinaryKind::Multiply:
        return ScalarAffine{constant, 0};
    case format::BinaryKind::Divide:
        if (position == 0 && std::isfinite(static_cast<float>(1 / constant))) {
            return ScalarAffine{1 / constant, 0};
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<ScalarAffine> scalarAffine(const NetworkT& network, const OperationT& operation, std::size_t* position)
{
    if (operation.kind.type != format::OperationKind::Binary) {
        return std::nullopt;
    }
    for (*position = 0; *position < 2; ++*position) {
        const format::TensorT* constant = constantAt(network, operation.inputs[1 - *position]);
        if (constant && constant->dims.empty() && constant->type == format::ElementType::Float32) {
            const double value = static_cast<double>(floatValues(*constant).front());
            return scalarAffine(operation.kind.AsBinary()->kind, *position, value);
        }
    }
    return std::nullopt;
}

} // namespace scribo::builder
