// Every pass over a network on its own.

#include "passmaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace passtest;
using testing::ElementsAre;

TEST(FoldConstants, WorksOutChains)
{
    Maker maker;
    const int sum = maker.binary(
        BinaryKind::Add, maker.constant({1}, std::vector<float>{2}), maker.constant({1}, std::vector<float>{3}));
    const int product = maker.binary(BinaryKind::Multiply, sum, sum);
    maker.output(maker.binary(BinaryKind::Multiply, 0, product));
    EXPECT_TRUE(foldConstants(maker.network));
    EXPECT_EQ(maker.kinds(), (Kinds{OperationKind::Binary}));
    EXPECT_THAT(floatValues(maker.tensor(product)), ElementsAre(25));
    EXPECT_FALSE(foldConstants(maker.network));
}

TEST(FoldShapes, FixesExtentsThatAreAlwaysTheSame)
{
    Maker maker;
    const int shape = maker.add(ShapeOfT(), {0}, ElementType::Int64);
    GatherT gather;
    const int height = maker.add(gather, {shape, maker.list({2})}, ElementType::Int64);
    const int width = maker.add(gather, {shape, maker.list({3})}, ElementType::Int64);
    ConcatT concat;
    const int target = maker.add(concat, {height, width, maker.list({2})}, ElementType::Int64);
    maker.output(maker.add(ReshapeT(), {0, target}));
    EXPECT_TRUE(foldShapes(maker.network, maker.profile()));
    EXPECT_THAT(integerValues(maker.tensor(height)), ElementsAre(4));
    EXPECT_FALSE(isConstant(maker.tensor(width)));
    const OperationT& reshape = *maker.network.operations.back();
    EXPECT_THAT(integerValues(maker.tensor(reshape.inputs[1])), ElementsAre(4, -1, 2));
    EXPECT_FALSE(foldShapes(maker.network, maker.profile()));
}

TEST(FoldShapes, LeavesTwoOpenExtents)
{
    Maker maker;
    const int shape = maker.add(ShapeOfT(), {0}, ElementType::Int64);
    GatherT gather;
    const int width = maker.add(gather, {shape, maker.list({3})}, ElementType::Int64);
    ConcatT concat;
    const int target = maker.add(concat, {width, width}, ElementType::Int64);
    const int square = maker.add(ExpandT(), {maker.constant({1, 1}, std::vector<float>{1}), target});
    const int again = maker.add(ShapeOfT(), {square}, ElementType::Int64);
    maker.output(maker.add(ReshapeT(), {square, again}));
    EXPECT_FALSE(foldShapes(maker.network, maker.profile()));
}

TEST(RemoveIdentities, DropsWhatChangesNothing)
{
    Maker maker;
    PadT pad;
    pad.begin = {0, 0, 0, 0};
    pad.end = {0, 0, 0, 0};
    CastT cast;
    int data = maker.transpose(0, {0, 1, 2, 3});
    data = maker.add(pad, {data});
    data = maker.add(cast, {data});
    data = maker.add(SqueezeT(), {data});
    data = maker.add(UnsqueezeT(), {data});
    data = maker.add(ConcatT(), {data});
    data = maker.activation(ActivationKind::None, data);
    maker.output(maker.activation(ActivationKind::Relu, data));
    EXPECT_TRUE(removeIdentities(maker.network));
    EXPECT_EQ(maker.kinds(), (Kinds{OperationKind::Activation}));
    EXPECT_THAT(maker.operation(0).inputs, ElementsAre(0));
    EXPECT_FALSE(removeIdentities(maker.network));
}

TEST(RemoveIdentities, KeepsWhatChangesSomething)
{
    Maker maker;
    PadT pad;
    pad.begin = {0, 0, 0, 0};
    pad.end = {0, 0, 0, 1};
    maker.output(maker.transpose(maker.add(pad, {0}), {0, 1, 3, 2}));
    EXPECT_FALSE(removeIdentities(maker.network));
}

