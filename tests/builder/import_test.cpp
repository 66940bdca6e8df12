// Models that are refused as a whole, each with the reason; and the forms that PyTorch's exporter does not write.

#include "faultsof.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using scribo::builder::buildNetwork;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Integers = std::vector<std::int64_t>;

TEST(ImportFile, NotAModel)
{
    EXPECT_THAT(faultsOf(""), ElementsAre("the file is empty"));
    EXPECT_THAT(faultsOf("no model"), ElementsAre("this is not an ONNX model, or it is damaged"));
    EXPECT_THAT(faultsOf(onnx::ModelProto().SerializeAsString()), ElementsAre("the file is empty"));
    onnx::ModelProto model;
    model.set_ir_version(7);
    EXPECT_THAT(faultsOf(model.SerializeAsString()), ElementsAre("this is not an ONNX model: it holds no operations"));
}

TEST(ImportFile, Opsets)
{
    for (int opset : {7, 13, 21}) {
        ModelMaker maker(opset);
        maker.node("Relu", {"x"}, {"y"});
        EXPECT_THAT(faultsOf(maker), IsEmpty()) << opset;
    }
    for (int opset : {0, 6, 22}) {
        ModelMaker maker(opset);
        maker.node("Relu", {"x"}, {"y"});
        EXPECT_THAT(faultsOf(maker),
            ElementsAre("the model is written for opset " + std::to_string(opset) + "; opsets 7 to 21 are supported"));
    }
    ModelMaker maker;
    maker.node("Relu", {"x"}, {"y"});
    maker.model.mutable_opset_import(0)->set_domain("com.example");
    EXPECT_THAT(faultsOf(maker), ElementsAre("the model does not say which opset it is written for"));
    maker.model.mutable_opset_import(0)->set_domain("ai.onnx");
    EXPECT_THAT(faultsOf(maker), IsEmpty());
}

TEST(ImportFile, Widths)
{
    ModelMaker maker;
    maker.node("Relu", {"x"}, {"y"});
    for (const scribo::builder::WidthRange widths : {scribo::builder::WidthRange{0, 5}, {6, 5}, {1, 4097}}) {
        EXPECT_THAT(faultsOf(maker.bytes(), widths), ElementsAre(HasSubstr("make no sense")));
    }
    EXPECT_THAT(faultsOf(maker.bytes(), {5, 5}), IsEmpty());
}

TEST(ImportInput, MustBeOnePictureOfFloats)
{
    ModelMaker maker;
    maker.node("Relu", {"x"}, {"y"});
    *maker.graph().add_input() = maker.graph().input(0);
    maker.graph().mutable_input(1)->set_name("z");
    EXPECT_THAT(faultsOf(maker), ElementsAre("the model has 2 inputs; exactly one, the picture, is supported"));
    maker.graph().clear_input();
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("the model has 0 inputs; exactly one, the picture, is supported",
            "operation 'Relu' of node 'y': it reads 'x', which nothing before it gives"));
}

TEST(ImportInput, MissingWithAnOutputThatNeedsNone)
{
    ModelMaker maker(17);
    maker.graph().clear_input();
    maker.constant("vector", {3}, {1, 2, 3});
    setAttribute(maker.node("LayerNormalization", {"vector", "vector"}, {"y"}), "axis", std::int64_t(-9));
    EXPECT_THAT(faultsOf(maker), ElementsAre("the model has 0 inputs; exactly one, the picture, is supported"));
}

TEST(ImportInput, TypeAndShape)
{
    ModelMaker maker;
    maker.node("Relu", {"x"}, {"y"});
    maker.graph().mutable_input(0)->mutable_type()->mutable_tensor_type()->set_elem_type(onnx::TensorProto::UINT8);
    EXPECT_THAT(faultsOf(maker), ElementsAre("input 'x' is not a tensor of 32-bit floats"));
    maker.inputShape({1, 3, -1});
    EXPECT_THAT(
        faultsOf(maker), ElementsAre("input 'x' has 3 dimensions; batch, channels, height and width are needed"));
    maker.inputShape({2, -1, 8, 100});
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("input 'x' has a batch of 2; 1 is supported",
            "input 'x' must have a fixed number of channels and a fixed height",
            "input 'x' has a fixed width of 100; export the model with a dynamic width (dynamic_axes)"));
    maker.inputShape({1, 3, -1, -1});
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("input 'x' leaves the height open; say which one the model was trained with (--height)"));
    maker.inputShape({-1, 3, 8, -1});
    EXPECT_THAT(faultsOf(maker), IsEmpty()) << "an open batch is run with 1";
}

TEST(ImportInput, ConstantsAmongTheInputsAreNoInputs)
{
    ModelMaker maker;
    maker.constant("c", {1}, {2});
    maker.graph().add_input()->set_name("c");
    maker.node("Mul", {"x", "c"}, {"y"});
    EXPECT_THAT(faultsOf(maker), IsEmpty());
}

