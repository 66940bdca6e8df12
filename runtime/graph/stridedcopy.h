#pragma once

#include "stridedwalk.h"

namespace scribo::cpu {

/// A copy between two tensors, each walked with its own strides. The common form of everything that
/// only moves values: slices, concatenations, broadcasts, padding.
struct StridedCopy
{
    Shape extents;
    std::int64_t fromOffset = 0;
    Shape fromStrides;
    std::int64_t toOffset = 0;
    Shape toStrides;

    bool isEmpty() const { return std::find(extents.begin(), extents.end(), 0) != extents.end(); }
    /// Of a copy that is not empty.
    StridedWalk<2> walk() const
    {
        return collapsed(StridedWalk<2>{extents, {fromStrides, toStrides}, {fromOffset, toOffset}});
    }
};

/// Carries out the walk of a copy. The two sides do not overlap.
template <class Number>
void copyStrided(const StridedWalk<2>& walk, const Number* from, Number* to)
{
    const std::int64_t length = walk.rowLength();
    const std::int64_t fromStep = walk.rowStep(0);
    const std::int64_t toStep = walk.rowStep(1);
    forEachRow(walk, [&](const auto& positions) {
        const Number* source = from + positions[0];
        Number* destination = to + positions[1];
        if (fromStep == 1 && toStep == 1) {
            std::copy_n(source, length, destination);
            return;
        }
        for (std::int64_t i = 0; i < length; ++i) {
            destination[i * toStep] = source[i * fromStep];
        }
    });
}

/// Carries out a copy that is made once.
template <class Number>
void copyStrided(const StridedCopy& copy, const Number* from, Number* to)
{
    if (!copy.isEmpty()) {
        copyStrided(copy.walk(), from, to);
    }
}

} // namespace scribo::cpu