TEST(RemoveIdentities, JoinsTransposes)
{
    Maker maker;
    const int first = maker.transpose(0, {3, 0, 1, 2});
    const int second = maker.transpose(first, {1, 0, 3, 2});
    maker.output(second);
    EXPECT_TRUE(removeIdentities(maker.network));
    removeDead(maker.network);
    ASSERT_EQ(maker.kinds(), (Kinds{OperationKind::Transpose}));
    EXPECT_THAT(maker.operation(0).kind.AsTranspose()->permutation, ElementsAre(0, 3, 2, 1));
}

TEST(RemoveIdentities, TransposesThatCancelDisappear)
{
    Maker maker;
    const int first = maker.transpose(0, {1, 2, 3, 0});
    const int second = maker.transpose(first, {3, 0, 1, 2});
    maker.output(maker.activation(ActivationKind::Relu, second));
    EXPECT_TRUE(removeIdentities(maker.network));
    removeDead(maker.network);
    EXPECT_EQ(maker.kinds(), (Kinds{OperationKind::Activation}));
}

TEST(RemoveIdentities, AnOutputKeepsItsName)
{
    Maker maker;
    const int relu = maker.activation(ActivationKind::Relu, 0);
    const int same = maker.transpose(relu, {0, 1, 2, 3});
    maker.network.tensors[static_cast<std::size_t>(same)]->name = "scores";
    maker.output(same);
    EXPECT_TRUE(removeIdentities(maker.network));
    EXPECT_THAT(maker.network.outputs, ElementsAre(relu));
    EXPECT_EQ(maker.tensor(relu).name, "scores");
}

TEST(RemoveIdentities, NeverMakesTheInputAnOutputOrTwoOutputsOne)
{
    Maker maker;
    maker.output(maker.transpose(0, {0, 1, 2, 3}));
    EXPECT_FALSE(removeIdentities(maker.network));
    const int relu = maker.activation(ActivationKind::Relu, 0);
    maker.output(relu);
    maker.output(maker.transpose(relu, {0, 1, 2, 3}));
    EXPECT_FALSE(removeIdentities(maker.network));
}

ChannelAffineT affine()
{
    return {};
}

TEST(FoldAffine, IntoConvolutionWithoutBias)
{
    Maker maker;
    const int scale = maker.constant({2}, std::vector<float>{10, 100});
    const int shift = maker.constant({2}, std::vector<float>{5, 6});
    maker.output(maker.add(affine(), {maker.convolution(0), scale, shift}));
    EXPECT_TRUE(foldAffine(maker.network));
    ASSERT_EQ(maker.kinds(), (Kinds{OperationKind::Convolution}));
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(0).inputs[1])), ElementsAre(10, 20, 300, 400));
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(0).inputs[2])), ElementsAre(5, 6));
    EXPECT_THAT(maker.network.outputs, ElementsAre(maker.operation(0).outputs[0]));
    EXPECT_FALSE(foldAffine(maker.network));
}

TEST(FoldAffine, IntoConvolutionWithBias)
{
    Maker maker;
    const int scale = maker.constant({2}, std::vector<float>{10, 100});
    const int shift = maker.constant({2}, std::vector<float>{5, 6});
    maker.output(maker.add(affine(), {maker.convolution(0, {1, 2}), scale, shift}));
    EXPECT_TRUE(foldAffine(maker.network));
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(0).inputs[2])), ElementsAre(15, 206));
}

TEST(FoldAffine, ProductsAndSumsPerChannel)
{
    Maker maker;
    int data = maker.binary(
        BinaryKind::Multiply, maker.constant({1, 2, 1, 1}, std::vector<float>{2, 3}), maker.convolution(0));
    data = maker.binary(BinaryKind::Add, data, maker.constant({2, 1, 1}, std::vector<float>{4, 5}));
    maker.output(maker.binary(BinaryKind::Multiply, data, maker.constant({}, std::vector<float>{10})));
    EXPECT_TRUE(foldAffine(maker.network));
    ASSERT_EQ(maker.kinds(), (Kinds{OperationKind::Convolution}));
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(0).inputs[1])), ElementsAre(20, 40, 90, 120));
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(0).inputs[2])), ElementsAre(40, 50));
}

