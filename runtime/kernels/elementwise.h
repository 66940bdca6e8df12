#pragma once

#include <cstdint>

namespace scribo::cpu {

/// `function(a, b)` along a row, each operand read with its own step.
template <class Function>
void combineRow(Function function, const float* a, std::int64_t aStep, const float* b, std::int64_t bStep,
    float* result, std::int64_t count)
{
    // The common steps apart, so that the compiler can make vectors of them.
    if (aStep == 1 && bStep == 1) {
        for (std::int64_t i = 0; i < count; ++i) {
            result[i] = function(a[i], b[i]);
        }
    } else if (aStep == 1 && bStep == 0) {
        for (std::int64_t i = 0; i < count; ++i) {
            result[i] = function(a[i], *b);
        }
    } else {
        for (std::int64_t i = 0; i < count; ++i) {
            result[i] = function(a[i * aStep], b[i * bStep]);
        }
    }
}

/// `function` of each of `count` floats.
template <class Function>
void mapRow(Function function, const float* source, float* result, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i) {
        result[i] = function(source[i]);
    }
}

} // namespace scribo::cpu
