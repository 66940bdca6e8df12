#pragma once

#include <cstdint>

namespace scribo::cpu {

/// Brings `count` floats to mean 0 and variance 1 (plus `epsilon`), then scales and shifts each by its own number;
/// `shift` may be null.
void normaliseRow(
    const float* source, const float* scale, const float* shift, float epsilon, float* result, std::int64_t count);

/// `count` floats times `scale` plus `shift`.
void scaleRow(const float* source, float scale, float shift, float* result, std::int64_t count);

} // namespace scribo::cpu