TEST(FoldAffine, LeavesWhatIsNotPerChannel)
{
    Maker maker;
    const int column = maker.constant({4, 1}, std::vector<float>{1, 2, 3, 4});
    maker.output(maker.binary(BinaryKind::Add, maker.convolution(0), column));
    EXPECT_FALSE(foldAffine(maker.network));
}

TEST(FoldAffine, LeavesOtherArithmetic)
{
    Maker maker;
    const int number = maker.constant({}, std::vector<float>{2});
    maker.output(maker.binary(BinaryKind::Divide, number, maker.convolution(0)));
    maker.output(maker.binary(BinaryKind::Add, maker.convolution(0), maker.convolution(0)));
    EXPECT_FALSE(foldAffine(maker.network));
}

TEST(FoldAffine, LeavesConvolutionsThatOthersReadOrThatActivate)
{
    Maker maker;
    const int number = maker.constant({}, std::vector<float>{2});
    const int shared = maker.convolution(0);
    maker.output(shared);
    maker.output(maker.binary(BinaryKind::Multiply, shared, number));
    const int activated = maker.convolution(0);
    maker.network.operations.back()->kind.AsConvolution()->activation = std::make_unique<ActivationT>();
    maker.output(maker.binary(BinaryKind::Multiply, activated, number));
    EXPECT_FALSE(foldAffine(maker.network));
}

TEST(FoldAffine, LeavesSharedWeightsAsTheyAre)
{
    Maker maker;
    const int first = maker.convolution(0);
    const int weights = maker.operation(0).inputs[1];
    const int second = maker.convolution(0);
    maker.operation(1).inputs[1] = weights;
    maker.output(maker.binary(BinaryKind::Multiply, first, maker.constant({}, std::vector<float>{2})));
    maker.output(second);
    EXPECT_TRUE(foldAffine(maker.network));
    EXPECT_EQ(maker.operation(1).inputs[1], weights);
    EXPECT_THAT(floatValues(maker.tensor(weights)), ElementsAre(1, 2, 3, 4));
}

TEST(FuseBias, SumsBecomeTheBias)
{
    Maker maker;
    int data = maker.binary(BinaryKind::Add, maker.constant({2}, std::vector<float>{1, 2}), maker.fullyConnected());
    maker.output(maker.binary(BinaryKind::Add, data, maker.constant({}, std::vector<float>{10})));
    EXPECT_TRUE(fuseBias(maker.network));
    ASSERT_EQ(maker.kinds(), (Kinds{OperationKind::Transpose, OperationKind::FullyConnected}));
    ASSERT_EQ(maker.operation(1).inputs.size(), 3u);
    EXPECT_THAT(floatValues(maker.tensor(maker.operation(1).inputs[2])), ElementsAre(11, 12));
    EXPECT_FALSE(fuseBias(maker.network));
}

TEST(FuseBias, LeavesWhatIsNoBias)
{
    Maker maker;
    const int rows = maker.constant({4, 2}, std::vector<float>(8, 1));
    const int layer = maker.fullyConnected();
    maker.output(maker.binary(BinaryKind::Add, layer, rows));
    const int product = maker.fullyConnected();
    maker.output(maker.binary(BinaryKind::Multiply, product, maker.constant({2}, std::vector<float>{1, 2})));
    const int shared = maker.fullyConnected();
    maker.output(shared);
    maker.output(maker.binary(BinaryKind::Add, shared, maker.constant({2}, std::vector<float>{1, 2})));
    const int activated = maker.fullyConnected();
    maker.network.operations.back()->kind.AsFullyConnected()->activation = std::make_unique<ActivationT>();
    maker.output(maker.binary(BinaryKind::Add, activated, maker.constant({2}, std::vector<float>{1, 2})));
    EXPECT_FALSE(fuseBias(maker.network));
}

