#pragma once

#include "value.h"

#include <algorithm>
#include <array>

namespace scribo::cpu {

/// A walk over several tensors at once, each with its own strides (in elements) and starting
/// position: the common form of everything that goes from element to element. Extents are 1 or more.
template <std::size_t count>
struct StridedWalk
{
    using Positions = std::array<std::int64_t, count>;

    Shape extents;
    std::array<Shape, count> strides;
    Positions start = {};

    std::int64_t rowLength() const { return extents.back(); }
    /// The distance between neighbours in a row of tensor `i`.
    std::int64_t rowStep(std::size_t i) const { return strides[i].back(); }
};

/// The same walk along as few axes as possible, at least one, so that its rows are long.
template <std::size_t count>
StridedWalk<count> collapsed(const StridedWalk<count>& walk)
{
    StridedWalk<count> result;
    result.start = walk.start;
    // From the innermost axis outwards, reversed at the end.
    for (std::size_t axis = walk.extents.size(); axis-- > 0;) {
        if (walk.extents[axis] == 1) {
            continue;
        }
        bool joins = !result.extents.empty();
        for (std::size_t i = 0; joins && i < count; ++i) {
            joins = walk.strides[i][axis] == result.strides[i].back() * result.extents.back();
        }
        if (joins) {
            result.extents.back() *= walk.extents[axis];
            continue;
        }
        result.extents.push_back(walk.extents[axis]);
        for (std::size_t i = 0; i < count; ++i) {
            result.strides[i].push_back(walk.strides[i][axis]);
        }
    }
    if (result.extents.empty()) {
        result.extents.push_back(1);
        result.strides.fill({0});
    }
    std::reverse(result.extents.begin(), result.extents.end());
    for (Shape& strides : result.strides) {
        std::reverse(strides.begin(), strides.end());
    }
    return result;
}

/// Calls `row(positions)` with where each tensor stands at the start of every row along the last
/// axis, in row-major order. The walk has at least one axis.
template <std::size_t count, class Row>
void forEachRow(const StridedWalk<count>& walk, Row row)
{
    std::array<std::int64_t, 8> index = {};
    auto positions = walk.start;
    for (;;) {
        row(positions);
        std::size_t axis = walk.extents.size() - 1;
        for (;;) {
            if (axis == 0) {
                return;
            }
            --axis;
            for (std::size_t i = 0; i < count; ++i) {
                positions[i] += walk.strides[i][axis];
            }
            if (++index[axis] < walk.extents[axis]) {
                break;
            }
            for (std::size_t i = 0; i < count; ++i) {
                positions[i] -= walk.strides[i][axis] * index[axis];
            }
            index[axis] = 0;
        }
    }
}

} // namespace scribo::cpu
