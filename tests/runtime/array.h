#pragma once

#include "networkmaker.h"

#include <cstdint>
#include <functional>
#include <numeric>
#include <vector>

namespace scribo::test {

/// Floats with a shape, row-major.
struct Array
{
    Shape shape;
    std::vector<float> data;

    std::int64_t count() const
    {
        return std::accumulate(shape.begin(), shape.end(), std::int64_t(1), std::multiplies<>());
    }
    /// The element at `index`, one number for each axis.
    float& at(const Shape& index) { return data[position(index)]; }
    float at(const Shape& index) const { return data[position(index)]; }

    static Array zeros(const Shape& shape)
    {
        Array array{shape, {}};
        array.data.assign(static_cast<std::size_t>(array.count()), 0.0F);
        return array;
    }

private:
    std::size_t position(const Shape& index) const
    {
        std::int64_t offset = 0;
        for (std::size_t axis = 0; axis < shape.size(); ++axis) {
            offset = offset * shape[axis] + index[axis];
        }
        return static_cast<std::size_t>(offset);
    }
};

/// Calls `visit(index)` for every element of `shape`, in row-major order.
template <class Visit>
void forEachIndex(const Shape& shape, Visit visit)
{
    const std::int64_t total = std::accumulate(shape.begin(), shape.end(), std::int64_t(1), std::multiplies<>());
    Shape index(shape.size(), 0);
    for (std::int64_t i = 0; i < total; ++i) {
        visit(index);
        for (std::size_t axis = shape.size(); axis-- > 0;) {
            if (++index[axis] < shape[axis]) {
                break;
            }
            index[axis] = 0;
        }
    }
}

} // namespace scribo::test
