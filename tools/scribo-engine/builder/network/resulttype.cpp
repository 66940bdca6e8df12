#include "resulttype.h"

#include <cstddef>

namespace scribo::builder {

namespace {

using format::ElementType;
using format::OperationKind;

/// Operations that move values about, whatever they are.
bool keepsType(OperationKind kind)
{
    switch (kind) {
    case OperationKind::Reshape:
    case OperationKind::Squeeze:
    case OperationKind::Unsqueeze:
    case OperationKind::Transpose:
    case OperationKind::Gather:
    case OperationKind::Slice:
    case OperationKind::Expand:
    case OperationKind::Split:
    case OperationKind::Concat:
    case OperationKind::Binary:
        return true;
    default:
        return false;
    }
}

/// Operations all of whose inputs are of one type; the others take integers as arguments.
bool inputsAlike(OperationKind kind)
{
    switch (kind) {
    case OperationKind::Reshape:
    case OperationKind::Gather:
    case OperationKind::Slice:
    case OperationKind::Expand:
    case OperationKind::Resize:
        return false;
    default:
        return true;
    }
}

} // namespace

std::optional<ElementType> resultType(
    const format::NetworkT& network, const format::OperationT& operation, std::string* error)
{
    const auto typeOf = [&](int index) { return network.tensors[static_cast<std::size_t>(index)]->type; };
    const OperationKind kind = operation.kind.type;
    if (kind == OperationKind::Fill) {
        return operation.kind.AsFill()->type;
    }
    const ElementType first = typeOf(operation.inputs.front());
    if (kind == OperationKind::ShapeOf) {
        return ElementType::Int64;
    }
    if (kind == OperationKind::Cast) {
        return operation.kind.AsCast()->to;
    }
    for (int index : operation.inputs) {
        if (inputsAlike(kind) && index >= 0 && typeOf(index) != first) {
            *error = "its inputs are of different types";
            return std::nullopt;
        }
    }
    if (keepsType(kind)) {
        return first;
    }
    if (first != ElementType::Float32) {
        *error = "it is supported on floats only";
        return std::nullopt;
    }
    return ElementType::Float32;
}

} // namespace scribo::builder
