#pragma once

#include "engine_generated.h"

#include <algorithm>
#include <cmath>

namespace scribo::cpu {

/// The elementwise functions on one number, for both the shape arithmetic and the run.

inline float applyUnary(format::UnaryKind kind, float x)
{
    switch (kind) {
    case format::UnaryKind::Sqrt:
        return std::sqrt(x);
    case format::UnaryKind::Exp:
        return std::exp(x);
    case format::UnaryKind::Log:
        return std::log(x);
    case format::UnaryKind::Negate:
        return -x;
    case format::UnaryKind::Absolute:
        return std::fabs(x);
    case format::UnaryKind::Reciprocal:
        return 1.0F / x;
    case format::UnaryKind::Erf:
        return std::erf(x);
    case format::UnaryKind::Floor:
        return std::floor(x);
    case format::UnaryKind::Ceil:
        return std::ceil(x);
    }
    return x;
}

inline float applyBinary(format::BinaryKind kind, float a, float b)
{
    switch (kind) {
    case format::BinaryKind::Add:
        return a + b;
    case format::BinaryKind::Subtract:
        return a - b;
    case format::BinaryKind::Multiply:
        return a * b;
    case format::BinaryKind::Divide:
        return a / b;
    case format::BinaryKind::Power:
        return std::pow(a, b);
    case format::BinaryKind::Maximum:
        return std::max(a, b);
    case format::BinaryKind::Minimum:
        return std::min(a, b);
    }
    return a;
}

} // namespace scribo::cpu
