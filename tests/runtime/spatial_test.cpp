#include "operationcase.h"
#include "reference.h"

#include "kernels/gridsample.h"

#include <cmath>
#include <limits>

namespace scribo::test {
namespace {

using format::ActivationKind;
using format::PoolingKind;

std::unique_ptr<format::ActivationT> randomActivation(std::mt19937& random)
{
    auto activation = std::make_unique<format::ActivationT>();
    activation->kind = static_cast<ActivationKind>(pick(random, 0, static_cast<int>(ActivationKind::MAX)));
    activation->alpha = 0.2F;
    activation->beta = 0.6F;
    return activation;
}

format::ConvolutionT randomConvolution(std::mt19937& random)
{
    const auto number = [&](int low, int high) { return static_cast<int>(pick(random, low, high)); };
    format::ConvolutionT convolution;
    convolution.strides = {number(1, 3), number(1, 3)};
    convolution.pads = {number(0, 2), number(0, 2), number(0, 2), number(0, 2)};
    convolution.dilations = {number(1, 2), number(1, 2)};
    if (toss(random)) {
        convolution.activation = randomActivation(random);
    }
    return convolution;
}

TEST(Convolution, EqualsItsDefinition)
{
    repeatRandomly(60, [](std::mt19937& random) {
        format::ConvolutionT convolution = randomConvolution(random);
        convolution.groups = static_cast<int>(pick(random, 1, 3));
        const std::int64_t perGroup = pick(random, 1, 9);
        const std::int64_t outputs = pick(random, 1, 9) * convolution.groups;
        const Shape kernel = randomShape(random, 2, 4);
        Array data;
        Array weights;
        Array bias;
        OperationCase test(random);
        const Shape extents
            = {pick(random, 1, 2), perGroup * convolution.groups, pick(random, 7, 12), pick(random, 7, 30)};
        std::vector<int> inputs
            = {test.computed(extents, &data), test.constant({outputs, perGroup, kernel[0], kernel[1]}, &weights)};
        const bool biased = toss(random);
        if (biased) {
            inputs.push_back(test.constant({outputs}, &bias));
        }
        const Array expected = reference::convolution(convolution, data, weights, biased ? &bias : nullptr);
        test.expect(test.maker.add(convolution, inputs), expected);
    });
}

TEST(Convolution, OneChannelPerGroup)
{
    repeatRandomly(20, [](std::mt19937& random) {
        format::ConvolutionT convolution = randomConvolution(random);
        const std::int64_t channels = pick(random, 2, 40);
        convolution.groups = static_cast<int>(channels);
        Array data;
        Array weights;
        OperationCase test(random);
        const int picture = test.computed({1, channels, 9, pick(random, 9, 40)}, &data);
        const int kernel = test.constant({channels, 1, 3, 3}, &weights);
        test.expect(test.maker.add(convolution, {picture, kernel, -1}),
            reference::convolution(convolution, data, weights, nullptr));
    });
}

TEST(Convolution, PaddingWiderThanTheKernel)
{
    std::mt19937 random(runSeed());
    format::ConvolutionT convolution;
    convolution.strides = {2, 1};
    convolution.pads = {5, 4, 3, 6};
    convolution.dilations = {1, 1};
    Array data;
    Array weights;
    OperationCase test(random);
    const std::vector<int> inputs = {test.computed({1, 3, 4, 5}, &data), test.constant({8, 3, 2, 3}, &weights)};
    test.expect(test.maker.add(convolution, inputs), reference::convolution(convolution, data, weights, nullptr));
}

TEST(Convolution, OfAConstantIsWorkedOutOnce)
{
    std::mt19937 random(runSeed());
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.pads = {1, 1, 1, 1};
    convolution.dilations = {1, 1};
    Array data;
    Array weights;
    OperationCase test(random);
    const std::vector<int> inputs = {test.constant({1, 17, 5, 6}, &data), test.constant({19, 17, 3, 3}, &weights)};
    test.expect(test.maker.add(convolution, inputs), reference::convolution(convolution, data, weights, nullptr));
}

TEST(Pooling, EqualsItsDefinition)
{
    repeatRandomly(120, [](std::mt19937& random) {
        format::PoolingT pooling;
        pooling.kind = static_cast<PoolingKind>(pick(random, 0, 2));
        pooling.ceil_mode = toss(random);
        for (int axis = 0; axis < 2; ++axis) {
            pooling.kernel.push_back(static_cast<int>(pick(random, 1, 4)));
            pooling.strides.push_back(static_cast<int>(pick(random, 1, 4)));
        }
        for (int side = 0; side < 4; ++side) {
            pooling.pads.push_back(
                static_cast<int>(pick(random, 0, pooling.kernel[static_cast<std::size_t>(side % 2)] - 1)));
        }
        Array data;
        OperationCase test(random);
        const int picture
            = test.computed({pick(random, 1, 2), pick(random, 1, 20), pick(random, 4, 9), pick(random, 4, 30)}, &data);
        test.expect(test.maker.add(pooling, {picture}), reference::pooling(pooling, data));
    });
}

TEST(Reduction, EqualsItsDefinition)
{
    repeatRandomly(80, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 1, 5), 6);
        format::ReductionT reduction;
        reduction.kind = static_cast<format::ReductionKind>(pick(random, 0, 2));
        reduction.keep_dims = toss(random);
        for (int axis = 0; axis < static_cast<int>(shape.size()); ++axis) {
            if (toss(random) || (reduction.axes.empty() && axis + 1 == static_cast<int>(shape.size()))) {
                reduction.axes.push_back(toss(random) ? axis : axis - static_cast<int>(shape.size()));
            }
        }
        Array data;
        OperationCase test(random);
        const int operand = test.operand(shape, &data);
        test.expect(test.maker.add(reduction, {operand}), reference::reduction(reduction, data));
    });
}

