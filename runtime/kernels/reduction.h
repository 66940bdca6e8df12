#pragma once

#include <cstdint>

namespace scribo::cpu {

/// Joins `count` floats, `fromStep` apart, to a result: to one element of it (`toStep` 0) or element by element.
using JoinRow = void (*)(const float* from, std::int64_t fromStep, float* to, std::int64_t toStep, std::int64_t count);

/// The larger of both.
void joinMaximum(const float* from, std::int64_t fromStep, float* to, std::int64_t toStep, std::int64_t count);
/// The sum of both.
void joinSum(const float* from, std::int64_t fromStep, float* to, std::int64_t toStep, std::int64_t count);

} // namespace scribo::cpu
