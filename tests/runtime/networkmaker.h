#pragma once

#include "format/enginefile.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace scribo::test {

using Shape = std::vector<std::int64_t>;

/// Puts a network together, one operation after the other. Everything is known by the index of its tensor.
class NetworkMaker
{
public:
    /// The input of batch x channels x height x any width.
    int input(std::int64_t batch, std::int64_t channels, std::int64_t height, const std::string& name = "input");
    int floats(const Shape& shape, const std::vector<float>& data);
    int integers(const Shape& shape, const std::vector<std::int64_t>& data);
    /// A list of integers.
    int list(const std::vector<std::int64_t>& data) { return integers({static_cast<std::int64_t>(data.size())}, data); }

    /// Adds an operation; its one result is returned.
    template <class Kind>
    int add(Kind kind, std::vector<int> inputs, format::ElementType type = format::ElementType::Float32)
    {
        return addAll(std::move(kind), std::move(inputs), 1, type).front();
    }
    /// Adds an operation with several results.
    template <class Kind>
    std::vector<int> addAll(
        Kind kind, std::vector<int> inputs, int results, format::ElementType type = format::ElementType::Float32)
    {
        auto operation = std::make_unique<format::OperationT>();
        operation->kind.Set(std::move(kind));
        operation->inputs = std::move(inputs);
        operation->name = "node" + std::to_string(network.operations.size());
        for (int i = 0; i < results; ++i) {
            operation->outputs.push_back(addTensor("", {}, type));
        }
        std::vector<int> outputs = operation->outputs;
        network.operations.push_back(std::move(operation));
        return outputs;
    }

    void output(int tensor, const std::string& name);
    /// An engine file of it all.
    std::vector<std::uint8_t> bytes(int minimumWidth, int maximumWidth);

    /// For tests that spoil something.
    format::NetworkT network;

private:
    int addTensor(const std::string& name, const Shape& dims, format::ElementType type);
};

/// A small CRNN with random weights: two convolutions with pooling, a bidirectional recurrent layer
/// whose zero initial state is made by shape arithmetic, a fully connected layer, soft-max.
/// Input 1 x 3 x 16 x width, output width/4 x 1 x `classes`.
NetworkMaker smallCrnn(format::CellKind cell, int classes, unsigned seed, int channels = 20, int hidden = 12);

} // namespace scribo::test
