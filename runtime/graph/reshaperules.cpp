#include "attributes.h"
#include "format/network.h"
#include "operationtable.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// The shape that `wanted` stands for: 0 copies, one -1 takes what is left.
std::optional<Shape> completeShape(const Shape& data, std::vector<std::int64_t> wanted)
{
    const std::int64_t total = countElements(data);
    std::int64_t rest = -1;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i] == 0) {
            if (i >= data.size()) {
                return std::nullopt;
            }
            wanted[i] = data[i];
        } else if (wanted[i] == -1) {
            if (rest >= 0) {
                return std::nullopt;
            }
            rest = static_cast<std::int64_t>(i);
            wanted[i] = 1;
        }
    }
    const std::int64_t count = countElements(wanted);
    if (rest >= 0 && count > 0 && total % count == 0) {
        wanted[static_cast<std::size_t>(rest)] = total / count;
        return wanted;
    }
    return rest < 0 && count == total ? std::optional<Shape>(std::move(wanted)) : std::nullopt;
}

/// Which of `rank` axes are named; nothing when one does not exist or is named twice.
std::optional<std::vector<bool>> namedAxes(const flatbuffers::Vector<int>* axes, int rank)
{
    std::vector<bool> named(static_cast<std::size_t>(rank), false);
    for (flatbuffers::uoffset_t i = 0; axes && i < axes->size(); ++i) {
        const int axis = normalAxis(axes->Get(i), rank);
        if (axis < 0 || named[static_cast<std::size_t>(axis)]) {
            return std::nullopt;
        }
        named[static_cast<std::size_t>(axis)] = true;
    }
    return named;
}

} // namespace

Result<void> inferReshape(Rule& rule)
{
    if (!rule.operand(1).isInteger() || !rule.needIntegers({1})) {
        return failure("its new shape is not a list of integers");
    }
    const Value& data = rule.operand(0);
    const std::vector<std::int64_t>& wanted = rule.operand(1).integers;
    if (wanted.size() > format::maximumRank) {
        return failure("its result has " + std::to_string(wanted.size()) + " dimensions");
    }
    const std::optional<Shape> shape = completeShape(data.shape, wanted);
    if (!shape) {
        return failure(toString(data.shape) + " cannot be made " + toString(wanted));
    }
    return rule.setReshaped(0, *shape, data);
}

std::string showSqueeze(const format::Operation& operation)
{
    return "axes " + listText(operation.kind_as_Squeeze()->axes());
}

Result<void> inferSqueeze(Rule& rule)
{
    const auto* axes = rule.operation.kind_as_Squeeze()->axes();
    const Value& data = rule.operand(0);
    const bool all = !axes || axes->size() == 0;
    const std::optional<std::vector<bool>> named = namedAxes(axes, data.rank());
    if (!named) {
        return failure("an axis does not exist in " + toString(data.shape));
    }
    Shape shape;
    for (std::size_t axis = 0; axis < data.shape.size(); ++axis) {
        const bool dropped = all ? data.shape[axis] == 1 : (*named)[axis];
        if (dropped && data.shape[axis] != 1) {
            return failure("axis " + std::to_string(axis) + " of " + toString(data.shape) + " is not 1");
        }
        if (!dropped) {
            shape.push_back(data.shape[axis]);
        }
    }
    return rule.setReshaped(0, std::move(shape), data);
}

std::string showUnsqueeze(const format::Operation& operation)
{
    return "axes " + listText(operation.kind_as_Unsqueeze()->axes());
}

Result<void> inferUnsqueeze(Rule& rule)
{
    const auto* axes = rule.operation.kind_as_Unsqueeze()->axes();
    const Value& data = rule.operand(0);
    const std::size_t rank = data.shape.size() + (axes ? axes->size() : 0);
    if (rank > format::maximumRank) {
        return failure("its result has " + std::to_string(rank) + " dimensions");
    }
    const std::optional<std::vector<bool>> named = namedAxes(axes, static_cast<int>(rank));
    if (!named) {
        return failure("an axis does not exist in its result");
    }
    Shape shape;
    std::size_t next = 0;
    for (std::size_t axis = 0; axis < rank; ++axis) {
        shape.push_back((*named)[axis] ? 1 : data.shape[next++]);
    }
    return rule.setReshaped(0, std::move(shape), data);
}

} // namespace scribo::cpu
