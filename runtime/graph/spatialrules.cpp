#include "attributes.h"
#include "operationtable.h"
#include "poolwindow.h"

#include <algorithm>

namespace scribo::cpu {

bool isSoundConvolution(const format::Operation& operation)
{
    const auto& convolution = *operation.kind_as_Convolution();
    return isWindowList(convolution.strides(), 2, 1) && isWindowList(convolution.pads(), 4, 0)
        && isWindowList(convolution.dilations(), 2, 1) && convolution.groups() >= 1
        && isKnown(convolution.activation());
}

/// Every element of the result is the sum over one filter.
std::int64_t countConvolution(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    const Shape& weights = inputShape(operation, shapes, 1);
    return weights.empty() || weights[0] == 0
        ? 0
        : countElements(resultShape(operation, shapes)) * (countElements(weights) / weights[0]);
}

std::string showConvolution(const format::Operation& operation)
{
    const auto& convolution = *operation.kind_as_Convolution();
    Details details;
    details.addUnless("strides", convolution.strides(), 1)
        .addUnless("pads", convolution.pads(), 0)
        .addUnless("dilations", convolution.dilations(), 1);
    if (convolution.groups() != 1) {
        details.add("groups " + std::to_string(convolution.groups()));
    }
    return details.addActivation(convolution.activation()).text;
}

Result<void> inferConvolution(Rule& rule)
{
    const auto& convolution = *rule.operation.kind_as_Convolution();
    const Shape& data = rule.operand(0).shape;
    const Shape& weights = rule.operand(1).shape;
    if (Result<void> sound = rule.needFloats({0, 1, 2}); !sound) {
        return sound;
    }
    const std::int64_t groups = convolution.groups();
    if (data.size() != 4 || weights.size() != 4 || data[1] % groups != 0 || weights[0] % groups != 0
        || weights[1] != data[1] / groups) {
        return failure("weights of " + toString(weights) + " in " + std::to_string(groups) + " group(s) do not fit "
            + toString(data));
    }
    if (rule.input(2) && rule.input(2)->shape != Shape{weights[0]}) {
        return failure("a bias of " + toString(rule.input(2)->shape) + " does not fit " + toString(weights));
    }
    Shape result = {data[0], weights[0], 0, 0};
    for (flatbuffers::uoffset_t i = 0; i < 2; ++i) {
        const std::int64_t reach = (weights[2 + i] - 1) * convolution.dilations()->Get(i) + 1;
        const std::int64_t room = data[2 + i] + convolution.pads()->Get(i) + convolution.pads()->Get(2 + i) - reach;
        if (room < 0) {
            return failure("a kernel of " + toString(weights) + " is larger than its input of " + toString(data));
        }
        result[2 + i] = room / convolution.strides()->Get(i) + 1;
    }
    return rule.setFloats(0, result);
}

bool isSoundPooling(const format::Operation& operation)
{
    const auto& pooling = *operation.kind_as_Pooling();
    return isKnown(pooling.kind()) && isWindowList(pooling.kernel(), 2, 1) && isWindowList(pooling.strides(), 2, 1)
        && isWindowList(pooling.pads(), 4, 0);
}

std::string showPooling(const format::Operation& operation)
{
    const auto& pooling = *operation.kind_as_Pooling();
    Details details;
    details.add(format::EnumNamePoolingKind(pooling.kind()))
        .add("kernel " + listText(pooling.kernel()))
        .addUnless("strides", pooling.strides(), 1)
        .addUnless("pads", pooling.pads(), 0);
    return pooling.ceil_mode() ? details.add("ceil").text : details.text;
}

Result<void> inferPooling(Rule& rule)
{
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    const Shape& data = rule.operand(0).shape;
    if (data.size() != 4) {
        return failure("it cannot pool " + toString(data));
    }
    Shape result = {data[0], data[1], 0, 0};
    for (int i = 0; i < 2; ++i) {
        const PoolWindow window = poolWindow(*rule.operation.kind_as_Pooling(), i);
        if (window.padBefore >= window.kernel || window.padAfter >= window.kernel) {
            return failure("a padding as wide as the kernel leaves windows without input");
        }
        const std::int64_t extent = window.results(data[static_cast<std::size_t>(2 + i)]);
        if (extent < 1) {
            return failure("its kernel is larger than its input of " + toString(data));
        }
        result[static_cast<std::size_t>(2 + i)] = extent;
    }
    return rule.setFloats(0, result);
}

bool isSoundReduction(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Reduction()->kind());
}

std::string showReduction(const format::Operation& operation)
{
    const auto& reduction = *operation.kind_as_Reduction();
    return format::EnumNameReductionKind(reduction.kind()) + (" over " + listText(reduction.axes()));
}

Result<void> inferReduction(Rule& rule)
{
    const auto& reduction = *rule.operation.kind_as_Reduction();
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    const Value& data = rule.operand(0);
    if (!reduction.axes() || reduction.axes()->size() == 0) {
        return failure("it has no axes");
    }
    std::vector<bool> reduced(data.shape.size(), false);
    for (int given : *reduction.axes()) {
        const int axis = normalAxis(given, data.rank());
        if (axis < 0 || reduced[static_cast<std::size_t>(axis)]) {
            return failure("axis " + std::to_string(given) + " of " + toString(data.shape) + " does not exist");
        }
        reduced[static_cast<std::size_t>(axis)] = true;
    }
    Shape result;
    for (std::size_t axis = 0; axis < data.shape.size(); ++axis) {
        if (!reduced[axis]) {
            result.push_back(data.shape[axis]);
        } else if (reduction.keep_dims()) {
            result.push_back(1);
        }
    }
    return rule.setFloats(0, result);
}

Result<void> inferResize(Rule& rule)
{
    if (Result<void> sound = rule.needFloats({0}).and_then([&] { return rule.needIntegers({1}); }); !sound) {
        return sound;
    }
    const Shape& data = rule.operand(0).shape;
    const Shape& result = rule.operand(1).integers;
    if (data.size() != 4 || result.size() != 4 || result[0] != data[0] || result[1] != data[1]
        || (result[2] == 1 && data[2] > 1) || (result[3] == 1 && data[3] > 1)) {
        return failure(toString(data) + " cannot be resized to " + toString(result));
    }
    return rule.setFloats(0, result, rule.operand(0).uniform);
}

std::string showGridSample(const format::Operation& operation)
{
    const auto& sample = *operation.kind_as_GridSample();
    Details details;
    details.add(sample.border() ? "beyond it its border" : "beyond it zeros");
    return sample.align_corners() ? details.add("corners aligned").text : details.text;
}

Result<void> inferGridSample(Rule& rule)
{
    if (Result<void> sound = rule.needFloats({0, 1}); !sound) {
        return sound;
    }
    const Shape& data = rule.operand(0).shape;
    const Shape& grid = rule.operand(1).shape;
    if (data.size() != 4 || grid.size() != 4 || grid[0] != data[0] || grid[3] != 2) {
        return failure("a grid of " + toString(grid) + " does not fit " + toString(data));
    }
    return rule.setFloats(0, {data[0], data[1], grid[1], grid[2]});
}

} // namespace scribo::cpu
