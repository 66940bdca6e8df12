#pragma once

#include "engine_generated.h"

#include <string>

namespace scribo::format {

/// Whether a network hangs together, so that everything behind may follow its indices, enumerations
/// and lists without looking again. False with a sentence in `error`, which may be null. Checked:
///  - every tensor has a known type, and a constant as many bytes as its extents say;
///  - exactly one input, N x C x H x width, and at least one output, all floats and named;
///  - every operation is of a known kind with known enumerations, has its attributes, as many inputs
///    and outputs as its kind takes, and reads only what stands before it (constants, the input, or
///    results of earlier operations);
///  - no tensor is computed twice;
///  - the range of widths is not empty.
/// `network` must have passed the FlatBuffers verifier.
bool checkNetwork(const Network& network, std::string* error);

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