TEST(FuseActivations, IntoConvolutionAndFullyConnected)
{
    Maker maker;
    maker.output(maker.activation(ActivationKind::LeakyRelu, maker.convolution(0), 0.25f));
    maker.output(maker.activation(ActivationKind::Tanh, maker.fullyConnected()));
    EXPECT_TRUE(fuseActivations(maker.network));
    ASSERT_EQ(
        maker.kinds(), (Kinds{OperationKind::Convolution, OperationKind::Transpose, OperationKind::FullyConnected}));
    const ActivationT& activation = *maker.operation(0).kind.AsConvolution()->activation;
    EXPECT_EQ(activation.kind, ActivationKind::LeakyRelu);
    EXPECT_EQ(activation.alpha, 0.25f);
    EXPECT_EQ(maker.operation(2).kind.AsFullyConnected()->activation->kind, ActivationKind::Tanh);
    EXPECT_FALSE(fuseActivations(maker.network));
}

TEST(FuseActivations, OnlyOneAndOnlyForASoleReader)
{
    Maker maker;
    const int twice = maker.activation(ActivationKind::Relu, maker.convolution(0));
    maker.output(maker.activation(ActivationKind::Tanh, twice));
    const int shared = maker.convolution(0);
    maker.output(shared);
    maker.output(maker.activation(ActivationKind::Relu, shared));
    maker.output(maker.activation(ActivationKind::Relu, 0));
    EXPECT_TRUE(fuseActivations(maker.network));
    EXPECT_EQ(maker.kinds(),
        (Kinds{OperationKind::Convolution, OperationKind::Activation, OperationKind::Convolution,
            OperationKind::Activation, OperationKind::Activation}));
    EXPECT_FALSE(fuseActivations(maker.network));
}

/// An LSTM over a sequence of 8 values from the picture, with these initial states.
int addLstm(Maker& maker, int hidden, int cell)
{
    ReshapeT flatten;
    const int flat = maker.add(flatten, {0, maker.list({1, 8, -1})});
    const int sequence = maker.transpose(flat, {2, 0, 1});
    RecurrentT layer;
    layer.hidden_size = 1;
    const int weights = maker.constant({1, 4, 8}, std::vector<float>(32, 0.1f));
    const int recurrent = maker.constant({1, 4, 1}, std::vector<float>(4, 0.1f));
    return maker.add(layer, {sequence, weights, recurrent, -1, hidden, cell});
}

TEST(DropZeroStates, OnlyThoseThatAreZero)
{
    Maker maker;
    const int zero = maker.constant({1, 1, 1}, std::vector<float>{0});
    const int one = maker.constant({1, 1, 1}, std::vector<float>{1});
    maker.output(addLstm(maker, zero, one));
    EXPECT_TRUE(dropZeroStates(maker.network));
    EXPECT_EQ(maker.network.operations.back()->inputs[4], -1);
    EXPECT_EQ(maker.network.operations.back()->inputs[5], one);
    EXPECT_FALSE(dropZeroStates(maker.network));
}

TEST(RemoveDead, DropsOperationsAndTensorsAndRenumbers)
{
    Maker maker;
    const int dead = maker.activation(ActivationKind::Tanh, 0);
    maker.activation(ActivationKind::Relu, dead);
    maker.output(maker.activation(ActivationKind::Sigmoid, 0));
    EXPECT_TRUE(removeDead(maker.network));
    EXPECT_EQ(maker.kinds(), (Kinds{OperationKind::Activation}));
    EXPECT_EQ(maker.network.tensors.size(), 2u);
    EXPECT_THAT(maker.network.inputs, ElementsAre(0));
    EXPECT_THAT(maker.network.outputs, ElementsAre(1));
    EXPECT_THAT(maker.operation(0).outputs, ElementsAre(1));
    EXPECT_FALSE(removeDead(maker.network));
}

TEST(RemoveDead, UnreadStatesOfRecurrentLayersAreLeftOut)
{
    Maker maker;
    const int sequence = addLstm(maker, -1, -1);
    OperationT& layer = *maker.network.operations.back();
    layer.outputs = {sequence, addTensor(maker.network, {}), addTensor(maker.network, {})};
    maker.output(sequence);
    EXPECT_TRUE(removeDead(maker.network));
    EXPECT_THAT(maker.network.operations.back()->outputs, ElementsAre(maker.network.outputs.front(), -1, -1));
}

} // namespace
