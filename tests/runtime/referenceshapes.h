#pragma once

#include "array.h"

#include <algorithm>

/// Indices and shapes as the definitions in reference.h need them.
namespace scribo::test::reference {

/// Where element `index` of a broadcast result comes from in an operand of `shape`.
inline Shape broadcastIndex(const Shape& shape, const Shape& index)
{
    Shape own(index.end() - static_cast<std::ptrdiff_t>(shape.size()), index.end());
    for (std::size_t axis = 0; axis < shape.size(); ++axis) {
        own[axis] = shape[axis] == 1 ? 0 : own[axis];
    }
    return own;
}

inline Shape broadcast(Shape a, Shape b)
{
    const std::size_t rank = std::max(a.size(), b.size());
    a.insert(a.begin(), rank - a.size(), 1);
    b.insert(b.begin(), rank - b.size(), 1);
    for (std::size_t axis = 0; axis < rank; ++axis) {
        a[axis] = std::max(a[axis], b[axis]);
    }
    return a;
}

inline std::size_t normal(int axis, const Shape& shape)
{
    return static_cast<std::size_t>(axis < 0 ? axis + static_cast<int>(shape.size()) : axis);
}

} // namespace scribo::test::reference
