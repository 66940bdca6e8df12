#include "evaluate.h"

#include "graph/operationrow.h"
#include "graph/scalarmath.h"

#include <algorithm>
#include <numeric>

namespace scribo::builder {

namespace {

using cpu::Value;
using format::ElementType;
using format::NetworkT;
using format::OperationKind;
using format::OperationT;

/// Larger results are computed at run time rather than kept in the file.
constexpr std::int64_t largestFolded = std::int64_t(1) << 24;

/// What the runtime's rules know of a constant.
Value valueOf(const TensorT& constant)
{
    Value value;
    value.type = constant.type;
    value.shape = constant.dims;
    if (value.isInteger()) {
        value.integers = integerValues(constant);
        return value;
    }
    const std::vector<float> floats = floatValues(constant);
    if (std::count(floats.begin(), floats.end(), floats.front()) == static_cast<std::ptrdiff_t>(floats.size())) {
        value.uniform = floats.front();
    }
    return value;
}

/// One operation on constants. The runtime's rules say what it gives: integers whole, of floats the
/// shape, so that the floats are left to do here.
class Evaluation
{
public:
    Evaluation(const NetworkT& network, const OperationT& what)
    {
        OperationT operation = what;
        for (std::size_t i = 0; i < operation.inputs.size(); ++i) {
            inputs.push_back(network.tensors[static_cast<std::size_t>(operation.inputs[i])].get());
            values.push_back(valueOf(*inputs.back()));
            operation.inputs[i] = static_cast<int>(i);
        }
        operation.outputs = {static_cast<int>(values.size())};
        values.emplace_back();
        buffer.Finish(format::Operation::Pack(buffer, &operation));
    }

    std::optional<TensorT> result()
    {
        const auto& operation = *flatbuffers::GetRoot<format::Operation>(buffer.GetBufferPointer());
        cpu::Rule rule(operation, &values);
        const cpu::OperationRow& row = cpu::operationRow(operation.kind_type());
        if (!row.isFolded || !row.infer(rule)) {
            return std::nullopt;
        }
        const Value& output = values.back();
        const std::int64_t count = elementCount(output.shape);
        if (count < 1 || count > largestFolded) {
            return std::nullopt;
        }
        if (output.isInteger()) {
            return makeConstant({}, output.shape, output.integers);
        }
        std::vector<float> floats(static_cast<std::size_t>(count), output.uniform.value_or(0));
        if (!output.uniform && !compute(rule, &floats)) {
            return std::nullopt;
        }
        return makeConstant({}, output.shape, floats);
    }

private:
    /// The floats of the result, which differ from one another.
    bool compute(const cpu::Rule& rule, std::vector<float>* result) const
    {
        const OperationKind kind = rule.operation.kind_type();
        if (const auto movement = cpu::operationRow(kind).movement) {
            move(movement(rule).value(), result);
        } else if (kind == OperationKind::Binary) {
            computeBinary(rule, result);
        } else if (kind == OperationKind::Unary) {
            computeUnary(rule, result);
        } else if (inputs[0]->type == ElementType::Float32) {
            // Another shape of the same floats.
            *result = floatValues(*inputs[0]);
        } else {
            computeCast(result);
        }
        return result->size() == static_cast<std::size_t>(elementCount(values.back().shape));
    }

    /// The floats of an input, repeated to fill the result.
    std::vector<float> spread(std::size_t input) const
    {
        const cpu::Shape& shape = values.back().shape;
        std::vector<float> result(static_cast<std::size_t>(elementCount(shape)));
        const std::vector<float> floats = floatValues(*inputs[input]);
        cpu::copyStrided<float>(
            {shape, 0, cpu::broadcastStrides(values[input].shape, shape), 0, cpu::denseStrides(shape)}, floats.data(),
            result.data());
        return result;
    }

    void computeBinary(const cpu::Rule& rule, std::vector<float>* result) const
    {
        const format::BinaryKind kind = rule.operation.kind_as_Binary()->kind();
        const std::vector<float> left = spread(0);
        const std::vector<float> right = spread(1);
        std::transform(left.begin(), left.end(), right.begin(), result->begin(),
            [kind](float a, float b) { return cpu::applyBinary(kind, a, b); });
    }

    void computeUnary(const cpu::Rule& rule, std::vector<float>* result) const
    {
        const format::UnaryKind kind = rule.operation.kind_as_Unary()->kind();
        const std::vector<float> data = floatValues(*inputs[0]);
        std::transform(data.begin(), data.end(), result->begin(), [kind](float x) { return cpu::applyUnary(kind, x); });
    }

    void computeCast(std::vector<float>* result) const
    {
        const std::vector<std::int64_t> integers = integerValues(*inputs[0]);
        std::transform(integers.begin(), integers.end(), result->begin(),
            [](std::int64_t integer) { return static_cast<float>(integer); });
    }

    void move(const cpu::Movement& movement, std::vector<float>* result) const
    {
        for (const cpu::Movement::Part& part : movement.parts) {
            cpu::copyStrided(part.copy, floatValues(*inputs[part.input]).data(), result->data());
        }
    }

    std::vector<const TensorT*> inputs;
    /// Of the inputs, in their order, and of the output.
    std::vector<Value> values;
    flatbuffers::FlatBufferBuilder buffer;
};

} // namespace

std::optional<TensorT> evaluate(const NetworkT& network, const OperationT& operation)
{
    for (int index : operation.inputs) {
        if (index < 0 || !isConstant(*network.tensors[static_cast<std::size_t>(index)])) {
            return std::nullopt;
        }
    }
    return operation.inputs.empty() ? std::nullopt : Evaluation(network, operation).result();
}

} // namespace scribo::builder
