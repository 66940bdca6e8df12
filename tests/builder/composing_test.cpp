// The passes that recognise what exporters write out.

#include "passes/scalaraffine.h"
#include "passmaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace passtest;
using testing::ElementsAre;

int number(Maker& maker, float value)
{
    return maker.constant({}, std::vector<float>{value});
}

/// Composes until there is nothing left to do, as the builder does.
void composeAll(NetworkT& network)
{
    while (scaleActivations(network) | composeActivations(network)) {
        removeDead(network);
    }
}

void expectActivation(const OperationT& operation, ActivationKind kind, float scale, float shift)
{
    ASSERT_EQ(operation.kind.type, OperationKind::Activation);
    EXPECT_EQ(operation.kind.AsActivation()->kind, kind);
    EXPECT_FLOAT_EQ(operation.kind.AsActivation()->scale, scale);
    EXPECT_FLOAT_EQ(operation.kind.AsActivation()->shift, shift);
}

TEST(ComposeActivations, RecognisesSwishAndHardSwish)
{
    Maker maker;
    const int data = maker.activation(ActivationKind::Relu, 0);
    maker.output(maker.binary(BinaryKind::Multiply, data, maker.activation(ActivationKind::Sigmoid, data)));
    maker.output(
        maker.binary(BinaryKind::Multiply, maker.activation(ActivationKind::HardSigmoid, data, 1.0f / 6, 0.5f), data));
    EXPECT_TRUE(composeActivations(maker.network));
    removeDead(maker.network);
    ASSERT_EQ(maker.kinds(), (Kinds(3, OperationKind::Activation)));
    EXPECT_EQ(maker.operation(1).kind.AsActivation()->kind, ActivationKind::Swish);
    EXPECT_EQ(maker.operation(2).kind.AsActivation()->kind, ActivationKind::HardSwish);
}

TEST(ComposeActivations, LeavesOtherProducts)
{
    Maker maker;
    const int data = maker.activation(ActivationKind::Relu, 0);
    maker.output(maker.binary(BinaryKind::Multiply, data, maker.activation(ActivationKind::Sigmoid, 0)));
    maker.output(maker.binary(BinaryKind::Add, data, maker.activation(ActivationKind::Sigmoid, data)));
    maker.output(
        maker.binary(BinaryKind::Multiply, data, maker.activation(ActivationKind::HardSigmoid, data, 0.2f, 0.5f)));
    maker.output(maker.binary(BinaryKind::Multiply, data, maker.activation(ActivationKind::Tanh, data)));
    EXPECT_FALSE(composeActivations(maker.network));
}

/// x + 3, cut to 0 to 6, times x: six times the hard swish.
int hardSwishTimesSix(Maker& maker, int data, bool rectified, float offset = 3, float upper = 6)
{
    int sum = maker.binary(BinaryKind::Add, data, number(maker, offset));
    if (rectified) {
        sum = maker.activation(ActivationKind::Relu, sum);
    }
    const int cut = maker.activation(ActivationKind::Clip, sum, rectified ? -1e30f : 0, upper);
    return maker.binary(BinaryKind::Multiply, data, cut);
}

TEST(ComposeActivations, HardSwishWithAQuotientBehind)
{
    for (bool rectified : {false, true}) {
        Maker maker;
        maker.output(maker.binary(BinaryKind::Divide, hardSwishTimesSix(maker, 0, rectified), number(maker, 6)));
        composeAll(maker.network);
        ASSERT_EQ(maker.network.operations.size(), 1u);
        expectActivation(maker.operation(0), ActivationKind::HardSwish, 1, 0);
    }
}

TEST(ComposeActivations, HardSwishWithTheSixthInTheGate)
{
    Maker maker;
    const int sum = maker.binary(BinaryKind::Add, number(maker, 3), 0);
    const int cut = maker.activation(ActivationKind::Clip, sum, 0, 6);
    const int gate = maker.binary(BinaryKind::Multiply, cut, number(maker, 1.0f / 6));
    const int product = maker.binary(BinaryKind::Multiply, gate, 0);
    const int scaled = maker.binary(BinaryKind::Multiply, product, number(maker, 2));
    maker.output(maker.binary(BinaryKind::Subtract, scaled, number(maker, 0.5f)));
    composeAll(maker.network);
    ASSERT_EQ(maker.network.operations.size(), 1u);
    expectActivation(maker.operation(0), ActivationKind::HardSwish, 2, -0.5f);
}

