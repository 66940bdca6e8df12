#include "value.h"

#include <algorithm>

namespace scribo::cpu {

std::int64_t countElements(const Shape& shape)
{
    std::int64_t count = 1;
    for (std::int64_t extent : shape) {
        if (extent < 0 || __builtin_mul_overflow(count, extent, &count) || count > maximumElements) {
            return -1;
        }
    }
    return count;
}

std::int64_t countRange(const Shape& shape, int first, int last)
{
    std::int64_t count = 1;
    for (int axis = first; axis < last; ++axis) {
        count *= shape[static_cast<std::size_t>(axis)];
    }
    return count;
}

Shape denseStrides(const Shape& shape)
{
    Shape strides(shape.size());
    std::int64_t stride = 1;
    for (std::size_t axis = shape.size(); axis-- > 0;) {
        strides[axis] = stride;
        stride *= shape[axis];
    }
    return strides;
}

Shape broadcastStrides(const Shape& shape, const Shape& target)
{
    const Shape dense = denseStrides(shape);
    const std::size_t added = target.size() - shape.size();
    Shape strides(target.size(), 0);
    for (std::size_t axis = 0; axis < shape.size(); ++axis) {
        strides[added + axis] = shape[axis] == 1 ? 0 : dense[axis];
    }
    return strides;
}

std::optional<Shape> broadcastShapes(const Shape& a, const Shape& b)
{
    const Shape& longer = a.size() >= b.size() ? a : b;
    const Shape& shorter = a.size() >= b.size() ? b : a;
    Shape result = longer;
    const std::size_t added = longer.size() - shorter.size();
    for (std::size_t axis = 0; axis < shorter.size(); ++axis) {
        std::int64_t& extent = result[added + axis];
        if (extent == 1) {
            extent = shorter[axis];
        } else if (shorter[axis] != 1 && shorter[axis] != extent) {
            return std::nullopt;
        }
    }
    return result;
}

std::string toString(const Shape& shape)
{
    std::string text;
    for (std::int64_t extent : shape) {
        text += (text.empty() ? "" : "x") + std::to_string(extent);
    }
    return text.empty() ? "()" : text;
}

int normalAxis(std::int64_t axis, int rank)
{
    if (axis < -rank || axis >= rank) {
        return -1;
    }
    return static_cast<int>(axis < 0 ? axis + rank : axis);
}

} // namespace scribo::cpu
