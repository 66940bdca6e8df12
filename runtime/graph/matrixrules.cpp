#include "rules.h"

namespace scribo::cpu {

namespace {

/// Whether an optional input has exactly this shape.
bool fits(Rule& rule, std::size_t input, const Shape& expected, const char* what)
{
    const Value* value = rule.input(input);
    if (!value || (!value->isInteger() && value->shape == expected)) {
        return true;
    }
    return rule.fail(std::string(what) + " of " + toString(value->shape) + " instead of " + toString(expected));
}

} // namespace

bool inferRecurrent(Rule& rule)
{
    const auto& recurrent = *rule.operation.kind_as_Recurrent();
    const bool lstm = recurrent.cell() == format::CellKind::Lstm;
    const Shape& data = rule.operand(0).shape;
    if (!rule.needFloats()) {
        return false;
    }
    if (data.size() != 3) {
        return rule.fail("it cannot walk along " + toString(data));
    }
    const std::int64_t directions = recurrent.direction() == format::Direction::Bidirectional ? 2 : 1;
    const std::int64_t hidden = recurrent.hidden_size();
    const std::int64_t rows = (lstm ? 4 : 3) * hidden;
    const Shape state = {directions, data[1], hidden};
    if (!fits(rule, 1, {directions, rows, data[2]}, "weights")
        || !fits(rule, 2, {directions, rows, hidden}, "recurrent weights")
        || !fits(rule, 3, {directions, 2 * rows}, "a bias") || !fits(rule, 4, state, "an initial state")
        || !fits(rule, 5, state, "an initial cell state")) {
        return false;
    }
    if (!lstm && (rule.input(5) || (rule.outputCount() > 2 && rule.operation.outputs()->Get(2) >= 0))) {
        return rule.fail("a GRU has no cell state");
    }
    const Shape sequence = {data[0], directions, data[1], hidden};
    for (std::size_t i = 0; i < rule.outputCount(); ++i) {
        if (!rule.setFloats(i, i == 0 ? sequence : state)) {
            return false;
        }
    }
    return true;
}

bool inferFullyConnected(Rule& rule)
{
    const Shape& data = rule.operand(0).shape;
    const Shape& weights = rule.operand(1).shape;
    if (!rule.needFloats(0) || !rule.needFloats(1)) {
        return false;
    }
    if (data.empty() || weights.size() != 2 || data.back() != weights[0]) {
        return rule.fail("weights of " + toString(weights) + " do not fit " + toString(data));
    }
    Shape result = data;
    result.back() = weights[1];
    return fits(rule, 2, {weights[1]}, "a bias") && rule.setFloats(0, result);
}

bool inferMatrixProduct(Rule& rule)
{
    if (!rule.needFloats(0) || !rule.needFloats(1)) {
        return false;
    }
    Shape left = rule.operand(0).shape;
    Shape right = rule.operand(1).shape;
    const std::string operands = toString(left) + " and " + toString(right);
    if (left.empty() || right.empty()) {
        return rule.fail(operands + " cannot be multiplied as matrices");
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
        return rule.fail(operands + " cannot be multiplied as matrices");
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