TEST(ComposeActivations, LeavesWhatOnlyLooksLikeAHardSwish)
{
    Maker maker;
    maker.output(hardSwishTimesSix(maker, 0, false, 2));
    maker.output(hardSwishTimesSix(maker, 0, false, 3, 5));
    const int other = maker.activation(ActivationKind::Tanh, 0);
    const int cut
        = maker.activation(ActivationKind::Clip, maker.binary(BinaryKind::Add, other, number(maker, 3)), 0, 6);
    maker.output(maker.binary(BinaryKind::Multiply, 0, cut));
    const int raised = maker.activation(ActivationKind::Sigmoid, 0);
    maker.operation(maker.network.operations.size() - 1).kind.AsActivation()->shift = 1;
    maker.output(maker.binary(BinaryKind::Multiply, 0, raised));
    EXPECT_FALSE(composeActivations(maker.network));
}

TEST(ComposeActivations, ARectifierBeforeACutThatAllowsNegativesIsNoCutFromZero)
{
    Maker maker;
    maker.output(maker.activation(ActivationKind::Clip, maker.activation(ActivationKind::Relu, 0), -5, -2));
    EXPECT_FALSE(composeActivations(maker.network));
}

TEST(ScaleActivations, TakeWhatFollowsIn)
{
    Maker maker;
    const int tanh = maker.activation(ActivationKind::Tanh, 0);
    const int doubled = maker.binary(BinaryKind::Multiply, tanh, number(maker, 2));
    const int reversed = maker.binary(BinaryKind::Subtract, number(maker, 1), doubled);
    maker.output(maker.binary(BinaryKind::Divide, reversed, number(maker, 4)));
    EXPECT_TRUE(scaleActivations(maker.network));
    ASSERT_EQ(maker.network.operations.size(), 1u);
    expectActivation(maker.operation(0), ActivationKind::Tanh, -0.5f, 0.25f);
    EXPECT_FALSE(scaleActivations(maker.network));
}

TEST(ScaleActivations, LeaveOtherArithmeticAndOtherReaders)
{
    Maker maker;
    const int tanh = maker.activation(ActivationKind::Tanh, 0);
    maker.output(maker.binary(BinaryKind::Divide, number(maker, 1), tanh));
    maker.output(maker.binary(BinaryKind::Multiply, tanh, number(maker, 2)));
    const int alone = maker.activation(ActivationKind::Tanh, 0);
    maker.output(maker.binary(BinaryKind::Divide, number(maker, 1), alone));
    maker.output(maker.binary(BinaryKind::Divide, maker.activation(ActivationKind::Tanh, 0), number(maker, 0)));
    maker.output(maker.binary(BinaryKind::Maximum, maker.activation(ActivationKind::Tanh, 0), number(maker, 0)));
    maker.output(maker.binary(BinaryKind::Multiply, maker.activation(ActivationKind::Tanh, 0),
        maker.constant({1, 2, 1, 1}, std::vector<float>{1, 2})));
    EXPECT_FALSE(scaleActivations(maker.network));
}

TEST(ScaleActivations, LeaveNumbersThatWouldOverflow)
{
    Maker maker;
    const int first
        = maker.binary(BinaryKind::Multiply, maker.activation(ActivationKind::Tanh, 0), number(maker, 1e30f));
    maker.output(maker.binary(BinaryKind::Multiply, first, number(maker, 1e30f)));
    EXPECT_TRUE(scaleActivations(maker.network));
    EXPECT_EQ(maker.kinds(), (Kinds{OperationKind::Activation, OperationKind::Binary}));
}

