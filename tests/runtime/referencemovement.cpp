#include "reference.h"

#include "referenceshapes.h"

namespace scribo::test::reference {

Array transpose(const std::vector<int>& permutation, const Array& data)
{
    Shape shape;
    for (int axis : permutation) {
        shape.push_back(data.shape[static_cast<std::size_t>(axis)]);
    }
    Array result = Array::zeros(shape);
    forEachIndex(shape, [&](const Shape& index) {
        Shape from(index.size());
        for (std::size_t i = 0; i < index.size(); ++i) {
            from[static_cast<std::size_t>(permutation[i])] = index[i];
        }
        result.at(index) = data.at(from);
    });
    return result;
}

Array concat(int axis, const std::vector<Array>& parts)
{
    const std::size_t along = normal(axis, parts[0].shape);
    Shape shape = parts[0].shape;
    shape[along] = 0;
    for (const Array& part : parts) {
        shape[along] += part.shape[along];
    }
    Array result = Array::zeros(shape);
    std::int64_t offset = 0;
    for (const Array& part : parts) {
        forEachIndex(part.shape, [&](const Shape& index) {
            Shape to = index;
            to[along] += offset;
            result.at(to) = part.at(index);
        });
        offset += part.shape[along];
    }
    return result;
}

Array gather(int axis, const Array& data, const Shape& indexShape, const std::vector<std::int64_t>& indices)
{
    const std::size_t along = normal(axis, data.shape);
    const auto front = static_cast<std::ptrdiff_t>(along);
    Shape shape(data.shape.begin(), data.shape.begin() + front);
    shape.insert(shape.end(), indexShape.begin(), indexShape.end());
    shape.insert(shape.end(), data.shape.begin() + front + 1, data.shape.end());
    Array result = Array::zeros(shape);
    const auto rank = static_cast<std::ptrdiff_t>(indexShape.size());
    forEachIndex(shape, [&](const Shape& index) {
        std::int64_t position = 0;
        for (std::ptrdiff_t i = 0; i < rank; ++i) {
            position = position * indexShape[static_cast<std::size_t>(i)] + index[along + static_cast<std::size_t>(i)];
        }
        const std::int64_t chosen = indices[static_cast<std::size_t>(position)];
        Shape from(index.begin(), index.begin() + front);
        from.push_back(chosen < 0 ? chosen + data.shape[along] : chosen);
        from.insert(from.end(), index.begin() + front + rank, index.end());
        result.at(index) = data.at(from);
    });
    return result;
}

Array slice(const Array& data, int axis, std::int64_t start, std::int64_t count, std::int64_t step)
{
    const std::size_t along = normal(axis, data.shape);
    Shape shape = data.shape;
    shape[along] = count;
    Array result = Array::zeros(shape);
    forEachIndex(shape, [&](const Shape& index) {
        Shape from = index;
        from[along] = start + index[along] * step;
        result.at(index) = data.at(from);
    });
    return result;
}

Array expand(const Array& data, const Shape& shape)
{
    Array result = Array::zeros(broadcast(data.shape, shape));
    forEachIndex(
        result.shape, [&](const Shape& index) { result.at(index) = data.at(broadcastIndex(data.shape, index)); });
    return result;
}

Array pad(const format::PadT& pad, const Array& data)
{
    Shape shape = data.shape;
    for (std::size_t axis = 0; axis < shape.size(); ++axis) {
        shape[axis] += pad.begin[axis] + pad.end[axis];
    }
    Array result = Array::zeros(shape);
    std::fill(result.data.begin(), result.data.end(), pad.value);
    forEachIndex(data.shape, [&](const Shape& index) {
        Shape to = index;
        for (std::size_t axis = 0; axis < to.size(); ++axis) {
            to[axis] += pad.begin[axis];
        }
        result.at(to) = data.at(index);
    });
    return result;
}

} // namespace scribo::test::reference
