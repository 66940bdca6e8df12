#include "rule.h"

#include "format/networkcheck.h"

namespace scribo::cpu {

using format::ElementType;

void Rule::set(std::size_t i, Value value)
{
    const int tensor = operation.outputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
    if (tensor >= 0) {
        values[static_cast<std::size_t>(tensor)] = std::move(value);
    }
}

bool Rule::setFloats(std::size_t i, Shape shape, std::optional<float> uniform)
{
    if (shape.size() > format::maximumRank) {
        return fail("its result has " + std::to_string(shape.size()) + " dimensions");
    }
    if (countElements(shape) < 1) {
        return fail("its result of " + toString(shape) + " is empty or too large");
    }
    set(i, {ElementType::Float32, std::move(shape), {}, uniform});
    return true;
}

bool Rule::setIntegers(std::size_t i, Shape shape, std::vector<std::int64_t> integers)
{
    if (shape.size() > format::maximumRank || countElements(shape) != static_cast<std::int64_t>(integers.size())
        || countElements(shape) > maximumIntegers) {
        return fail("its result of " + toString(shape) + " is too large");
    }
    set(i, {ElementType::Int64, std::move(shape), std::move(integers), std::nullopt});
    return true;
}

bool Rule::setReshaped(std::size_t i, Shape shape, const Value& source)
{
    return source.isInteger() ? setIntegers(i, std::move(shape), source.integers)
                              : setFloats(i, std::move(shape), source.uniform);
}

bool Node::needFloats(std::size_t i)
{
    return !operand(i).isInteger() || fail("input " + std::to_string(i) + " holds integers");
}

bool Node::needIntegers(std::size_t i)
{
    const Value* value = input(i);
    return !value || (value->isInteger() && value->rank() <= 1)
        || fail("input " + std::to_string(i) + " is not a list of integers");
}

} // namespace scribo::cpu
