#pragma once

#include "processor.h"

#include <cstdint>
#include <cstring>

// Where vectors of this size are no registers, compilers warn of how they would be passed; nothing here is ever
// called, all of it is inlined.
#pragma GCC diagnostic ignored "-Wpsabi"

/// Vectors of floats that compile on every processor: one register where it is wide enough, several elsewhere.
/// Arithmetic and comparisons work element by element.
namespace scribo::cpu {

using Float8 [[gnu::vector_size(32)]] = float;
using Float16 [[gnu::vector_size(64)]] = float;

template <class Vector>
constexpr std::int64_t lanes = sizeof(Vector) / sizeof(float);

/// From and to any address.
template <class Vector>
SCRIBO_INLINE Vector load(const float* from)
{
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector>
SCRIBO_INLINE void store(float* to, const Vector& vector)
{
    std::memcpy(to, &vector, sizeof vector);
}

/// `value` in every element; -0 becomes 0. In a product write the float itself, which costs nothing.
template <class Vector>
SCRIBO_INLINE Vector splat(float value)
{
    return Vector{} + value;
}

/// Not a number stays one in `a`.
template <class Vector>
SCRIBO_INLINE Vector larger(const Vector& a, const Vector& b)
{
    return a < b ? b : a;
}

} // namespace scribo::cpu