TEST(SimplifyScalars, ConstantsOfOneElementLoseTheirAxes)
{
    Maker maker;
    maker.output(maker.binary(BinaryKind::Add, 0, maker.constant({1, 1}, std::vector<float>{2})));
    EXPECT_TRUE(simplifyScalars(maker.network, maker.profile()));
    EXPECT_TRUE(maker.tensor(maker.operation(0).inputs[1]).dims.empty());
    EXPECT_FALSE(simplifyScalars(maker.network, maker.profile()));
}

TEST(SimplifyScalars, UnlessTheResultHasItsAxesFromThem)
{
    Maker maker;
    maker.output(maker.binary(BinaryKind::Add, 0, maker.constant({1, 1, 1, 1, 1}, std::vector<float>{2})));
    maker.output(maker.binary(BinaryKind::Add, 0, maker.constant({1, 2, 1, 1}, std::vector<float>{2, 3})));
    EXPECT_FALSE(simplifyScalars(maker.network, maker.profile()));
}

TEST(RemoveIdentities, SumsWithZeroAndProductsWithOne)
{
    Maker maker;
    const int data = maker.activation(ActivationKind::Relu, 0);
    const int one = maker.binary(BinaryKind::Multiply, number(maker, 1), data);
    const int two = maker.binary(BinaryKind::Divide, one, number(maker, 1));
    const int three = maker.binary(BinaryKind::Subtract, two, number(maker, 0));
    maker.output(maker.binary(BinaryKind::Add, number(maker, 0), three));
    EXPECT_TRUE(removeIdentities(maker.network));
    EXPECT_EQ(maker.network.operations.size(), 1u);
    maker.output(maker.binary(BinaryKind::Subtract, number(maker, 0), data));
    maker.output(maker.binary(BinaryKind::Divide, number(maker, 1), data));
    EXPECT_FALSE(removeIdentities(maker.network));
}

/// The pieces of a layer normalisation that is written out; each can be made wrong.
struct WrittenOut
{
    std::vector<int> meanAxes = {-1};
    std::vector<int> squareAxes = {3};
    bool power = true;
    float exponent = 2;
    float epsilon = 1e-4f;
    std::vector<float> scale = {1, 2, 3, 4};
    std::vector<float> shift = {5, 6, 7, 8};

    void write(Maker& maker) const
    {
        const int data = maker.transpose(0, {0, 1, 3, 2});
        const int centred = maker.binary(BinaryKind::Subtract, data, mean(maker, data, meanAxes));
        const int squares = power ? maker.binary(BinaryKind::Power, centred, number(maker, exponent))
                                  : maker.binary(BinaryKind::Multiply, centred, centred);
        const int sum = maker.binary(BinaryKind::Add, mean(maker, squares, squareAxes), number(maker, epsilon));
        int result = maker.binary(BinaryKind::Divide, centred, maker.add(UnaryT(), {sum}));
        result = maker.binary(BinaryKind::Multiply, row(maker, scale), result);
        if (!shift.empty()) {
            result = maker.binary(BinaryKind::Add, result, row(maker, shift));
        }
        maker.output(result);
    }

    static int mean(Maker& maker, int data, const std::vector<int>& axes)
    {
        ReductionT reduction;
        reduction.kind = ReductionKind::Mean;
        reduction.axes = axes;
        return maker.add(reduction, {data});
    }

    static int row(Maker& maker, const std::vector<float>& values)
    {
        return maker.constant({static_cast<std::int64_t>(values.size())}, values);
    }
};

TEST(ComposeLayerNormalisation, WrittenOutInAnyWay)
{
    WrittenOut product;
    product.power = false;
    WrittenOut unshifted;
    unshifted.shift.clear();
    for (const WrittenOut& one : {WrittenOut(), product, unshifted}) {
        Maker maker;
        one.write(maker);
        EXPECT_TRUE(composeLayerNormalisation(maker.network, maker.profile()));
        removeDead(maker.network);
        ASSERT_EQ(maker.kinds(), (Kinds{OperationKind::Transpose, OperationKind::LayerNormalisation}));
        const OperationT& layer = maker.operation(1);
        EXPECT_FLOAT_EQ(layer.kind.AsLayerNormalisation()->epsilon, 1e-4f);
        EXPECT_EQ(layer.kind.AsLayerNormalisation()->axis, -1);
        ASSERT_EQ(layer.inputs.size(), one.shift.empty() ? 2u : 3u);
        EXPECT_EQ(floatValues(maker.tensor(layer.inputs[1])), one.scale);
        if (!one.shift.empty()) {
            EXPECT_EQ(floatValues(maker.tensor(layer.inputs[2])), one.shift);
        }
        EXPECT_FALSE(composeLayerNormalisation(maker.network, maker.profile()));
    }
}

