#pragma once

#include "vector.h"

/// Functions of vectors of floats, element by element; what is not a number stays so.
namespace scribo::cpu {

template <class Vector>
struct IntegersOf;
template <>
struct IntegersOf<Float8>
{
    using Type [[gnu::vector_size(32)]] = std::int32_t;
};
template <>
struct IntegersOf<Float16>
{
    using Type [[gnu::vector_size(64)]] = std::int32_t;
};

/// e to the power of x for x from -87 to 88, with a relative error below 3e-7: 2 to the power of a whole number times
/// the Taylor series of the rest, which lies within half of ln 2 around 0.
template <class Vector>
SCRIBO_INLINE Vector exponential(const Vector& x)
{
    using Integers = typename IntegersOf<Vector>::Type;
    // Adding 1.5 * 2^23 leaves the nearest whole number in the last bits.
    constexpr float rounder = 12582912.0F;
    const Vector shifted = x * 1.44269504F + rounder;
    const Vector whole = shifted - rounder;
    // ln 2 in two parts, of which the first times a whole number is exact.
    const Vector rest = (x - whole * 0.693359375F) + whole * 2.12194440e-4F;
    Vector sum = splat<Vector>(1.0F / 720);
    sum = sum * rest + 1.0F / 120;
    sum = sum * rest + 1.0F / 24;
    sum = sum * rest + 1.0F / 6;
    sum = sum * rest + 0.5F;
    sum = sum * rest + 1.0F;
    sum = sum * rest + 1.0F;
    // The whole number goes to the exponent.
    Integers bits;
    std::memcpy(&bits, &shifted, sizeof bits);
    bits = (bits << 23) + 0x3F800000;
    Vector scale;
    std::memcpy(&scale, &bits, sizeof scale);
    return sum * scale;
}

/// 1 / (1 + e^-x), with an error below 2e-7.
template <class Vector>
SCRIBO_INLINE Vector sigmoid(const Vector& x)
{
    const Vector least = splat<Vector>(-87.0F);
    const Vector most = splat<Vector>(87.0F);
    const Vector inside = larger(x, least);
    return 1.0F / (1.0F + exponential(Vector(-(inside > most ? most : inside))));
}

/// With an error below 4e-7.
template <class Vector>
SCRIBO_INLINE Vector tangens(const Vector& x)
{
    return 2.0F * sigmoid(Vector(2.0F * x)) - 1.0F;
}

} // namespace scribo::cpu
