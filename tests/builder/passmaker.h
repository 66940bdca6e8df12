#pragma once

#include "passes/passes.h"

#include <gtest/gtest.h>

/// What the tests of the passes put their networks together with.
namespace passtest {

using namespace scribo::format;
using namespace scribo::builder;
using Kinds = std::vector<OperationKind>;

/// Puts a network together; its input is tensor 0, 1 x 2 x 4 x W.
class Maker
{
public:
    Maker()
    {
        TensorT picture;
        picture.name = "picture";
        picture.dims = {1, 2, 4, -1};
        network.inputs = {addTensor(network, picture)};
    }

    template <class Values>
    int constant(Extents dims, const Values& values)
    {
        return addTensor(network, makeConstant("constant", std::move(dims), values));
    }

    int list(const std::vector<std::int64_t>& values)
    {
        return constant({static_cast<std::int64_t>(values.size())}, values);
    }

    template <class Kind>
    int add(Kind kind, std::vector<int> inputs, ElementType type = ElementType::Float32)
    {
        TensorT output;
        output.name = "tensor" + std::to_string(network.tensors.size());
        output.type = type;
        auto operation = std::make_unique<OperationT>();
        operation->kind.Set(std::move(kind));
        operation->inputs = std::move(inputs);
        operation->outputs = {addTensor(network, output)};
        network.operations.push_back(std::move(operation));
        return network.operations.back()->outputs.front();
    }

    /// A 1x1 convolution from 2 channels to 2, with weights 1 2 3 4.
    int convolution(int data, std::vector<float> bias = {})
    {
        ConvolutionT convolution;
        convolution.strides = {1, 1};
        convolution.dilations = {1, 1};
        convolution.pads = {0, 0, 0, 0};
        std::vector<int> inputs = {data, constant({2, 2, 1, 1}, std::vector<float>{1, 2, 3, 4})};
        if (!bias.empty()) {
            inputs.push_back(constant({2}, bias));
        }
        return add(convolution, inputs);
    }

    /// From the 4 rows of the picture, turned to the back, to 2 columns.
    int fullyConnected(std::vector<float> bias = {})
    {
        const int turned = transpose(0, {0, 1, 3, 2});
        std::vector<int> inputs = {turned, constant({4, 2}, std::vector<float>(8, 0.5f))};
        if (!bias.empty()) {
            inputs.push_back(constant({2}, bias));
        }
        return add(FullyConnectedT(), inputs);
    }

    int transpose(int data, std::vector<int> permutation)
    {
        TransposeT transpose;
        transpose.permutation = std::move(permutation);
        return add(transpose, {data});
    }

    int binary(BinaryKind kind, int left, int right)
    {
        BinaryT binary;
        binary.kind = kind;
        return add(binary, {left, right});
    }

    int activation(ActivationKind kind, int data, float alpha = 0, float beta = 0)
    {
        ActivationT activation;
        activation.kind = kind;
        activation.alpha = alpha;
        activation.beta = beta;
        return add(activation, {data});
    }

    void output(int tensor) { network.outputs.push_back(tensor); }

    Kinds kinds() const
    {
        Kinds list;
        for (const auto& operation : network.operations) {
            list.push_back(operation->kind.type);
        }
        return list;
    }

    OperationT& operation(std::size_t i) { return *network.operations[i]; }
    const TensorT& tensor(int i) const { return *network.tensors[static_cast<std::size_t>(i)]; }

    Profile profile()
    {
        const auto found = profileNetwork(network, {4, 12});
        EXPECT_TRUE(found) << found.error().message;
        return found.value_or(Profile());
    }

    NetworkT network;
};

} // namespace passtest
