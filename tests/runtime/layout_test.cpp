#include "operationcase.h"
#include "reference.h"

// A convolution leaves its result in whichever order oneDNN likes, with channels in padded blocks.
// Whatever reads it must see the same numbers.

namespace scribo::test {
namespace {

/// A convolution to `channels` channels, and what it gives.
int addConvolution(OperationCase& test, std::mt19937& random, std::int64_t channels, Array* result)
{
    Array data;
    Array weights;
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.pads = {1, 1, 1, 1};
    convolution.dilations = {1, 1};
    const std::int64_t from = pick(random, 1, 20);
    const int picture = test.computed({1, from, pick(random, 2, 6), pick(random, 3, 20)}, &data);
    const int tensor = test.maker.add(convolution, {picture, test.constant({channels, from, 3, 3}, &weights, 0.2F)});
    *result = reference::convolution(convolution, data, weights, nullptr);
    return tensor;
}

/// Runs `body(test, random, tensor, values)` on results of convolutions with odd and even numbers of
/// channels; it gives the tensor to look at and its expected values.
template <class Body>
void onBlockedChannels(Body body)
{
    repeatRandomly(12, [&](std::mt19937& random) {
        OperationCase test(random);
        Array values;
        const int tensor = addConvolution(test, random, pick(random, 1, 40), &values);
        const std::pair<int, Array> outcome = body(test, random, tensor, values);
        // A convolution worked out in tiles is less exact than in the plain form.
        test.expect(outcome.first, outcome.second, 1e-4F);
    });
}

using Outcome = std::pair<int, Array>;

TEST(BlockedChannels, ThroughEveryActivation)
{
    onBlockedChannels([](OperationCase& test, std::mt19937& random, int tensor, const Array& values) {
        format::ActivationT activation;
        activation.kind = static_cast<format::ActivationKind>(pick(random, 0, 11));
        activation.alpha = 0.2F;
        activation.beta = 0.5F;
        return Outcome(test.maker.add(activation, {tensor}), reference::activation(activation, values));
    });
}

TEST(BlockedChannels, ActivatedAndConvolvedAgain)
{
    // A function that is not 0 at 0 must leave the padding of the blocks at 0.
    onBlockedChannels([](OperationCase& test, std::mt19937&, int tensor, const Array& values) {
        format::ActivationT activation;
        activation.kind = format::ActivationKind::Sigmoid;
        const int active = test.maker.add(activation, {tensor});
        format::ConvolutionT convolution;
        convolution.strides = {1, 1};
        convolution.pads = {0, 0, 0, 0};
        convolution.dilations = {1, 1};
        Array weights;
        const int kernel = test.constant({5, values.shape[1], 1, 1}, &weights);
        return Outcome(test.maker.add(convolution, {active, kernel}),
            reference::convolution(convolution, reference::activation(activation, values), weights, nullptr));
    });
}

TEST(BlockedChannels, Pooled)
{
    onBlockedChannels([](OperationCase& test, std::mt19937& random, int tensor, const Array& values) {
        format::PoolingT pooling;
        pooling.kind = static_cast<format::PoolingKind>(pick(random, 0, 2));
        pooling.kernel = {2, 3};
        pooling.strides = {2, 2};
        pooling.pads = {0, 1, 0, 1};
        pooling.ceil_mode = toss(random);
        return Outcome(test.maker.add(pooling, {tensor}), reference::pooling(pooling, values));
    });
}

TEST(BlockedChannels, Transposed)
{
    onBlockedChannels([](OperationCase& test, std::mt19937& random, int tensor, const Array& values) {
        format::TransposeT transpose;
        transpose.permutation = {0, 1, 2, 3};
        std::shuffle(transpose.permutation.begin(), transpose.permutation.end(), random);
        return Outcome(test.maker.add(transpose, {tensor}), reference::transpose(transpose.permutation, values));
    });
}

TEST(BlockedChannels, ReshapedInEveryWay)
{
    onBlockedChannels([](OperationCase& test, std::mt19937& random, int tensor, const Array& values) {
        const Shape& s = values.shape;
        const std::vector<Shape> shapes = {{-1}, {s[0], s[1], s[2] * s[3]}, {s[0], s[1] * s[2], s[3]},
            {1, s[0], 1, s[1], s[2], s[3], 1}, {s[3], s[2], s[1]}, {s[0] * s[1], s[2], s[3]}};
        const Shape& chosen = shapes[static_cast<std::size_t>(pick(random, 0, 5))];
        Array expected = values;
        expected.shape = chosen == Shape{-1} ? Shape{values.count()} : chosen;
        return Outcome(test.maker.add(format::ReshapeT(), {tensor, test.maker.list(chosen)}), expected);
    });
}

TEST(BlockedChannels, AddedToThemselvesAndScaledByChannel)
{
    onBlockedChannels([](OperationCase& test, std::mt19937&, int tensor, const Array& values) {
        format::BinaryT multiply;
        multiply.kind = format::BinaryKind::Multiply;
        Array scale;
        const int factors = test.computed({1, values.shape[1], 1, 1}, &scale);
        const int scaled = test.maker.add(multiply, {tensor, factors});
        return Outcome(test.maker.add(format::BinaryT(), {scaled, tensor}),
            reference::binary(
                format::BinaryKind::Add, reference::binary(format::BinaryKind::Multiply, values, scale), values));
    });
}

TEST(BlockedChannels, ConcatenatedAndSplit)
{
    onBlockedChannels([](OperationCase& test, std::mt19937& random, int tensor, const Array& values) {
        format::ConcatT concat;
        concat.axis = static_cast<int>(pick(random, 1, 3));
        const int twice = test.maker.add(concat, {tensor, tensor});
        format::SplitT split;
        split.axis = concat.axis;
        const std::int64_t extent = values.shape[static_cast<std::size_t>(concat.axis)];
        split.sizes = {1, 2 * extent - 1};
        return Outcome(test.maker.addAll(split, {twice}, 2)[1],
            reference::slice(reference::concat(concat.axis, {values, values}), concat.axis, 1, 2 * extent - 1, 1));
    });
}

TEST(BlockedChannels, AveragedOverThePicture)
{
    onBlockedChannels([](OperationCase& test, std::mt19937&, int tensor, const Array& values) {
        format::ReductionT reduction;
        reduction.axes = {2, 3};
        return Outcome(test.maker.add(reduction, {tensor}), reference::reduction(reduction, values));
    });
}

TEST(BlockedChannels, ReadInTwoOrdersAtOnce)
{
    onBlockedChannels([](OperationCase& test, std::mt19937&, int tensor, const Array& values) {
        // One reader wants rows of columns, the other the blocks.
        format::SoftmaxT softmax;
        const int scores = test.maker.add(softmax, {tensor});
        format::ActivationT activation;
        activation.kind = format::ActivationKind::Relu;
        const int active = test.maker.add(activation, {tensor});
        return Outcome(test.maker.add(format::BinaryT(), {scores, active}),
            reference::binary(format::BinaryKind::Add, reference::softmax(softmax, values),
                reference::activation(activation, values)));
    });
}

TEST(BlockedChannels, AsOutputs)
{
    repeatRandomly(10, [](std::mt19937& random) {
        OperationCase test(random);
        Array values;
        const int tensor = addConvolution(test, random, pick(random, 1, 40), &values);
        format::TransposeT transpose;
        transpose.permutation = {3, 0, 1, 2};
        const int turned = test.maker.add(transpose, {tensor});
        // A result, a view of it, and something that goes on from it.
        const std::vector<Array> results = test.run({tensor, turned, test.maker.add(format::SoftmaxT(), {turned})});
        ASSERT_EQ(results.size(), 3U);
        const Array expected = reference::transpose(transpose.permutation, values);
        expectClose(results[0], values, 2e-5F);
        expectClose(results[1], expected, 2e-5F);
        expectClose(results[2], reference::softmax({}, expected), 2e-5F);
    });
}

} // namespace
} // namespace scribo::test
