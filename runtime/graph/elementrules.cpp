#include "attributes.h"
#include "operationtable.h"
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

Result<void> inferIntegerBinary(Rule& rule, BinaryKind kind, const Shape& shape)
{
    const std::int64_t count = countElements(shape);
    if (count < 0 || count > maximumIntegers) {
        return failure("its result of " + toString(shape) + " is too large");
    }
    std::vector<std::int64_t> left = spread(rule.operand(0), shape, count);
    const std::vector<std::int64_t> right = spread(rule.operand(1), shape, count);
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (!applyIntegers(kind, left[i], right[i], &left[i])) {
            return failure("its integers divide by zero or overflow");
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

bool isSoundActivation(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Activation());
}

std::string showActivation(const format::Operation& operation)
{
    return format::EnumNameActivationKind(operation.kind_as_Activation()->kind());
}

Result<void> inferActivation(Rule& rule)
{
    return rule.needFloats({0}).and_then([&] { return rule.setFloats(0, rule.operand(0).shape); });
}

bool isSoundUnary(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Unary()->kind());
}

std::string showUnary(const format::Operation& operation)
{
    return format::EnumNameUnaryKind(operation.kind_as_Unary()->kind());
}

Result<void> inferUnary(Rule& rule)
{
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    const Value& data = rule.operand(0);
    std::optional<float> uniform;
    if (data.uniform) {
        uniform = applyUnary(rule.operation.kind_as_Unary()->kind(), *data.uniform);
    }
    return rule.setFloats(0, data.shape, uniform);
}

bool isSoundBinary(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Binary()->kind());
}

std::string showBinary(const format::Operation& operation)
{
    return format::EnumNameBinaryKind(operation.kind_as_Binary()->kind());
}

Result<void> inferBinary(Rule& rule)
{
    const BinaryKind kind = rule.operation.kind_as_Binary()->kind();
    const Value& left = rule.operand(0);
    const Value& right = rule.operand(1);
    if (left.type != right.type) {
        return failure("one operand holds integers and the other does not");
    }
    const std::optional<Shape> shape = broadcastShapes(left.shape, right.shape);
    if (!shape) {
        return failure(toString(left.shape) + " and " + toString(right.shape) + " do not go together");
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

std::string showSoftmax(const format::Operation& operation)
{
    const format::Softmax& softmax = *operation.kind_as_Softmax();
    return "axis " + std::to_string(softmax.axis()) + (softmax.logarithm() ? ", logarithm" : "");
}

Result<void> inferSoftmax(Rule& rule)
{
    const Value& data = rule.operand(0);
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    const int axis = rule.operation.kind_as_Softmax()->axis();
    if (normalAxis(axis, data.rank()) < 0) {
        return failure("axis " + std::to_string(axis) + " of " + toString(data.shape) + " does not exist");
    }
    return rule.setFloats(0, data.shape);
}

Result<void> inferChannelAffine(Rule& rule)
{
    const Shape& data = rule.operand(0).shape;
    if (Result<void> sound = rule.needFloats({0, 1, 2}); !sound) {
        return sound;
    }
    if (data.size() < 2 || rule.operand(1).shape != Shape{data[1]} || rule.operand(2).shape != Shape{data[1]}) {
        return failure("its scale and shift do not fit the channels of " + toString(data));
    }
    return rule.setFloats(0, data);
}

Result<void> inferLayerNormalisation(Rule& rule)
{
    const Value& data = rule.operand(0);
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    const int given = rule.operation.kind_as_LayerNormalisation()->axis();
    const int axis = normalAxis(given, data.rank());
    if (axis < 0) {
        return failure("axis " + std::to_string(given) + " of " + toString(data.shape) + " does not exist");
    }
    const Shape normalised(data.shape.begin() + axis, data.shape.end());
    if (!covers(rule.operand(1), normalised) || (rule.input(2) && !covers(*rule.input(2), normalised))) {
        return failure("its scale and shift do not fit " + toString(normalised));
    }
    return rule.setFloats(0, data.shape);
}

} // namespace scribo::cpu
