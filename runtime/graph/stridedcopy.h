#pragma once

#include "value.h"

#include <algorithm>

namespace scribo::cpu {

/// A copy between two tensors, each walked with its own strides (in elements). The common form of
/// everything that only moves values: slices, concatenations, broadcasts, padding.
struct StridedCopy
{
    Shape extents;
    std::int64_t fromOffset = 0;
    Shape fromStrides;
    std::int64_t toOffset = 0;
    Shape toStrides;
};

/// Calls `row(fromPosition, toPosition)` for every row along the last axis, in row-major order.
template <class Row>
void forEachRow(const StridedCopy& copy, Row row)
{
    const int outer = static_cast<int>(copy.extents.size()) - 1;
    Shape index(copy.extents.size(), 0);
    std::int64_t from = copy.fromOffset;
    std::int64_t to = copy.toOffset;
    if (std::find(copy.extents.begin(), copy.extents.end(), 0) != copy.extents.end()) {
        return;
    }
    for (;;) {
        row(from, to);
        int axis = outer - 1;
        for (; axis >= 0; --axis) {
            const auto i = static_cast<std::size_t>(axis);
            from += copy.fromStrides[i];
            to += copy.toStrides[i];
            if (++index[i] < copy.extents[i]) {
                break;
            }
            from -= copy.fromStrides[i] * index[i];
            to -= copy.toStrides[i] * index[i];
            index[i] = 0;
        }
        if (axis < 0) {
            return;
        }
    }
}

/// Carries out `copy`. The two sides do not overlap.
template <class Number>
void copyStrided(const StridedCopy& copy, const Number* from, Number* to)
{
    if (copy.extents.empty()) {
        to[copy.toOffset] = from[copy.fromOffset];
        return;
    }
    const std::int64_t count = copy.extents.back();
    const std::int64_t fromStep = copy.fromStrides.back();
    const std::int64_t toStep = copy.toStrides.back();
    forEachRow(copy, [&](std::int64_t fromPosition, std::int64_t toPosition) {
        const Number* source = from + fromPosition;
        Number* destination = to + toPosition;
        if (fromStep == 1 && toStep == 1) {
            std::copy_n(source, count, destination);
            return;
        }
        for (std::int64_t i = 0; i < count; ++i) {
            destination[i * toStep] = source[i * fromStep];
        }
    });
}

} // namespace scribo::cpu
