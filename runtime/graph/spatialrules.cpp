#include "poolwindow.h"
#include "rules.h"

#include <algorithm>

namespace scribo::cpu {

bool inferConvolution(Rule& rule)
{
    const auto& convolution = *rule.operation.kind_as_Convolution();
    const Shape& data = rule.operand(0).shape;
    const Shape& weights = rule.operand(1).shape;
    if (!rule.needFloats(0) || !rule.needFloats(1) || (rule.input(2) && !rule.needFloats(2))) {
        return false;
    }
    const std::int64_t groups = convolution.groups();
    if (data.size() != 4 || weights.size() != 4 || data[1] % groups != 0 || weights[0] % groups != 0
        || weights[1] != data[1] / groups) {
        return rule.fail("weights of " + toString(weights) + " in " + std::to_string(groups) + " group(s) do not fit "
            + toString(data));
    }
    if (rule.input(2) && rule.input(2)->shape != Shape{weights[0]}) {
        return rule.fail("a bias of " + toString(rule.input(2)->shape) + " does not fit " + toString(weights));
    }
    Shape result = {data[0], weights[0], 0, 0};
    for (flatbuffers::uoffset_t i = 0; i < 2; ++i) {
        const std::int64_t reach = (weights[2 + i] - 1) * convolution.dilations()->Get(i) + 1;
        const std::int64_t room = data[2 + i] + convolution.pads()->Get(i) + convolution.pads()->Get(2 + i) - reach;
        if (room < 0) {
            return rule.fail("a kernel of " + toString(weights) + " is larger than its input of " + toString(data));
        }
        result[2 + i] = room / convolution.strides()->Get(i) + 1;
    }
    return rule.setFloats(0, result);
}

bool inferPooling(Rule& rule)
{
    if (!rule.needFloats()) {
        return false;
    }
    const Shape& data = rule.operand(0).shape;
    if (data.size() != 4) {
        return rule.fail("it cannot pool " + toString(data));
    }
    Shape result = {data[0], data[1], 0, 0};
    for (int i = 0; i < 2; ++i) {
        const PoolWindow window = poolWindow(*rule.operation.kind_as_Pooling(), i);
        if (window.padBefore >= window.kernel || window.padAfter >= window.kernel) {
            return rule.fail("a padding as wide as the kernel leaves windows without input");
        }
        const std::int64_t extent = window.results(data[static_cast<std::size_t>(2 + i)]);
        if (extent < 1) {
            return rule.fail("its kernel is larger than its input of " + toString(data));
        }
        result[static_cast<std::size_t>(2 + i)] = extent;
    }
    return rule.setFloats(0, result);
}

bool inferReduction(Rule& rule)
{
    const auto& reduction = *rule.operation.kind_as_Reduction();
    if (!rule.needFloats()) {
        return false;
    }
    const Value& data = rule.operand(0);
    if (!reduction.axes() || reduction.axes()->size() == 0) {
        return rule.fail("it has no axes");
    }
    std::vector<bool> reduced(data.shape.size(), false);
    for (int given : *reduction.axes()) {
        const int axis = normalAxis(given, data.rank());
        if (axis < 0 || reduced[static_cast<std::size_t>(axis)]) {
            return rule.fail("axis " + std::to_string(given) + " of " + toString(data.shape) + " does not exist");
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

bool inferResize(Rule& rule)
{
    if (!rule.needFloats(0) || !rule.needIntegers(1)) {
        return false;
    }
    const Shape& data = rule.operand(0).shape;
    const Shape& result = rule.operand(1).integers;
    if (data.size() != 4 || result.size() != 4 || result[0] != data[0] || result[1] != data[1]
        || (result[2] == 1 && data[2] > 1) || (result[3] == 1 && data[3] > 1)) {
        return rule.fail(toString(data) + " cannot be resized to " + toString(result));
    }
    return rule.setFloats(0, result, rule.operand(0).uniform);
}

} // namespace scribo::cpu
