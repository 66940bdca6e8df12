#include "reduction.h"

#include <algorithm>

namespace scribo::cpu {

void joinMaximum(const float* from, std::int64_t fromStep, float* to, std::int64_t toStep, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i) {
        to[i * toStep] = std::max(to[i * toStep], from[i * fromStep]);
    }
}

void joinSum(const float* from, std::int64_t fromStep, float* to, std::int64_t toStep, std::int64_t count)
{
    if (toStep == 0) {
        // Long sums of floats lose digits that a double keeps.
        double sum = 0;
        for (std::int64_t i = 0; i < count; ++i) {
            sum += static_cast<double>(from[i * fromStep]);
        }
        *to += static_cast<float>(sum);
        return;
    }
    for (std::int64_t i = 0; i < count; ++i) {
        to[i * toStep] += from[i * fromStep];
    }
}

} // namespace scribo::cpu