TEST(GridSample, EqualsItsDefinition)
{
    repeatRandomly(60, [](std::mt19937& random) {
        const std::int64_t pictures = pick(random, 1, 2);
        format::GridSampleT sample;
        sample.border = toss(random);
        sample.align_corners = toss(random);
        Array data;
        Array grid;
        OperationCase test(random);
        const int picture
            = test.operand({pictures, pick(random, 1, 5), pick(random, 1, 9), pick(random, 1, 20)}, &data);
        // Some places lie beyond the picture.
        const int places = test.operand({pictures, pick(random, 1, 6), pick(random, 1, 12), 2}, &grid, 1.4F);
        test.expect(test.maker.add(sample, {picture, places}), reference::gridSample(sample, data, grid), 1e-4F);
    });
}

TEST(GridSample, OfItsOwnPixelsChangesNothing)
{
    const std::vector<float> source = {1, 2, 3, 4, 5, 6};
    const std::vector<float> centres = {-1, -1, 0, -1, 1, -1, -1, 1, 0, 1, 1, 1};
    std::vector<float> result(6);
    cpu::sampleGrid({1, 2, 3, 6, false, true}, source.data(), centres.data(), result.data());
    EXPECT_EQ(result, source);
}

TEST(GridSample, StaysWithinThePictureForAnyFloat)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> source = {1, 2, 3, 4, 5, 6};
    for (const float place : {std::nanf(""), infinity, -infinity, 3e38F, -3e38F, 1e10F, -1e10F}) {
        const std::vector<float> grid = {place, place};
        for (const bool aligned : {false, true}) {
            float zeros = 7;
            cpu::sampleGrid({1, 2, 3, 1, false, aligned}, source.data(), grid.data(), &zeros);
            EXPECT_EQ(zeros, 0) << place;
            float border = 7;
            cpu::sampleGrid({1, 2, 3, 1, true, aligned}, source.data(), grid.data(), &border);
            EXPECT_EQ(border, place > 0 ? 6 : 1) << place;
        }
    }
}

TEST(Resize, EqualsItsDefinition)
{
    repeatRandomly(60, [](std::mt19937& random) {
        const Shape from = {pick(random, 1, 2), pick(random, 1, 5), pick(random, 1, 9), pick(random, 1, 20)};
        const Shape to = {from[0], from[1], pick(random, std::min<std::int64_t>(from[2], 2), 12),
            pick(random, std::min<std::int64_t>(from[3], 2), 40)};
        Array data;
        OperationCase test(random);
        const int picture = test.operand(from, &data);
        test.expect(test.maker.add(format::ResizeT(), {picture, test.maker.list(to)}), reference::resize(data, to));
    });
}

TEST(Resize, WhereAnotherOperationTurnedTheAxes)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    format::TransposeT transpose;
    transpose.permutation = {0, 3, 1, 2};
    const int turned = test.maker.add(transpose, {test.computed({1, 5, 11, 3}, &data)});
    const Shape to = {1, 3, 8, 17};
    test.expect(test.maker.add(format::ResizeT(), {turned, test.maker.list(to)}),
        reference::resize(reference::transpose(transpose.permutation, data), to));
}

TEST(Resize, ToTheSameSizeChangesNothing)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    const int picture = test.computed({1, 3, 8, 11}, &data);
    test.expect(test.maker.add(format::ResizeT(), {picture, test.maker.list({1, 3, 8, 11})}), data, 0);
}

TEST(Resize, ByTheWidthOfThePicture)
{
    // Half of the way to 24 columns, where there are fewer.
    NetworkMaker maker;
    const int picture = maker.input(1, 2, 4);
    const auto combined = [&maker](format::BinaryKind kind, int left, int right) {
        format::BinaryT binary;
        binary.kind = kind;
        return maker.add(binary, {left, right}, format::ElementType::Int64);
    };
    const int extents = maker.add(format::ShapeOfT(), {picture}, format::ElementType::Int64);
    const int sum = combined(format::BinaryKind::Add, extents, maker.list({1, 2, 4, 24}));
    const int half = combined(format::BinaryKind::Divide, sum, maker.list({2}));
    const int wanted = combined(format::BinaryKind::Maximum, half, extents);
    maker.output(maker.add(format::ResizeT(), {picture, wanted}), "output");
    std::mt19937 random(runSeed());
    Session session(maker.bytes(8, 40));
    for (const auto& [width, columns] :
        std::vector<std::pair<std::int64_t, std::int64_t>>{{8, 16}, {23, 23}, {24, 24}, {40, 40}, {9, 16}}) {
        const Array data{{1, 2, 4, width}, randomFloats(random, 8 * width)};
        const std::vector<Array> results = session.run(data);
        ASSERT_EQ(results.size(), 1U);
        expectClose(results[0], reference::resize(data, {1, 2, 4, columns}), 2e-5F);
    }
}

} // namespace
} // namespace scribo::test