TEST(ImportOutput, MustBeComputedFloats)
{
    ModelMaker maker;
    maker.constant("c", {1}, {2});
    maker.node("Relu", {"x"}, {"r"});
    maker.node("Shape", {"x"}, {"s"});
    maker.node("Identity", {"r"}, {"y"});
    for (const char* name : {"x", "c", "s", "r", "nothing"}) {
        maker.graph().add_output()->set_name(name);
    }
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("output 'x' is not computed from the picture", "output 'c' is not computed from the picture",
            "output 's' is not a tensor of floats", "output 'r' is the same as output 'y'",
            "output 'nothing' is given by no operation"));
    maker.graph().clear_output();
    EXPECT_THAT(faultsOf(maker), ElementsAre("the model has no outputs"));
}

TEST(ImportOutput, ThatFoldsToAConstant)
{
    ModelMaker maker;
    maker.integers("channels", {1});
    maker.node("Shape", {"x"}, {"s"});
    maker.node("Gather", {"s", "channels"}, {"g"});
    setAttribute(maker.node("Cast", {"g"}, {"y"}), "to", std::int64_t(onnx::TensorProto::FLOAT));
    EXPECT_THAT(faultsOf(maker), ElementsAre("output 'y' is not computed from the picture"));
}

TEST(ImportNodes, EveryUnsupportedOperationIsNamed)
{
    ModelMaker maker;
    maker.node("NonMaxSuppression", {"x"}, {"a"}, "/det/nms");
    maker.node("Relu", {"a"}, {"b"});
    maker.node("FusedConv", {"b"}, {"c"}).set_domain("com.microsoft");
    maker.node("ConvTranspose", {"x"}, {"y"}, "/up");
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("operation 'NonMaxSuppression' of node '/det/nms' is not supported",
            "operation 'com.microsoft.FusedConv' of node 'c' is not supported",
            "operation 'ConvTranspose' of node '/up' is not supported"));
}

TEST(ImportNodes, GraphFaults)
{
    ModelMaker maker;
    maker.node("Relu", {"later"}, {"a"}, "first");
    maker.node("Relu", {"x"}, {"later"});
    maker.node("Relu", {"x"}, {"later"});
    maker.node("Add", {"x", ""}, {"b"}, "half");
    maker.node("Relu", {"x", "x"}, {"y"}, "double");
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("operation 'Relu' of node 'first': it reads 'later', which nothing before it gives",
            "two values of the model are called 'later'", "operation 'Add' of node 'half': input 1 is missing",
            "operation 'Relu' of node 'double': it has 2 inputs; at most 1 are supported"));
}

TEST(ImportNodes, OutputsThatSomeoneReadsMustBeSupported)
{
    ModelMaker maker;
    onnx::NodeProto& pool = maker.node("MaxPool", {"x"}, {"y", "indices"}, "pool");
    setAttribute(pool, "kernel_shape", Integers{2, 2});
    EXPECT_THAT(faultsOf(maker), IsEmpty()) << "nobody reads the indices";
    maker.node("Relu", {"indices"}, {"z"});
    EXPECT_THAT(
        faultsOf(maker), ElementsAre("operation 'MaxPool' of node 'pool': its output 'indices' is not supported"));
}

TEST(ImportNodes, AttributesThatNobodyKnows)
{
    const auto faults = faultsOfNode("Relu", {}, [](onnx::NodeProto& node) {
        setAttribute(node, "colour", std::int64_t(1));
        setAttribute(node, "shade", 0.5f);
    });
    EXPECT_THAT(faults,
        ElementsAre("operation 'Relu' of node 'node': attribute 'colour' is not supported",
            "operation 'Relu' of node 'node': attribute 'shade' is not supported"));
    EXPECT_THAT(faultsOfNode("LeakyRelu", {}, [](auto& node) { setAttribute(node, "alpha", "0.1"); }),
        ElementsAre("operation 'LeakyRelu' of node 'node': attribute 'alpha' is not of the type that it should be"));
}

TEST(ImportConstants, ThatCannotBeRead)
{
    ModelMaker maker;
    maker.node("Relu", {"x"}, {"y"});
    maker.constant("short", {4}, {1, 2, 3});
    maker.constant("empty", {0}, {});
    maker.constant("negative", {-2}, {1});
    maker.constant("huge", {1 << 20, 1 << 20}, {1});
    maker.constant("outside", {1}, {1});
    maker.graph().mutable_initializer(4)->set_data_location(onnx::TensorProto::EXTERNAL);
    maker.constant("text", {1}, {1});
    maker.graph().mutable_initializer(5)->set_data_type(onnx::TensorProto::STRING);
    maker.constant("unknown", {1}, {1});
    maker.graph().mutable_initializer(6)->set_data_type(99);
    maker.constant("odd", {1}, {});
    maker.graph().mutable_initializer(7)->set_raw_data("12345");
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("constant 'short' does not hold as many values as its dimensions say", "constant 'empty' is empty",
            "constant 'negative' has impossible dimensions", "constant 'huge' has impossible dimensions",
            "constant 'outside' keeps its data in another file; export the model as a single file",
            "constant 'text' has an element type that is not supported (STRING)",
            "constant 'unknown' has an element type that is not supported (99)",
            "constant 'odd' does not hold as many values as its dimensions say"));
    maker.graph().clear_initializer();
    maker.graph().add_sparse_initializer();
    EXPECT_THAT(faultsOf(maker), ElementsAre("the model holds sparse constants, which are not supported"));
}