TEST(ComposeLayerNormalisation, LeavesWhatIsAnythingElse)
{
    std::vector<WrittenOut> others(6);
    others[0].meanAxes = {2};
    others[1].squareAxes = {2, 3};
    others[2].exponent = 3;
    others[3].epsilon = -1;
    others[4].scale = {2};
    others[5].squareAxes = {1};
    for (const WrittenOut& other : others) {
        Maker maker;
        other.write(maker);
        EXPECT_FALSE(composeLayerNormalisation(maker.network, maker.profile()));
    }
}

TEST(HoistTransposes, UntilTheyMeet)
{
    Maker maker;
    const int first = maker.transpose(0, {0, 3, 1, 2});
    const int product = maker.add(FullyConnectedT(), {first, maker.constant({4, 3}, std::vector<float>(12, 0.5f))});
    const int sum = maker.binary(BinaryKind::Add, maker.constant({3}, std::vector<float>{1, 2, 3}), product);
    const int cut = maker.activation(ActivationKind::Relu, sum);
    const int scores = maker.add(SoftmaxT(), {cut});
    maker.output(maker.transpose(scores, {1, 0, 2, 3}));
    while (hoistTransposes(maker.network) | removeIdentities(maker.network)) {
        removeDead(maker.network);
    }
    ASSERT_EQ(maker.kinds(),
        (Kinds{OperationKind::Transpose, OperationKind::FullyConnected, OperationKind::Binary,
            OperationKind::Activation, OperationKind::Softmax}));
    EXPECT_THAT(maker.operation(0).kind.AsTranspose()->permutation, ElementsAre(3, 0, 1, 2));
    EXPECT_EQ(maker.network.outputs.front(), maker.operation(4).outputs.front());
    EXPECT_EQ(maker.profile()[static_cast<std::size_t>(maker.network.outputs.front())].extents, (Extents{-1, 1, 2, 3}));
}

TEST(HoistTransposes, StayWhereRowsMatter)
{
    Maker maker;
    const int data = maker.activation(ActivationKind::Relu, 0);
    SoftmaxT channels;
    channels.axis = 1;
    maker.output(maker.transpose(maker.add(channels, {data}), {1, 0, 2, 3}));
    maker.output(maker.transpose(maker.activation(ActivationKind::Relu, data), {0, 1, 3, 2}));
    maker.output(maker.transpose(maker.binary(BinaryKind::Add, data, data), {1, 0, 2, 3}));
    maker.output(maker.transpose(
        maker.binary(BinaryKind::Add, data, maker.constant({2, 1, 1}, std::vector<float>{1, 2})), {1, 0, 2, 3}));
    const int shared = maker.activation(ActivationKind::Relu, data);
    maker.output(shared);
    maker.output(maker.transpose(shared, {1, 0, 2, 3}));
    EXPECT_FALSE(hoistTransposes(maker.network));
}

TEST(ScalarAffine, OnlyWhatIsDefined)
{
    EXPECT_FALSE(scalarAffine(BinaryKind::Divide, 0, 0));
    EXPECT_FALSE(scalarAffine(BinaryKind::Divide, 0, 1e-42));
    EXPECT_FALSE(scalarAffine(BinaryKind::Divide, 1, 2));
    EXPECT_FALSE(scalarAffine(BinaryKind::Power, 0, 2));
    EXPECT_EQ(scalarAffine(BinaryKind::Subtract, 1, 2)->scale, -1);
    EXPECT_EQ(scalarAffine(BinaryKind::Subtract, 1, 2)->shift, 2);
}

} // namespace
