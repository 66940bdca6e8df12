#include "rule.h"

#include "format/network.h"

namespace scribo::cpu {

using format::ElementType;

void Rule::set(std::size_t i, Value value)
{
    const int tensor = operation.outputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
    if (tensor >= 0) {
        values[static_cast<std::size_t>(tensor)] = std::move(value);
    }
}

Result<void> Rule::setFloats(std::size_t i, Shape shape, std::optional<float> uniform)
{
    if (shape.size() > format::maximumRank) {
        return failure("its result has " + std::to_string(shape.size()) + " dimensions");
    }
    if (countElements(shape) < 1) {
        return failure("its result of " + toString(shape) + " is empty or too large");
    }
    set(i, {ElementType::Float32, std::move(shape), {}, uniform});
    return {};
}

Result<void> Rule::setIntegers(std::size_t i, Shape shape, std::vector<std::int64_t> integers)
{
    if (shape.size() > format::maximumRank || countElements(shape) != static_cast<std::int64_t>(integers.size())
        || countElements(shape) > maximumIntegers) {
        return failure("its result of " + toString(shape) + " is too large");
    }
    set(i, {ElementType::Int64, std::move(shape), std::move(integers), std::nullopt});
    return {};
}

Result<void> Rule::setReshaped(std::size_t i, Shape shape, const Value& source)
{
    return source.isInteger() ? setIntegers(i, std::move(shape), source.integers)
                              : setFloats(i, std::move(shape), source.uniform);
}

Result<void> Node::needFloats(std::initializer_list<std::size_t> inputs) const
{
    for (std::size_t i : inputs) {
        const Value* value = input(i);
        if (value && value->isInteger()) {
            return failure("input " + std::to_string(i) + " holds integers");
        }
    }
    return {};
}

Result<void> Node::needIntegers(std::initializer_list<std::size_t> inputs) const
{
    for (std::size_t i : inputs) {
        const Value* value = input(i);
        if (value && (!value->isInteger() || value->rank() > 1)) {
            return failure("input " + std::to_string(i) + " is not a list of integers");
        }
    }
    return {};
}

} // namespace scribo::cpu
