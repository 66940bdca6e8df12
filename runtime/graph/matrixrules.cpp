#include "attributes.h"
#include "operationtable.h"

namespace scribo::cpu {

namespace {

/// An optional input, of exactly this shape when it is there.
struct ShapedInput
{
    std::size_t input;
    Shape expected;
    const char* what;
};

/// An error for the first of `inputs` that is there and does not hold floats of its shape.
Result<void> needShapes(const Rule& rule, std::initializer_list<ShapedInput> inputs)
{
    for (const ShapedInput& wanted : inputs) {
        const Value* value = rule.input(wanted.input);
        if (value && (value->isInteger() || value->shape != wanted.expected)) {
            return failure(std::string(wanted.what) + " of " + toString(value->shape) + " instead of "
                + toString(wanted.expected));
        }
    }
    return {};
}

} // namespace

bool isSoundRecurrent(const format::Operation& operation)
{
    constexpr int largestState = 1 << 16;
    const auto& recurrent = *operation.kind_as_Recurrent();
    return isKnown(recurrent.cell()) && isKnown(recurrent.direction()) && recurrent.hidden_size() >= 1
        && recurrent.hidden_size() <= largestState;
}

/// Every time step multiplies the input and the hidden state with the weights of all gates.
std::int64_t countRecurrent(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    const Shape& data = inputShape(operation, shapes, 0);
    const std::int64_t weights = countElements(inputShape(operation, shapes, 1));
    const std::int64_t recurrentWeights = countElements(inputShape(operation, shapes, 2));
    return data.size() < 2 ? 0 : data[0] * data[1] * (weights + recurrentWeights);
}

std::string showRecurrent(const format::Operation& operation)
{
    const auto& recurrent = *operation.kind_as_Recurrent();
    return Details()
        .add(format::EnumNameCellKind(recurrent.cell()))
        .add(format::EnumNameDirection(recurrent.direction()))
        .add("hidden " + std::to_string(recurrent.hidden_size()))
        .text;
}

Result<void> inferRecurrent(Rule& rule)
{
    const auto& recurrent = *rule.operation.kind_as_Recurrent();
    const bool lstm = recurrent.cell() == format::CellKind::Lstm;
    const Shape& data = rule.operand(0).shape;
    if (Result<void> sound = rule.needFloats({0}); !sound) {
        return sound;
    }
    if (data.size() != 3) {
        return failure("it cannot walk along " + toString(data));
    }
    const std::int64_t directions = recurrent.direction() == format::Direction::Bidirectional ? 2 : 1;
    const std::int64_t hidden = recurrent.hidden_size();
    const std::int64_t rows = (lstm ? 4 : 3) * hidden;
    const Shape state = {directions, data[1], hidden};
    if (Result<void> sound = needShapes(rule,
            {{1, {directions, rows, data[2]}, "weights"}, {2, {directions, rows, hidden}, "recurrent weights"},
                {3, {directions, 2 * rows}, "a bias"}, {4, state, "an initial state"},
                {5, state, "an initial cell state"}});
        !sound) {
        return sound;
    }
    if (!lstm && (rule.input(5) || (rule.outputCount() > 2 && rule.operation.outputs()->Get(2) >= 0))) {
        return failure("a GRU has no cell state");
    }
    const Shape sequence = {data[0], directions, data[1], hidden};
    for (std::size_t i = 0; i < rule.outputCount(); ++i) {
        if (Result<void> done = rule.setFloats(i, i == 0 ? sequence : state); !done) {
            return done;
        }
    }
    return {};
}

bool isSoundFullyConnected(const format::Operation& operation)
{
    return isKnown(operation.kind_as_FullyConnected()->activation());
}

/// Every element of the result is a sum along a row of the left operand.
std::int64_t countMatrixProduct(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    const Shape& left = inputShape(operation, shapes, 0);
    return left.empty() ? 0 : countElements(resultShape(operation, shapes)) * left.back();
}

std::string showFullyConnected(const format::Operation& operation)
{
    return Details().addActivation(operation.kind_as_FullyConnected()->activation()).text;
}

Result<void> inferFullyConnected(Rule& rule)
{
    const Shape& data = rule.operand(0).shape;
    const Shape& weights = rule.operand(1).shape;
    if (Result<void> sound = rule.needFloats({0, 1}); !sound) {
        return sound;
    }
    if (data.empty() || weights.size() != 2 || data.back() != weights[0]) {
        return failure("weights of " + toString(weights) + " do not fit " + toString(data));
    }
    Shape result = data;
    result.back() = weights[1];
    return needShapes(rule, {{2, {weights[1]}, "a bias"}}).and_then([&] { return rule.setFloats(0, result); });
}

Result<void> inferMatrixProduct(Rule& rule)
{
    if (Result<void> sound = rule.needFloats({0, 1}); !sound) {
        return sound;
    }
    Shape left = rule.operand(0).shape;
    Shape right = rule.operand(1).shape;
    const std::string operands = toString(left) + " and " + toString(right);
    if (left.empty() || right.empty()) {
        return failure(operands + " cannot be multiplied as matrices");
    }
    // A single list is a row on the left and a column on the right, and the result lacks that axis.
    const bool rowOnly = left.size() == 1;
    const bool columnOnly = right.size() == 1;
    if (rowOnly) {
        left.insert(left.begin(), 1);
    }
    if (columnOnly) {
        right.push_back(1);
    }
    const std::optional<Shape> outer
        = broadcastShapes(Shape(left.begin(), left.end() - 2), Shape(right.begin(), right.end() - 2));
    if (!outer || left.back() != right[right.size() - 2]) {
        return failure(operands + " cannot be multiplied as matrices");
    }
    Shape result = *outer;
    if (!rowOnly) {
        result.push_back(left[left.size() - 2]);
    }
    if (!columnOnly) {
        result.push_back(right.back());
    }
    return rule.setFloats(0, result);
}

} // namespace scribo::cpu
