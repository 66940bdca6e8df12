#pragma once

#include "engine_generated.h"

#include <cstdint>
#include <string>

/// Plain facts of a network and its parts. The network must have passed the FlatBuffers verifier.
namespace scribo::format {

/// Whether the kind is one of those of the schema.
constexpr bool isKnown(OperationKind kind)
{
    return kind > OperationKind::NONE && kind <= OperationKind::MAX;
}

/// The name of the operation as messages give it: its kind and the node that it came from.
std::string operationTitle(const Operation& operation);

/// Whether the tensor is there before anything runs. One without elements, which stores no data, is
/// known by an extent of 0.
bool isConstant(const Tensor& tensor);

/// Bytes of one element.
constexpr std::size_t elementSize(ElementType type)
{
    return type == ElementType::Int64 ? 8 : 4;
}

/// The largest rank that a tensor may have, as in TensorRT's Dims.
constexpr std::size_t maximumRank = 8;

/// No extent or width beyond this makes sense; it keeps products of a few of them within 64 bits.
constexpr std::int64_t maximumExtent = std::int64_t(1) << 31;

/// More than ten times what the largest recognisers have; keeps the time bounded that a hostile
/// engine can take.
constexpr std::size_t maximumOperations = std::size_t(1) << 14;
constexpr std::size_t maximumTensors = std::size_t(1) << 16;

/// The widest picture that a network may ask for.
constexpr int maximumWidth = 1 << 16;

} // namespace scribo::format
