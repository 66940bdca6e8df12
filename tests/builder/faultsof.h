#pragma once

#include "build.h"
#include "modelmaker.h"

#include <gtest/gtest.h>

using scribo::Faults;

/// What the builder says about a model; nothing when it gives a network.
inline Faults faultsOf(const std::string& bytes, scribo::builder::WidthRange widths = {32, 64})
{
    const auto network = scribo::builder::buildNetwork(bytes.data(), bytes.size(), {widths, "test.onnx"});
    if (network) {
        EXPECT_NE(*network, nullptr);
        return {};
    }
    EXPECT_FALSE(network.error().empty());
    return network.error();
}

inline Faults faultsOf(const ModelMaker& maker)
{
    return faultsOf(maker.bytes());
}

/// The faults of a model of one node with attributes, reading 'x' and what else is given.
template <class Prepare>
Faults faultsOfNode(const std::string& operation, std::vector<std::string> inputs, Prepare prepare, int opset = 13)
{
    ModelMaker maker(opset);
    maker.constant("filters", {4, 3, 3, 3}, std::vector<float>(108, 0.1f));
    maker.constant("number", {}, {2});
    maker.constant("vector", {3}, {1, 2, 3});
    maker.constant("weights", {1, 8, 3}, std::vector<float>(24, 0.1f));
    maker.constant("recurrent", {1, 8, 2}, std::vector<float>(16, 0.1f));
    maker.integers("integers", {1, 2});
    inputs.insert(inputs.begin(), "x");
    prepare(maker.node(operation, inputs, {"y"}, "node"));
    return faultsOf(maker);
}

inline Faults faultsOfNode(const std::string& operation, const std::vector<std::string>& inputs)
{
    return faultsOfNode(operation, inputs, [](onnx::NodeProto&) {});
}
