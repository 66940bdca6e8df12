#include "shapes.h"

#include "networkcheck.h"
#include "operationrow.h"

#include "format/network.h"

#include <algorithm>
#include <cstring>

namespace scribo::cpu {

namespace {

/// The one number that the constant consists of, if it does. Most constants end the search at their
/// second element.
std::optional<float> uniformNumber(const std::uint8_t* bytes, std::int64_t count)
{
    for (std::int64_t i = 1; i < count; ++i) {
        if (std::memcmp(bytes, bytes + i * std::int64_t(sizeof(float)), sizeof(float)) != 0) {
            return std::nullopt;
        }
    }
    float number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

std::string constantTitle(const format::Tensor& tensor)
{
    return "the constant '" + (tensor.name() ? tensor.name()->str() : std::string()) + "'";
}

/// Counts the integers of `value` to those of the network; false when these are too many to be kept.
bool addIntegers(const Value& value, std::int64_t* integers)
{
    *integers += static_cast<std::int64_t>(value.integers.size());
    return *integers <= maximumNetworkIntegers;
}

Result<Value> valueOfConstant(const format::Tensor& tensor)
{
    Value value;
    value.type = tensor.type();
    if (tensor.dims()) {
        value.shape.assign(tensor.dims()->begin(), tensor.dims()->end());
    }
    const std::int64_t count = countElements(value.shape);
    if (count < 0 || (value.isInteger() ? count > maximumIntegers : count == 0)) {
        return failure(constantTitle(tensor) + " of " + toString(value.shape) + " is empty or too large");
    }
    if (!value.isInteger()) {
        value.uniform = uniformNumber(tensor.constant()->data(), count);
        return value;
    }
    value.integers.resize(static_cast<std::size_t>(count));
    if (count > 0) {
        std::memcpy(value.integers.data(), tensor.constant()->data(), tensor.constant()->size());
    }
    return value;
}

Result<void> setConstants(const format::Network& network, std::vector<Value>* values, std::int64_t* integers)
{
    for (flatbuffers::uoffset_t i = 0; i < network.tensors()->size(); ++i) {
        const format::Tensor& tensor = *network.tensors()->Get(i);
        Value& value = (*values)[i];
        value.type = tensor.type();
        if (!format::isConstant(tensor)) {
            continue;
        }
        Result<Value> known = valueOfConstant(tensor);
        if (!known) {
            return tl::unexpected(known.error());
        }
        value = std::move(*known);
        if (!addIntegers(value, integers)) {
            return failure(constantTitle(tensor) + " makes the network's integers too many");
        }
    }
    return {};
}

Result<void> setInput(const format::Network& network, int width, std::vector<Value>* values)
{
    const int input = network.inputs()->Get(0);
    const auto* dims = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(input))->dims();
    Shape shape(dims->begin(), dims->end());
    shape[3] = width;
    if (width < 1 || width > format::maximumWidth || countElements(shape) < 1) {
        return failure("an input of " + toString(shape) + " makes no sense");
    }
    (*values)[static_cast<std::size_t>(input)].shape = std::move(shape);
    return {};
}

/// The types of results follow from the operations; what the file says of them must agree.
bool typesAgree(const format::Network& network, const format::Operation& operation, const std::vector<Value>& values)
{
    for (int output : *operation.outputs()) {
        if (output >= 0
            && network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(output))->type()
                != values[static_cast<std::size_t>(output)].type) {
            return false;
        }
    }
    return true;
}

/// addIntegers() for all that `operation` gives.
bool addResults(const format::Operation& operation, const std::vector<Value>& values, std::int64_t* integers)
{
    return std::all_of(operation.outputs()->begin(), operation.outputs()->end(),
        [&](int output) { return output < 0 || addIntegers(values[static_cast<std::size_t>(output)], integers); });
}

/// Adds the results of `operation` to the values.
Result<void> setResults(const format::Network& network, const format::Operation& operation, std::vector<Value>* values,
    std::int64_t* integers)
{
    Rule rule(operation, values);
    if (Result<void> done = operationRow(operation.kind_type()).infer(rule); !done) {
        return done;
    }
    if (!typesAgree(network, operation, *values)) {
        return failure("its result is not of the type that the engine says");
    }
    if (!addResults(operation, *values, integers)) {
        return failure("its result makes the network's integers too many");
    }
    return {};
}

} // namespace

Result<std::vector<Value>> inferValues(const format::Network& network, int width)
{
    std::vector<Value> values(network.tensors()->size());
    std::int64_t integers = 0;
    const Result<void> begun
        = setConstants(network, &values, &integers).and_then([&] { return setInput(network, width, &values); });
    if (!begun) {
        return tl::unexpected(begun.error());
    }
    for (const format::Operation* operation : *network.operations()) {
        if (const Result<void> done = setResults(network, *operation, &values, &integers); !done) {
            return failure(format::operationTitle(*operation) + ": " + done.error().message);
        }
    }
    return values;
}

Result<std::vector<Shape>> inferShapes(const format::Network& network, int width)
{
    return checkNetwork(network)
        .and_then([&] { return inferValues(network, width); })
        .map([](std::vector<Value> values) {
            std::vector<Shape> shapes;
            for (Value& value : values) {
                shapes.push_back(std::move(value.shape));
            }
            return shapes;
        });
}

} // namespace scribo::cpu
