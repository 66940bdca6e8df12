#include "attributes.h"
#include "format/network.h"
#include "operationtable.h"

#include <algorithm>
#include <cmath>

namespace scribo::cpu {

namespace {

/// The whole number that a float is cut down to; nothing when it has none within 64 bits.
std::optional<std::int64_t> toInteger(float number)
{
    constexpr float limit = 9223372036854775808.0F;
    if (!(number >= -limit && number < limit)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(number);
}

Result<void> castToIntegers(Rule& rule, const Value& data)
{
    const std::optional<std::int64_t> number = data.uniform ? toInteger(*data.uniform) : std::nullopt;
    if (!number) {
        return failure("its integers are not known before the picture is");
    }
    const std::int64_t count = countElements(data.shape);
    if (count > maximumIntegers) {
        return failure("its result of " + toString(data.shape) + " is too large");
    }
    return rule.setIntegers(0, data.shape, std::vector<std::int64_t>(static_cast<std::size_t>(count), *number));
}

Result<void> castToFloats(Rule& rule, const Value& data)
{
    const auto& integers = data.integers;
    std::optional<float> uniform;
    if (!integers.empty()
        && std::count(integers.begin(), integers.end(), integers[0]) == std::int64_t(integers.size())) {
        uniform = static_cast<float>(integers[0]);
    }
    return rule.setFloats(0, data.shape, uniform);
}

} // namespace

Result<void> inferShapeOf(Rule& rule)
{
    const Shape& shape = rule.operand(0).shape;
    return rule.setIntegers(0, {static_cast<std::int64_t>(shape.size())}, shape);
}

bool isSoundCast(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Cast()->to());
}

Result<void> inferCast(Rule& rule)
{
    const Value& data = rule.operand(0);
    const format::ElementType to = rule.operation.kind_as_Cast()->to();
    if (to == data.type) {
        return rule.setReshaped(0, data.shape, data);
    }
    return to == format::ElementType::Int64 ? castToIntegers(rule, data) : castToFloats(rule, data);
}

bool isSoundFill(const format::Operation& operation)
{
    return isKnown(operation.kind_as_Fill()->type());
}

Result<void> inferFill(Rule& rule)
{
    const auto& fill = *rule.operation.kind_as_Fill();
    if (!rule.operand(0).isInteger() || !rule.needIntegers({0})) {
        return failure("its shape is not a list of integers");
    }
    const Shape shape = rule.operand(0).integers;
    if (fill.type() == format::ElementType::Float32) {
        return rule.setFloats(0, shape, fill.value());
    }
    const std::optional<std::int64_t> number = toInteger(fill.value());
    const std::int64_t count = countElements(shape);
    if (!number || count < 0 || count > maximumIntegers) {
        return failure("its result of " + toString(shape) + " is too large");
    }
    return rule.setIntegers(0, shape, std::vector<std::int64_t>(static_cast<std::size_t>(count), *number));
}

} // namespace scribo::cpu
