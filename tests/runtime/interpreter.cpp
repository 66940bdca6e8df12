#include "interpreter.h"

#include "reference.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace scribo::test {

namespace {

using format::OperationKind;

/// Integers are kept as floats: all of them are small.
Array readConstant(const format::TensorT& tensor)
{
    Array array = Array::zeros(tensor.dims);
    if (tensor.type == format::ElementType::Float32) {
        std::memcpy(array.data.data(), tensor.constant.data(), tensor.constant.size());
        return array;
    }
    for (std::size_t i = 0; i < array.data.size(); ++i) {
        std::int64_t integer = 0;
        std::memcpy(&integer, tensor.constant.data() + i * sizeof(integer), sizeof(integer));
        array.data[i] = static_cast<float>(integer);
    }
    return array;
}

Shape toShape(const Array& array)
{
    Shape shape;
    for (float extent : array.data) {
        shape.push_back(static_cast<std::int64_t>(extent));
    }
    return shape;
}

Array reshape(Array data, const Array& target)
{
    Shape shape = toShape(target);
    std::int64_t known = 1;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        shape[i] = shape[i] == 0 ? data.shape[i] : shape[i];
        known *= shape[i] < 0 ? 1 : shape[i];
    }
    std::replace(shape.begin(), shape.end(), std::int64_t(-1), data.count() / known);
    data.shape = shape;
    return data;
}

Array squeeze(Array data, const std::vector<int>& axes)
{
    for (auto axis = axes.rbegin(); axis != axes.rend(); ++axis) {
        data.shape.erase(data.shape.begin() + *axis);
    }
    return data;
}

Array unsqueeze(Array data, const std::vector<int>& axes)
{
    for (int axis : axes) {
        data.shape.insert(data.shape.begin() + axis, 1);
    }
    return data;
}

std::vector<Array> applyOperation(const format::OperationT& operation, const std::vector<const Array*>& in)
{
    const auto given = [&in](std::size_t i) { return i < in.size() ? in[i] : nullptr; };
    const auto& kind = operation.kind;
    switch (kind.type) {
    case OperationKind::Convolution:
        return {reference::convolution(*kind.AsConvolution(), *in[0], *in[1], given(2))};
    case OperationKind::Pooling:
        return {reference::pooling(*kind.AsPooling(), *in[0])};
    case OperationKind::Recurrent:
        return reference::recurrent(*kind.AsRecurrent(), {*in[0], *in[1], *in[2], given(3), given(4), given(5)});
    case OperationKind::FullyConnected:
        return {reference::fullyConnected(*kind.AsFullyConnected(), *in[0], *in[1], given(2))};
    case OperationKind::Softmax:
        return {reference::softmax(*kind.AsSoftmax(), *in[0])};
    case OperationKind::Transpose:
        return {reference::transpose(kind.AsTranspose()->permutation, *in[0])};
    case OperationKind::Reshape:
        return {reshape(*in[0], *in[1])};
    case OperationKind::Squeeze:
        return {squeeze(*in[0], kind.AsSqueeze()->axes)};
    case OperationKind::Unsqueeze:
        return {unsqueeze(*in[0], kind.AsUnsqueeze()->axes)};
    case OperationKind::ShapeOf:
        return {{{static_cast<std::int64_t>(in[0]->shape.size())},
            std::vector<float>(in[0]->shape.begin(), in[0]->shape.end())}};
    case OperationKind::Gather:
        return {reference::gather(kind.AsGather()->axis, *in[0], in[1]->shape, toShape(*in[1]))};
    case OperationKind::Concat: {
        std::vector<Array> parts;
        std::transform(in.begin(), in.end(), std::back_inserter(parts), [](const Array* part) { return *part; });
        return {reference::concat(kind.AsConcat()->axis, parts)};
    }
    case OperationKind::Fill:
        return {reference::expand({{}, {kind.AsFill()->value}}, toShape(*in[0]))};
    default:
        throw std::logic_error("the interpreter does not know this operation");
    }
}

} // namespace

std::vector<Array> interpret(const format::NetworkT& network, const Array& input)
{
    std::vector<Array> values(network.tensors.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!network.tensors[i]->constant.empty()) {
            values[i] = readConstant(*network.tensors[i]);
        }
    }
    values[static_cast<std::size_t>(network.inputs.front())] = input;
    for (const auto& operation : network.operations) {
        std::vector<const Array*> inputs;
        for (int tensor : operation->inputs) {
            inputs.push_back(tensor < 0 ? nullptr : &values[static_cast<std::size_t>(tensor)]);
        }
        const std::vector<Array> results = applyOperation(*operation, inputs);
        for (std::size_t i = 0; i < operation->outputs.size(); ++i) {
            if (operation->outputs[i] >= 0) {
                values[static_cast<std::size_t>(operation->outputs[i])] = results[i];
            }
        }
    }
    std::vector<Array> outputs;
    for (int output : network.outputs) {
        outputs.push_back(values[static_cast<std::size_t>(output)]);
    }
    return outputs;
}

} // namespace scribo::test
