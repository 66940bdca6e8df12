#include "attributes.h"
#include "operationtable.h"

#include "format/network.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace scribo::cpu {

namespace {

tl::unexpected<Error> tooLarge(const Shape& shape)
{
    return failure("its result of " + toString(shape) + " is too large");
}

tl::unexpected<Error> noAxis(std::int64_t axis, const Shape& shape)
{
    return failure("axis " + std::to_string(axis) + " of " + toString(shape) + " does not exist");
}

} // namespace

std::string showTranspose(const format::Operation& operation)
{
    return listText(operation.kind_as_Transpose()->permutation());
}

Result<Movement> moveTranspose(const Node& node)
{
    const auto* permutation = node.operation.kind_as_Transpose()->permutation();
    const Shape& data = node.operand(0).shape;
    std::vector<bool> seen(data.size(), false);
    if ((permutation ? permutation->size() : 0) != data.size()) {
        return failure("its permutation does not fit " + toString(data));
    }
    const Shape dense = denseStrides(data);
    Shape result;
    Shape strides;
    for (flatbuffers::uoffset_t i = 0; i < data.size(); ++i) {
        const int from = permutation->Get(i);
        if (from < 0 || static_cast<std::size_t>(from) >= data.size() || seen[static_cast<std::size_t>(from)]) {
            return failure("its permutation does not fit " + toString(data));
        }
        seen[static_cast<std::size_t>(from)] = true;
        result.push_back(data[static_cast<std::size_t>(from)]);
        strides.push_back(dense[static_cast<std::size_t>(from)]);
    }
    return Movement{{result}, {{0, 0, {result, 0, strides, 0, denseStrides(result)}}}};
}

std::string showConcat(const format::Operation& operation)
{
    return "axis " + std::to_string(operation.kind_as_Concat()->axis());
}

Result<Movement> moveConcat(const Node& node)
{
    const int given = node.operation.kind_as_Concat()->axis();
    const Value& first = node.operand(0);
    const int axis = normalAxis(given, first.rank());
    if (axis < 0) {
        return noAxis(given, first.shape);
    }
    Shape result = first.shape;
    std::int64_t& total = result[static_cast<std::size_t>(axis)];
    total = 0;
    for (std::size_t i = 0; i < node.inputCount(); ++i) {
        const Value& value = node.operand(i);
        Shape like = value.shape;
        if (like.size() == result.size()) {
            total += like[static_cast<std::size_t>(axis)];
            like[static_cast<std::size_t>(axis)] = total;
        }
        if (value.type != first.type || like != result || countElements(result) < 0) {
            return failure(toString(value.shape) + " cannot be put behind " + toString(first.shape));
        }
    }
    const std::int64_t outer = countRange(result, 0, axis);
    const std::int64_t row = countRange(result, axis, static_cast<int>(result.size()));
    Movement movement{{result}};
    std::int64_t position = 0;
    for (std::size_t i = 0; i < node.inputCount(); ++i) {
        const Shape& shape = node.operand(i).shape;
        const std::int64_t length = countRange(shape, axis, static_cast<int>(shape.size()));
        movement.parts.push_back({i, 0, {{outer, length}, 0, {length, 1}, position, {row, 1}}});
        position += length;
    }
    return movement;
}

bool isSoundSplit(const format::Operation& operation)
{
    const auto& split = *operation.kind_as_Split();
    return split.sizes() && isAligned(split.sizes());
}

std::string showSplit(const format::Operation& operation)
{
    const auto& split = *operation.kind_as_Split();
    return "axis " + std::to_string(split.axis()) + " into " + listText(split.sizes());
}

