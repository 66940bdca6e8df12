#include "rules.h"
#include "scalarmath.h"
#include "stridedcopy.h"

#include <limits>

namespace scribo::cpu {

namespace {

using format::BinaryKind;

/// `base` to the power of `exponent` by repeated squaring; false on overflow.
bool integerPower(std::int64_t base, std::int64_t exponent, std::int64_t* result)
{
    *result = 1;
    while (exponent > 0) {
        if (exponent % 2 == 1 && __builtin_mul_overflow(*result, base, result)) {
            return false;
        }
        exponent /= 2;
        if (exponent > 0 && __builtin_mul_overflow(base, base, &base)) {
            return false;
        }
    }
    return exponent == 0;
}

/// False when the result does not exist or does not fit into 64 bits.
bool applyIntegers(BinaryKind kind, std::int64_t a, std::int64_t b, std::int64_t* result)
{
    switch (kind) {
    case BinaryKind::Add:
        return !__builtin_add_overflow(a, b, result);
    case BinaryKind::Subtract:
        return !__builtin_sub_overflow(a, b, result);
    case BinaryKind::Multiply:
        return !__builtin_mul_overflow(a, b, result);
    case BinaryKind::Divide:
        if (b == 0 || (b == -1 && a == std::numeric_limits<std::int64_t>::min())) {
            return false;
        }
        *result = a / b;
        return true;
    case BinaryKind::Power:
        return integerPower(a, b, result);
    case BinaryKind::Maximum:
        *result = std::max(a, b);
        return true;
    case BinaryKind::Minimum:
        *result = std::min(a, b);
        return true;
    }
    return false;
}

/// The integers of `value` repeated to fill `shape`.
std::vector<std::int64_t> spread(const Value& value, const Shape& shape, std::int64_t count)
{
    std::vector<std::int64_t> result(static_cast<std::size_t>(count));
    copyStrided<std::int64_t>(
        {shape, 0, broadcastStrides(value.shape, shape), 0, denseStrides(shape)}, value.integers.data(), result.data());
    return result;
}

bool inferIntegerBinary(Rule& rule, BinaryKind kind, const Shape& shape)
{
    const std::int64_t count = countElements(shape);
    if (count < 0 || count > maximumIntegers) {
        return rule.fail("its result of " + toString(shape) + " is too large");
    }
    std::vector<std::int64_t> left = spread(rule.operand(0), shape, count);
    const std::vector<std::int64_t> right = spread(rule.operand(1), shape, count);
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (!applyIntegers(kind, left[i], right[i], &left[i])) {
            return rule.fail("its integers divide by zero or overflow");
        }
    }
    return rule.setIntegers(0, shape, std::move(left));
}

/// Whether `value` is as many floats as `shape` has, in that order; extents of 1 in front may differ.
bool covers(const Value& value, const Shape& shape)
{
    const std::optional<Shape> common = broadcastShapes(value.shape, shape);
    return !value.isInteger() && common && countElements(*common) == countElements(value.shape)
        && countElements(*common) == countElements(shape);
}

} // namespace

bool inferActivation(Rule& rule)
{
    return rule.needFloats() && rule.setFloats(0, rule.operand(0).shape);
}

bool inferUnary(Rule& rule)
{
    if (!rule.needFloats()) {
        return false;
    }
    const Value& data = rule.operand(0);
    std::optional<float> uniform;
    if (data.uniform) {
        uniform = applyUnary(rule.operation.kind_as_Unary()->kind(), *data.uniform);
    }
    return rule.setFloats(0, data.shape, uniform);
}

bool inferBinary(Rule& rule)
{
    const BinaryKind kind = rule.operation.kind_as_Binary()->kind();
    const Value& left = rule.operand(0);
    const Value& right = rule.operand(1);
    if (left.type != right.type) {
        return rule.fail("one operand holds integers and the other does not");
    }
    const std::optional<Shape> shape = broadcastShapes(left.shape, right.shape);
    if (!shape) {
        return rule.fail(toString(left.shape) + " and " + toString(right.shape) + " do not go together");
    }
    if (left.isInteger()) {
        return inferIntegerBinary(rule, kind, *shape);
    }
    std::optional<float> uniform;
    if (left.uniform && right.uniform) {
        uniform = applyBinary(kind, *left.uniform, *right.uniform);
    }
    return rule.setFloats(0, *shape, uniform);
}

bool inferSoftmax(Rule& rule)
{
    const Value& data = rule.operand(0);
    if (!rule.needFloats()) {
        return false;
    }
    const int axis = rule.operation.kind_as_Softmax()->axis();
    if (normalAxis(axis, data.rank()) < 0) {
        return rule.fail("axis " + std::to_string(axis) + " of " + toString(data.shape) + " does not exist");
    }
    return rule.setFloats(0, data.shape);
}

bool inferChannelAffine(Rule& rule)
{
    const Shape& data = rule.operand(0).shape;
    if (!rule.needFloats(0) || !rule.needFloats(1) || !rule.needFloats(2)) {
        return false;
    }
    if (data.size() < 2 || rule.operand(1).shape != Shape{data[1]} || rule.operand(2).shape != Shape{data[1]}) {
        return rule.fail("its scale and shift do not fit the channels of " + toString(data));
    }
    return rule.setFloats(0, data);
}

bool inferLayerNormalisation(Rule& rule)
{
    const Value& data = rule.operand(0);
    if (!rule.needFloats()) {
        return false;
    }
    const int given = rule.operation.kind_as_LayerNormalisation()->axis();
    const int axis = normalAxis(given, data.rank());
    if (axis < 0) {
        return rule.fail("axis " + std::to_string(given) + " of " + toString(data.shape) + " does not exist");
    }
    const Shape normalised(data.shape.begin() + axis, data.shape.end());
    if (!covers(rule.operand(1), normalised) || (rule.input(2) && !covers(*rule.input(2), normalised))) {
        return rule.fail("its scale and shift do not fit " + toString(normalised));
    }
    return rule.setFloats(0, data.shape);
}

} // namespace scribo::cpu
