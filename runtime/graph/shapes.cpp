#include "shapes.h"

#include "format/networkcheck.h"
#include "rules.h"

#include <algorithm>
#include <cstring>

namespace scribo::cpu {

namespace {

using format::OperationKind;

bool infer(Rule& rule)
{
    switch (rule.operation.kind_type()) {
    case OperationKind::Activation:
        return inferActivation(rule);
    case OperationKind::Convolution:
        return inferConvolution(rule);
    case OperationKind::Pooling:
        return inferPooling(rule);
    case OperationKind::Reduction:
        return inferReduction(rule);
    case OperationKind::Resize:
        return inferResize(rule);
    case OperationKind::Recurrent:
        return inferRecurrent(rule);
    case OperationKind::FullyConnected:
        return inferFullyConnected(rule);
    case OperationKind::MatrixProduct:
        return inferMatrixProduct(rule);
    case OperationKind::Binary:
        return inferBinary(rule);
    case OperationKind::Unary:
        return inferUnary(rule);
    case OperationKind::ChannelAffine:
        return inferChannelAffine(rule);
    case OperationKind::LayerNormalisation:
        return inferLayerNormalisation(rule);
    case OperationKind::Softmax:
        return inferSoftmax(rule);
    case OperationKind::Reshape:
        return inferReshape(rule);
    case OperationKind::Squeeze:
        return inferSqueeze(rule);
    case OperationKind::Unsqueeze:
        return inferUnsqueeze(rule);
    case OperationKind::ShapeOf:
        return inferShapeOf(rule);
    case OperationKind::Cast:
        return inferCast(rule);
    case OperationKind::Fill:
        return inferFill(rule);
    case OperationKind::Transpose:
    case OperationKind::Concat:
    case OperationKind::Gather:
    case OperationKind::Slice:
    case OperationKind::Expand:
    case OperationKind::Split:
    case OperationKind::Pad:
        return inferMovement(rule);
    case OperationKind::NONE:
        break;
    }
    return rule.fail("it is of an unknown kind");
}

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

/// Counts the integers of `value` to those of the network; false when these are too many to be kept.
bool addIntegers(const Value& value, std::int64_t* integers)
{
    *integers += static_cast<std::int64_t>(value.integers.size());
    return *integers <= maximumNetworkIntegers;
}

bool setConstant(const format::Tensor& tensor, Value* value, std::int64_t* integers, std::string* error)
{
    if (tensor.dims()) {
        value->shape.assign(tensor.dims()->begin(), tensor.dims()->end());
    }
    const std::int64_t count = countElements(value->shape);
    const std::string name = tensor.name() ? tensor.name()->str() : std::string();
    if (count < 0 || (value->isInteger() ? count > maximumIntegers : count == 0)) {
        *error = "the constant '" + name + "' of " + toString(value->shape) + " is empty or too large";
        return false;
    }
    if (value->isInteger()) {
        value->integers.resize(static_cast<std::size_t>(count));
        if (count > 0) {
            std::memcpy(value->integers.data(), tensor.constant()->data(), tensor.constant()->size());
        }
        if (!addIntegers(*value, integers)) {
            *error = "the constant '" + name + "' makes the network's integers too many";
            return false;
        }
    } else {
        value->uniform = uniformNumber(tensor.constant()->data(), count);
    }
    return true;
}

bool setConstants(
    const format::Network& network, std::vector<Value>* values, std::int64_t* integers, std::string* error)
{
    for (flatbuffers::uoffset_t i = 0; i < network.tensors()->size(); ++i) {
        const format::Tensor& tensor = *network.tensors()->Get(i);
        Value& value = (*values)[i];
        value.type = tensor.type();
        if (format::isConstant(tensor) && !setConstant(tensor, &value, integers, error)) {
            return false;
        }
    }
    return true;
}

bool setInput(const format::Network& network, int width, std::vector<Value>* values, std::string* error)
{
    const int input = network.inputs()->Get(0);
    const auto* dims = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(input))->dims();
    Shape shape(dims->begin(), dims->end());
    shape[3] = width;
    if (width < 1 || width > format::maximumWidth || countElements(shape) < 1) {
        *error = "an input of " + toString(shape) + " makes no sense";
        return false;
    }
    (*values)[static_cast<std::size_t>(input)].shape = std::move(shape);
    return true;
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

} // namespace

bool inferValues(const format::Network& network, int width, std::vector<Value>* values, std::string* error)
{
    values->assign(network.tensors()->size(), {});
    std::int64_t integers = 0;
    if (!setConstants(network, values, &integers, error) || !setInput(network, width, values, error)) {
        return false;
    }
    for (const format::Operation* operation : *network.operations()) {
        Rule rule(*operation, values);
        if (!infer(rule)) {
            *error = format::operationTitle(*operation) + ": " + rule.error;
            return false;
        }
        if (!typesAgree(network, *operation, *values)) {
            *error = format::operationTitle(*operation) + ": its result is not of the type that the engine says";
            return false;
        }
        if (!addResults(*operation, *values, &integers)) {
            *error = format::operationTitle(*operation) + ": its result makes the network's integers too many";
            return false;
        }
    }
    return true;
}

bool inferShapes(
    const format::Network& network, int width, std::vector<std::vector<std::int64_t>>* shapes, std::string* error)
{
    std::string ignored;
    error = error ? error : &ignored;
    std::vector<Value> values;
    if (!format::checkNetwork(network, error) || !inferValues(network, width, &values, error)) {
        return false;
    }
    shapes->clear();
    for (Value& value : values) {
        shapes->push_back(std::move(value.shape));
    }
    return true;
}

} // namespace scribo::cpu