TEST(ImportWeights, AreNumbers)
{
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float infinite = std::numeric_limits<float>::infinity();
    ModelMaker maker;
    maker.node("Add", {"x", "mask"}, {"masked"});
    maker.node("Mul", {"masked", "weight"}, {"y"});
    maker.constant("mask", {3, 1, 1}, {0, 1, -infinite});
    maker.constant("weight", {3, 1, 1}, {1, 2, 3});
    EXPECT_THAT(faultsOf(maker), IsEmpty());
    maker.constant("unread", {1}, {none});
    EXPECT_THAT(faultsOf(maker), IsEmpty());
    ModelMaker spoilt;
    spoilt.node("Mul", {"x", "weight"}, {"y"});
    spoilt.constant("weight", {3, 1, 1}, {1, 2, none});
    EXPECT_THAT(faultsOf(spoilt), ElementsAre("constant 'weight' holds a value that is not a number"));
}

TEST(ImportShapes, AreCheckedAtEveryWidth)
{
    ModelMaker maker;
    onnx::NodeProto& pool = maker.node("MaxPool", {"x"}, {"y"}, "pool");
    setAttribute(pool, "kernel_shape", Integers{1, 40});
    EXPECT_THAT(faultsOf(maker), ElementsAre(HasSubstr("at width 32: Pooling 'pool': ")));
    EXPECT_THAT(faultsOf(maker.bytes(), {40, 64}), IsEmpty());
}

TEST(ImportShapes, ThatDoNotFitAreTheNodesFault)
{
    const Faults faults = faultsOfNode("Add", {"vector"});
    EXPECT_THAT(faults, ElementsAre(HasSubstr("at width 32: Binary 'node': ")));
}

/// A condition on the width, and two branches.
onnx::NodeProto& addIf(ModelMaker& maker, std::int64_t compared)
{
    maker.integers("compared", {compared});
    maker.integers("last", {3});
    maker.node("Shape", {"x"}, {"shape"});
    maker.node("Gather", {"shape", "last"}, {"width"});
    maker.node("Equal", {"width", "compared"}, {"condition"});
    onnx::NodeProto& node = maker.node("If", {"condition"}, {"y"}, "choice");
    for (const char* name : {"then_branch", "else_branch"}) {
        onnx::AttributeProto& attribute = *node.add_attribute();
        attribute.set_name(name);
        attribute.set_type(onnx::AttributeProto::GRAPH);
        onnx::NodeProto& inner = *attribute.mutable_g()->add_node();
        inner.set_op_type(std::string(name) == "then_branch" ? "Relu" : "Tanh");
        inner.add_input("x");
        inner.add_output(std::string(name) + "_result");
        attribute.mutable_g()->add_output()->set_name(inner.output(0));
    }
    return node;
}

TEST(ImportBranches, TheOneThatIsAlwaysTaken)
{
    ModelMaker maker;
    addIf(maker, 1000);
    const std::string bytes = maker.bytes();
    const auto built = buildNetwork(bytes.data(), bytes.size(), {{32, 64}, ""});
    ASSERT_TRUE(built) << testing::PrintToString(built.error());
    const auto& network = *built;
    ASSERT_EQ(network->operations.size(), 1u);
    EXPECT_EQ(network->operations[0]->kind.AsActivation()->kind, scribo::format::ActivationKind::Tanh);
    EXPECT_EQ(network->tensors[static_cast<std::size_t>(network->outputs[0])]->name, "y");
}

TEST(ImportBranches, OneThatDependsOnTheWidthIsRefused)
{
    ModelMaker maker;
    addIf(maker, 40);
    EXPECT_THAT(faultsOf(maker),
        ElementsAre("operation 'If' of node 'choice': a branch that is not always the same is not supported"));
}

TEST(ImportNetwork, TellsItsOriginAndShapes)
{
    const std::string bytes = smallRecogniser(5).bytes();
    const auto built = buildNetwork(bytes.data(), bytes.size(), {{32, 320}, "small.onnx"});
    ASSERT_TRUE(built) << testing::PrintToString(built.error());
    const auto& network = *built;
    EXPECT_EQ(network->source, "small.onnx");
    EXPECT_THAT(network->builder, HasSubstr("scribo-engine "));
    EXPECT_EQ(network->minimum_width, 32);
    EXPECT_EQ(network->maximum_width, 320);
    const auto& output = *network->tensors[static_cast<std::size_t>(network->outputs.at(0))];
    EXPECT_EQ(output.name, "output");
    EXPECT_THAT(output.dims, ElementsAre(-1, 1, 5));
}

} // namespace
