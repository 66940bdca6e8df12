#include "networkmaker.h"

#include "randomarrays.h"

#include <cstring>

namespace scribo::test {

namespace {

template <class Number>
std::vector<std::uint8_t> bytesOf(const std::vector<Number>& data)
{
    std::vector<std::uint8_t> bytes(data.size() * sizeof(Number));
    if (!data.empty()) {
        std::memcpy(bytes.data(), data.data(), bytes.size());
    }
    return bytes;
}

} // namespace

int NetworkMaker::addTensor(const std::string& name, const Shape& dims, format::ElementType type)
{
    auto tensor = std::make_unique<format::TensorT>();
    tensor->name = name;
    tensor->dims = dims;
    tensor->type = type;
    network.tensors.push_back(std::move(tensor));
    return static_cast<int>(network.tensors.size()) - 1;
}

int NetworkMaker::input(std::int64_t batch, std::int64_t channels, std::int64_t height, const std::string& name)
{
    const int tensor = addTensor(name, {batch, channels, height, -1}, format::ElementType::Float32);
    network.inputs = {tensor};
    return tensor;
}

int NetworkMaker::floats(const Shape& shape, const std::vector<float>& data)
{
    const int tensor = addTensor("constant", shape, format::ElementType::Float32);
    network.tensors.back()->constant = bytesOf(data);
    return tensor;
}

int NetworkMaker::integers(const Shape& shape, const std::vector<std::int64_t>& data)
{
    const int tensor = addTensor("constant", shape, format::ElementType::Int64);
    network.tensors.back()->constant = bytesOf(data);
    return tensor;
}

void NetworkMaker::output(int tensor, const std::string& name)
{
    network.tensors[static_cast<std::size_t>(tensor)]->name = name;
    network.outputs.push_back(tensor);
}

std::vector<std::uint8_t> NetworkMaker::bytes(int minimumWidth, int maximumWidth)
{
    network.minimum_width = minimumWidth;
    network.maximum_width = maximumWidth;
    return format::writeEngine(network);
}

namespace {

int addConvolution(NetworkMaker& maker, std::mt19937& random, int data, std::int64_t from, std::int64_t to)
{
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.pads = {1, 1, 1, 1};
    convolution.dilations = {1, 1};
    convolution.activation = std::make_unique<format::ActivationT>();
    convolution.activation->kind = format::ActivationKind::Relu;
    const int weights = maker.floats({to, from, 3, 3}, randomFloats(random, to * from * 9, 0.3F));
    const int bias = maker.floats({to}, randomFloats(random, to, 0.1F));
    return maker.add(std::move(convolution), {data, weights, bias});
}

int addPool(NetworkMaker& maker, int data, std::vector<int> kernel)
{
    format::PoolingT pooling;
    pooling.kernel = kernel;
    pooling.strides = std::move(kernel);
    pooling.pads = {0, 0, 0, 0};
    return maker.add(std::move(pooling), {data});
}

/// Zeros of 2 x batch x hidden, the batch read from the shape of `data` as PyTorch's exporter does.
int addZeroState(NetworkMaker& maker, int data, std::int64_t hidden)
{
    constexpr auto integer = format::ElementType::Int64;
    const int shape = maker.add(format::ShapeOfT(), {data}, integer);
    const int batch = maker.add(format::GatherT(), {shape, maker.integers({}, {1})}, integer);
    format::UnsqueezeT unsqueeze;
    unsqueeze.axes = {0};
    const int list = maker.add(unsqueeze, {batch}, integer);
    const int full = maker.add(format::ConcatT(), {maker.list({2}), list, maker.list({hidden})}, integer);
    return maker.add(format::FillT(), {full});
}

int addRecurrent(NetworkMaker& maker, std::mt19937& random, format::CellKind cell, int data, std::int64_t inputs,
    std::int64_t hidden)
{
    const std::int64_t rows = (cell == format::CellKind::Lstm ? 4 : 3) * hidden;
    const int state = addZeroState(maker, data, hidden);
    format::RecurrentT recurrent;
    recurrent.cell = cell;
    recurrent.direction = format::Direction::Bidirectional;
    recurrent.hidden_size = static_cast<int>(hidden);
    recurrent.linear_before_reset = true;
    std::vector<int> operands = {data, maker.floats({2, rows, inputs}, randomFloats(random, 2 * rows * inputs, 0.2F)),
        maker.floats({2, rows, hidden}, randomFloats(random, 2 * rows * hidden, 0.2F)),
        maker.floats({2, 2 * rows}, randomFloats(random, 4 * rows, 0.2F)), state};
    if (cell == format::CellKind::Lstm) {
        operands.push_back(state);
    }
    return maker.addAll(recurrent, operands, 2).front();
}

int addTranspose(NetworkMaker& maker, int data, std::vector<int> permutation)
{
    format::TransposeT transpose;
    transpose.permutation = std::move(permutation);
    return maker.add(transpose, {data});
}

} // namespace

NetworkMaker smallCrnn(format::CellKind cell, int classes, unsigned seed, int channels, int hidden)
{
    std::mt19937 random(seed);
    NetworkMaker maker;
    const int picture = maker.input(1, 3, 16);
    const int first = addPool(maker, addConvolution(maker, random, picture, 3, channels), {4, 2});
    const int second = addPool(maker, addConvolution(maker, random, first, channels, channels + 4), {4, 2});
    format::SqueezeT squeeze;
    squeeze.axes = {2};
    const int columns = addTranspose(maker, maker.add(squeeze, {second}), {2, 0, 1});
    const int sequence = addRecurrent(maker, random, cell, columns, channels + 4, hidden);
    const int features
        = maker.add(format::ReshapeT(), {addTranspose(maker, sequence, {0, 2, 1, 3}), maker.list({0, 0, 2 * hidden})});
    const int weights = maker.floats({2 * hidden, classes}, randomFloats(random, 2 * hidden * classes, 0.5F));
    const int bias = maker.floats({classes}, randomFloats(random, classes, 0.5F));
    const int scores = maker.add(format::FullyConnectedT(), {features, weights, bias});
    maker.output(maker.add(format::SoftmaxT(), {scores}), "output");
    return maker;
}

} // namespace scribo::test