Result<Movement> moveSplit(const Node& node)
{
    const auto& split = *node.operation.kind_as_Split();
    const Value& data = node.operand(0);
    const int axis = normalAxis(split.axis(), data.rank());
    if (axis < 0) {
        return noAxis(split.axis(), data.shape);
    }
    if (split.sizes()->size() != node.outputCount()) {
        return failure("it has " + std::to_string(node.outputCount()) + " outputs for "
            + std::to_string(split.sizes()->size()) + " parts");
    }
    const std::int64_t outer = countRange(data.shape, 0, axis);
    const std::int64_t inner = countRange(data.shape, axis + 1, data.rank());
    std::int64_t left = data.shape[static_cast<std::size_t>(axis)];
    const std::int64_t row = left * inner;
    Movement movement;
    for (std::size_t i = 0; i < node.outputCount(); ++i) {
        const std::int64_t size = split.sizes()->Get(static_cast<flatbuffers::uoffset_t>(i));
        if (size < 0 || size > left) {
            return failure("its parts do not add up to " + toString(data.shape));
        }
        Shape result = data.shape;
        result[static_cast<std::size_t>(axis)] = size;
        movement.results.push_back(result);
        movement.parts.push_back({0, i, {{outer, size * inner}, row - left * inner, {row, 1}, 0, {size * inner, 1}}});
        left -= size;
    }
    if (left != 0) {
        return failure("its parts do not add up to " + toString(data.shape));
    }
    return movement;
}

std::string showGather(const format::Operation& operation)
{
    return "axis " + std::to_string(operation.kind_as_Gather()->axis());
}

Result<Movement> moveGather(const Node& node)
{
    const int given = node.operation.kind_as_Gather()->axis();
    const Value& data = node.operand(0);
    const Value& indices = node.operand(1);
    const int axis = normalAxis(given, data.rank());
    if (axis < 0) {
        return noAxis(given, data.shape);
    }
    if (!indices.isInteger()) {
        return failure("its indices are not integers");
    }
    Shape result(data.shape.begin(), data.shape.begin() + axis);
    result.insert(result.end(), indices.shape.begin(), indices.shape.end());
    result.insert(result.end(), data.shape.begin() + axis + 1, data.shape.end());
    if (countElements(result) < 0) {
        return tooLarge(result);
    }
    const std::int64_t extent = data.shape[static_cast<std::size_t>(axis)];
    const std::int64_t outer = countRange(data.shape, 0, axis);
    const std::int64_t inner = countRange(data.shape, axis + 1, data.rank());
    const auto count = static_cast<std::int64_t>(indices.integers.size());
    Movement movement{{result}};
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t index = indices.integers[static_cast<std::size_t>(i)];
        if (index < -extent || index >= extent) {
            return failure("index " + std::to_string(index) + " lies outside " + toString(data.shape));
        }
        const std::int64_t from = (index < 0 ? index + extent : index) * inner;
        movement.parts.push_back({0, 0, {{outer, inner}, from, {extent * inner, 1}, i * inner, {count * inner, 1}}});
    }
    return movement;
}

namespace {

/// Where a slice starts and how many elements it takes along an axis of `extent`, with the limits
/// cut to the axis as ONNX does.
struct AxisSlice
{
    std::int64_t start;
    std::int64_t count;
};

AxisSlice cutSlice(std::int64_t start, std::int64_t end, std::int64_t step, std::int64_t extent)
{
    const auto cut = [extent](std::int64_t position, std::int64_t low, std::int64_t high) {
        return std::clamp(position < 0 ? position + extent : position, low, high);
    };
    if (extent == 0) {
        return {0, 0};
    }
    if (step > 0) {
        start = cut(start, 0, extent);
        end = cut(end, 0, extent);
        return {start, end > start ? (end - start - 1) / step + 1 : 0};
    }
    start = cut(start, 0, extent - 1);
    end = cut(end, -1, extent - 1);
    return {start, start > end ? (start - end - 1) / -step + 1 : 0};
}

} // namespace

