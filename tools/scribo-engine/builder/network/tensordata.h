#pragma once

#include "engine_generated.h"

#include <cstdint>
#include <string>
#include <vector>

/// Reading and making the constants of a network under construction.
namespace scribo::builder {

using format::TensorT;
using Extents = std::vector<std::int64_t>;

/// The number of elements of a tensor of these extents; 1 for a scalar (no extents). -1 when an
/// extent is negative, or when there are more elements than a gigabyte holds: a damaged file must not decide how much
/// memory is allocated.
std::int64_t elementCount(const Extents& extents);

/// Whether the values are known. An empty constant does not exist in an engine.
bool isConstant(const TensorT& tensor);

/// The values of a constant, in row-major order. The type must be the one asked for.
std::vector<float> floatValues(const TensorT& tensor);
std::vector<std::int64_t> integerValues(const TensorT& tensor);

/// A constant; `values` must hold as many elements as `extents` say, and at least one.
TensorT makeConstant(std::string name, Extents extents, const std::vector<float>& values);
TensorT makeConstant(std::string name, Extents extents, const std::vector<std::int64_t>& values);

} // namespace scribo::builder
