#include "normalisation.h"

#include <cmath>

namespace scribo::cpu {

void normaliseRow(
    const float* source, const float* scale, const float* shift, float epsilon, float* result, std::int64_t count)
{
    double sum = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        sum += static_cast<double>(source[i]);
    }
    const double mean = sum / static_cast<double>(count);
    double squares = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        const double distance = static_cast<double>(source[i]) - mean;
        squares += distance * distance;
    }
    const double variance = squares / static_cast<double>(count);
    const auto factor = static_cast<float>(1.0 / std::sqrt(variance + static_cast<double>(epsilon)));
    const auto centre = static_cast<float>(mean);
    for (std::int64_t i = 0; i < count; ++i) {
        result[i] = (source[i] - centre) * factor * scale[i] + (shift ? shift[i] : 0.0F);
    }
}

void scaleRow(const float* source, float scale, float shift, float* result, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i) {
        result[i] = source[i] * scale + shift;
    }
}

} // namespace scribo::cpu
