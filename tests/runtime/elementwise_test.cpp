#include "operationcase.h"
#include "reference.h"

#include <limits>

namespace scribo::test {
namespace {

using format::ActivationKind;
using format::BinaryKind;
using format::UnaryKind;

class Activations : public testing::TestWithParam<int>
{
};

TEST_P(Activations, EqualTheirDefinition)
{
    std::mt19937 random(runSeed());
    format::ActivationT activation;
    activation.kind = static_cast<ActivationKind>(GetParam());
    activation.alpha = 0.25F;
    activation.beta = 0.75F;
    Array data;
    OperationCase test(random);
    const int operand = test.computed({2, 3, 5, 7}, &data, 4.0F);
    test.expect(test.maker.add(activation, {operand}), reference::activation(activation, data));
}

INSTANTIATE_TEST_SUITE_P(All, Activations, testing::Range(0, static_cast<int>(ActivationKind::MAX) + 1),
    [](const auto& test) { return format::EnumNameActivationKind(static_cast<ActivationKind>(test.param)); });

class Unaries : public testing::TestWithParam<int>
{
};

TEST_P(Unaries, EqualTheirDefinition)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    const int operand = test.operand({3, 41}, &data, 3.0F);
    format::UnaryT unary;
    unary.kind = static_cast<UnaryKind>(GetParam());
    // Roots and logarithms of negative numbers included: they are not numbers on either side.
    test.expect(test.maker.add(unary, {operand}), reference::unary(unary.kind, data));
}

INSTANTIATE_TEST_SUITE_P(All, Unaries, testing::Range(0, static_cast<int>(UnaryKind::MAX) + 1),
    [](const auto& test) { return format::EnumNameUnaryKind(static_cast<UnaryKind>(test.param)); });

class Binaries : public testing::TestWithParam<int>
{
};

TEST_P(Binaries, EqualTheirDefinitionWithBroadcasting)
{
    const auto kind = static_cast<BinaryKind>(GetParam());
    repeatRandomly(25, [kind](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 0, 5), 6);
        Array left;
        Array right;
        OperationCase test(random);
        const std::vector<int> inputs = {
            test.operand(randomBroadcast(random, shape), &left), test.operand(randomBroadcast(random, shape), &right)};
        format::BinaryT binary;
        binary.kind = kind;
        test.expect(test.maker.add(binary, inputs), reference::binary(kind, left, right));
    });
}

INSTANTIATE_TEST_SUITE_P(All, Binaries, testing::Range(0, static_cast<int>(BinaryKind::MAX) + 1),
    [](const auto& test) { return format::EnumNameBinaryKind(static_cast<BinaryKind>(test.param)); });

TEST(ChannelAffine, ScalesAndShiftsEachChannel)
{
    repeatRandomly(15, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 2, 5), 8);
        Array data;
        Array scale;
        Array shift;
        OperationCase test(random);
        const std::vector<int> inputs
            = {test.operand(shape, &data), test.constant({shape[1]}, &scale), test.constant({shape[1]}, &shift)};
        test.expect(test.maker.add(format::ChannelAffineT(), inputs), reference::channelAffine(data, scale, shift));
    });
}

TEST(LayerNormalisation, EqualsItsDefinition)
{
    repeatRandomly(30, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 1, 4), 10);
        const std::int64_t axis = pick(random, 0, static_cast<std::int64_t>(shape.size()) - 1);
        const Shape normalised(shape.begin() + axis, shape.end());
        format::LayerNormalisationT normalisation;
        normalisation.axis = static_cast<int>(toss(random) ? axis : axis - static_cast<std::int64_t>(shape.size()));
        Array data;
        Array scale;
        Array shift;
        OperationCase test(random);
        std::vector<int> inputs = {test.operand(shape, &data), test.operand(normalised, &scale)};
        const bool shifted = toss(random);
        if (shifted) {
            inputs.push_back(test.operand(normalised, &shift));
        }
        test.expect(test.maker.add(normalisation, inputs),
            reference::layerNormalisation(normalisation, data, scale, shifted ? &shift : nullptr), 1e-4F);
    });
}

} // namespace
} // namespace scribo::test