Result<Movement> moveSlice(const Node& node)
{
    const Value& data = node.operand(0);
    if (const Result<void> sound = node.needIntegers({1, 2, 3, 4}); !sound) {
        return tl::unexpected(sound.error());
    }
    const std::vector<std::int64_t>& starts = node.operand(1).integers;
    const std::vector<std::int64_t>& ends = node.operand(2).integers;
    std::vector<std::int64_t> axes(starts.size());
    std::iota(axes.begin(), axes.end(), 0);
    axes = node.input(3) ? node.input(3)->integers : axes;
    const std::vector<std::int64_t> steps
        = node.input(4) ? node.input(4)->integers : std::vector<std::int64_t>(starts.size(), 1);
    if (ends.size() != starts.size() || axes.size() != starts.size() || steps.size() != starts.size()) {
        return failure("its starts, ends, axes and steps are not equally many");
    }
    const Shape dense = denseStrides(data.shape);
    StridedCopy copy = {data.shape, 0, dense, 0, {}};
    std::vector<bool> seen(data.shape.size(), false);
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const int axis = normalAxis(axes[i], data.rank());
        const auto position = static_cast<std::size_t>(std::max(axis, 0));
        // The most negative step has no opposite.
        if (axis < 0 || seen[position] || steps[i] == 0 || steps[i] == std::numeric_limits<std::int64_t>::min()) {
            return failure(
                "it slices an axis that does not exist in " + toString(data.shape) + ", or one twice, or with step 0");
        }
        seen[position] = true;
        const AxisSlice slice = cutSlice(starts[i], ends[i], steps[i], data.shape[position]);
        copy.extents[position] = slice.count;
        copy.fromOffset += slice.count > 0 ? slice.start * dense[position] : 0;
        // A step that is never taken may be too large to multiply.
        copy.fromStrides[position] = slice.count > 1 ? steps[i] * dense[position] : 0;
    }
    copy.toStrides = denseStrides(copy.extents);
    return Movement{{copy.extents}, {{0, 0, copy}}};
}

Result<Movement> moveExpand(const Node& node)
{
    if (!node.operand(1).isInteger() || !node.needIntegers({1})) {
        return failure("its shape is not a list of integers");
    }
    const Value& data = node.operand(0);
    const std::optional<Shape> result = broadcastShapes(data.shape, node.operand(1).integers);
    if (!result) {
        return failure(toString(data.shape) + " cannot be made " + toString(node.operand(1).integers));
    }
    if (result->size() > format::maximumRank || countElements(*result) < 0) {
        return tooLarge(*result);
    }
    return Movement{{*result}, {{0, 0, {*result, 0, broadcastStrides(data.shape, *result), 0, denseStrides(*result)}}}};
}

bool isSoundPad(const format::Operation& operation)
{
    return isAligned(operation.kind_as_Pad()->begin()) && isAligned(operation.kind_as_Pad()->end());
}

Result<Movement> movePad(const Node& node)
{
    const auto& pad = *node.operation.kind_as_Pad();
    const Shape& data = node.operand(0).shape;
    if ((pad.begin() ? pad.begin()->size() : 0) != data.size() || (pad.end() ? pad.end()->size() : 0) != data.size()) {
        return failure("its padding does not fit " + toString(data));
    }
    Shape result = data;
    for (flatbuffers::uoffset_t i = 0; i < data.size(); ++i) {
        const std::int64_t begin = pad.begin()->Get(i);
        const std::int64_t end = pad.end()->Get(i);
        if (begin < 0 || end < 0 || begin > maximumElements || end > maximumElements) {
            return failure("a padding of " + std::to_string(begin) + " and " + std::to_string(end) + " makes no sense");
        }
        result[i] += begin + end;
    }
    if (countElements(result) < 0) {
        return tooLarge(result);
    }
    StridedCopy copy = {data, 0, denseStrides(data), 0, denseStrides(result)};
    for (flatbuffers::uoffset_t i = 0; i < data.size(); ++i) {
        copy.toOffset += pad.begin()->Get(i) * copy.toStrides[i];
    }
    return Movement{{result}, {{0, 0, std::move(copy)}}, pad.value()};
}

} // namespace scribo::cpu
