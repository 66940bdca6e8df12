#include "networkmaker.h"

#include "graph/shapes.h"
#include "graph/stridedcopy.h"

#include <gtest/gtest.h>

#include <limits>

namespace scribo::test {
namespace {

using format::ElementType;

/// A network whose last operation is looked at.
class Shapes : public testing::Test
{
protected:
    Shapes()
        : picture(maker.input(1, 3, 8))
    {
    }

    /// The shape of `tensor` at `width`; on failure empty, with the reason in `error`.
    Shape shapeOf(int tensor, int width = 20)
    {
        maker.network.outputs = {output};
        maker.network.minimum_width = 1;
        maker.network.maximum_width = 100;
        flatbuffers::FlatBufferBuilder buffer;
        buffer.Finish(format::Network::Pack(buffer, &maker.network));
        const Result<std::vector<Shape>> shapes
            = cpu::inferShapes(*flatbuffers::GetRoot<format::Network>(buffer.GetBufferPointer()), width);
        error = shapes ? "" : shapes.error().message;
        return shapes ? (*shapes)[static_cast<std::size_t>(tensor)] : Shape();
    }

    /// What is said of a network whose next operation is `kind`.
    template <class Kind>
    std::string refusal(Kind kind, std::vector<int> inputs, ElementType type = ElementType::Float32)
    {
        const int tensor = maker.add(std::move(kind), std::move(inputs), type);
        EXPECT_EQ(shapeOf(tensor), Shape());
        maker.network.operations.pop_back();
        return error;
    }

    NetworkMaker maker;
    int picture;
    /// Something that every network gives out.
    int output = named(maker.add(format::UnaryT(), {picture}));
    std::string error;

private:
    int named(int tensor)
    {
        maker.network.tensors[static_cast<std::size_t>(tensor)]->name = "output";
        return tensor;
    }
};

TEST_F(Shapes, FollowTheWidth)
{
    format::PoolingT pooling;
    pooling.kernel = {2, 2};
    pooling.strides = {2, 2};
    pooling.pads = {0, 0, 0, 0};
    const int pooled = maker.add(pooling, {picture});
    EXPECT_EQ(shapeOf(pooled, 20), (Shape{1, 3, 4, 10}));
    EXPECT_EQ(shapeOf(pooled, 21), (Shape{1, 3, 4, 10}));
    EXPECT_EQ(shapeOf(pooled, 2), (Shape{1, 3, 4, 1}));
    EXPECT_EQ(shapeOf(pooled, 1), Shape());
    EXPECT_EQ(error, "Pooling 'node1': its kernel is larger than its input of 1x3x8x1");
    EXPECT_EQ(shapeOf(pooled, 0), Shape());
    EXPECT_EQ(error, "an input of 1x3x8x0 makes no sense");
    EXPECT_EQ(shapeOf(pooled, -5), Shape());
    EXPECT_EQ(shapeOf(pooled, 1 << 20), Shape());
}

TEST_F(Shapes, AreWorkedOutWithIntegers)
{
    constexpr auto integer = ElementType::Int64;
    const auto binary = [&](format::BinaryKind kind, int a, int b) {
        format::BinaryT operation;
        operation.kind = kind;
        return maker.add(operation, {a, b}, integer);
    };
    // (width * 4 - 2) / 3 ^ 2, in a list behind the height, at least 1.
    const int shape = maker.add(format::ShapeOfT(), {picture}, integer);
    const int width = maker.add(format::GatherT(), {shape, maker.integers({}, {-1})}, integer);
    const int scaled = binary(format::BinaryKind::Multiply, width, maker.integers({}, {4}));
    const int less = binary(format::BinaryKind::Subtract, scaled, maker.integers({}, {2}));
    const int square = binary(format::BinaryKind::Power, maker.integers({}, {3}), maker.integers({}, {2}));
    const int divided = binary(format::BinaryKind::Divide, less, square);
    const int most = binary(format::BinaryKind::Maximum, divided, maker.integers({}, {1}));
    format::UnsqueezeT unsqueeze;
    unsqueeze.axes = {0};
    const int list = maker.add(unsqueeze, {most}, integer);
    const int height = maker.add(format::SliceT(), {shape, maker.list({2}), maker.list({3})}, integer);
    const int full = maker.add(format::ConcatT(), {height, list}, integer);
    const int filled = maker.add(format::FillT(), {full});
    EXPECT_EQ(shapeOf(filled, 20), (Shape{8, 8}));
    EXPECT_EQ(shapeOf(filled, 3), (Shape{8, 1}));
    EXPECT_EQ(shapeOf(filled, 100), (Shape{8, 44}));
}

TEST_F(Shapes, AreWorkedOutThroughFloats)
{
    // floor(width * 0.3), as an exporter writes an interpolated size.
    constexpr auto integer = ElementType::Int64;
    const int shape = maker.add(format::ShapeOfT(), {picture}, integer);
    const int width = maker.add(format::GatherT(), {shape, maker.list({3})}, integer);
    const int number = maker.add(format::CastT(), {width});
    format::BinaryT multiply;
    multiply.kind = format::BinaryKind::Multiply;
    const int scaled = maker.add(multiply, {number, maker.floats({}, {0.3F})});
    format::UnaryT floor;
    floor.kind = format::UnaryKind::Floor;
    format::CastT cast;
    cast.to = integer;
    const int whole = maker.add(cast, {maker.add(floor, {scaled})}, integer);
    const int filled = maker.add(format::FillT(), {whole});
    EXPECT_EQ(shapeOf(filled, 20), (Shape{6}));
    EXPECT_EQ(shapeOf(filled, 99), (Shape{29}));
}

TEST_F(Shapes, OfConvolutions)
{
    format::ConvolutionT convolution;
    convolution.strides = {2, 1};
    convolution.pads = {1, 0, 1, 0};
    convolution.dilations = {1, 2};
    const auto weights = [this](const Shape& shape) {
        std::int64_t count = 1;
        for (std::int64_t extent : shape) {
            count *= extent;
        }
        return maker.floats(shape, std::vector<float>(static_cast<std::size_t>(count)));
    };
    EXPECT_EQ(shapeOf(maker.add(convolution, {picture, weights({5, 3, 3, 3})})), (Shape{1, 5, 4, 16}));
    EXPECT_EQ(refusal(convolution, {picture, weights({5, 2, 3, 3})}),
        "Convolution 'node2': weights of 5x2x3x3 in 1 group(s) do not fit 1x3x8x20");
    EXPECT_EQ(refusal(convolution, {picture, weights({5, 3, 3})}),
        "Convolution 'node2': weights of 5x3x3 in 1 group(s) do not fit 1x3x8x20");
    EXPECT_EQ(refusal(convolution, {picture, weights({5, 3, 3, 11})}),
        "Convolution 'node2': a kernel of 5x3x3x11 is larger than its input of 1x3x8x20");
    EXPECT_EQ(refusal(convolution, {picture, weights({5, 3, 3, 3}), weights({4})}),
        "Convolution 'node2': a bias of 4 does not fit 5x3x3x3");
    convolution.groups = 2;
    EXPECT_EQ(refusal(convolution, {picture, weights({4, 1, 3, 3})}),
        "Convolution 'node2': weights of 4x1x3x3 in 2 group(s) do not fit 1x3x8x20");
}

TEST_F(Shapes, OfPoolings)
{
    format::PoolingT pooling;
    pooling.kernel = {2, 3};
    pooling.strides = {3, 3};
    pooling.pads = {0, 0, 0, 0};
    EXPECT_EQ(shapeOf(maker.add(pooling, {picture})), (Shape{1, 3, 3, 6}));
    pooling.ceil_mode = true;
    EXPECT_EQ(shapeOf(maker.add(pooling, {picture})), (Shape{1, 3, 3, 7}));
    pooling.pads = {0, 3, 0, 0};
    EXPECT_EQ(
        refusal(pooling, {picture}), "Pooling 'node3': a padding as wide as the kernel leaves windows without input");
}

TEST_F(Shapes, RefuseWhatDoesNotFit)
{
    const int list = maker.list({0, 1});
    const int four = maker.floats({4}, {1, 2, 3, 4});
    format::TransposeT transpose;
    for (const std::vector<int>& wrong :
        std::vector<std::vector<int>>{{}, {0, 1, 2}, {0, 1, 2, 2}, {0, 1, 2, 4}, {0, 1, 2, -1}}) {
        transpose.permutation = wrong;
        EXPECT_EQ(refusal(transpose, {picture}), "Transpose 'node1': its permutation does not fit 1x3x8x20");
    }
    format::ReductionT reduction;
    EXPECT_EQ(refusal(reduction, {picture}), "Reduction 'node1': it has no axes");
    reduction.axes = {1, -3};
    EXPECT_EQ(refusal(reduction, {picture}), "Reduction 'node1': axis -3 of 1x3x8x20 does not exist");
    reduction.axes = {4};
    EXPECT_EQ(refusal(reduction, {picture}), "Reduction 'node1': axis 4 of 1x3x8x20 does not exist");
    EXPECT_EQ(refusal(format::BinaryT(), {picture, four}), "Binary 'node1': 1x3x8x20 and 4 do not go together");
    EXPECT_EQ(refusal(format::BinaryT(), {picture, list}),
        "Binary 'node1': one operand holds integers and the other does not");
    EXPECT_EQ(refusal(format::UnaryT(), {list}), "Unary 'node1': input 0 holds integers");
    EXPECT_EQ(refusal(format::MatrixProductT(), {picture, four}),
        "MatrixProduct 'node1': 1x3x8x20 and 4 cannot be multiplied as matrices");
    EXPECT_EQ(refusal(format::FullyConnectedT(), {picture, maker.floats({2, 1}, {1, 2})}),
        "FullyConnected 'node1': weights of 2x1 do not fit 1x3x8x20");
    EXPECT_EQ(refusal(format::ChannelAffineT(), {picture, four, four}),
        "ChannelAffine 'node1': its scale and shift do not fit the channels of 1x3x8x20");
    EXPECT_EQ(refusal(format::LayerNormalisationT(), {picture, four}),
        "LayerNormalisation 'node1': its scale and shift do not fit 20");
    format::SoftmaxT softmax;
    softmax.axis = 4;
    EXPECT_EQ(refusal(softmax, {picture}), "Softmax 'node1': axis 4 of 1x3x8x20 does not exist");
    EXPECT_EQ(
        refusal(format::ReshapeT(), {picture, maker.list({7, -1})}), "Reshape 'node1': 1x3x8x20 cannot be made 7x-1");
    EXPECT_EQ(
        refusal(format::ReshapeT(), {picture, maker.list({-1, -1})}), "Reshape 'node1': 1x3x8x20 cannot be made -1x-1");
    EXPECT_EQ(refusal(format::ReshapeT(), {picture, four}), "Reshape 'node1': its new shape is not a list of integers");
    format::SqueezeT squeeze;
    squeeze.axes = {1};
    EXPECT_EQ(refusal(squeeze, {picture}), "Squeeze 'node1': axis 1 of 1x3x8x20 is not 1");
    squeeze.axes = {0, -4};
    EXPECT_EQ(refusal(squeeze, {picture}), "Squeeze 'node1': an axis does not exist in 1x3x8x20");
    format::UnsqueezeT unsqueeze;
    unsqueeze.axes = {0, 1, 2, 3, 4};
    EXPECT_EQ(refusal(unsqueeze, {picture}), "Unsqueeze 'node1': its result has 9 dimensions");
    format::ConcatT concat;
    concat.axis = 4;
    EXPECT_EQ(refusal(concat, {picture}), "Concat 'node1': axis 4 of 1x3x8x20 does not exist");
    concat.axis = 0;
    EXPECT_EQ(refusal(concat, {picture, four}), "Concat 'node1': 4 cannot be put behind 1x3x8x20");
    format::SplitT split;
    split.sizes = {1, 2};
    EXPECT_EQ(refusal(split, {picture}), "Split 'node1': it has 1 outputs for 2 parts");
    split.sizes = {2};
    EXPECT_EQ(refusal(split, {picture}), "Split 'node1': its parts do not add up to 1x3x8x20");
    split.axis = 1;
    EXPECT_EQ(refusal(split, {picture}), "Split 'node1': its parts do not add up to 1x3x8x20");
    format::PadT pad;
    pad.begin = {0, 0, 0};
    pad.end = {0, 0, 0, 0};
    EXPECT_EQ(refusal(pad, {picture}), "Pad 'node1': its padding does not fit 1x3x8x20");
    pad.begin = {0, 0, 0, -1};
    EXPECT_EQ(refusal(pad, {picture}), "Pad 'node1': a padding of -1 and 0 makes no sense");
}

TEST_F(Shapes, RefuseGridsThatDoNotFit)
{
    const auto refused = [&](int data, int grid) { return refusal(format::GridSampleT(), {data, grid}); };
    const std::string fault = "GridSample 'node1': a grid of ";
    EXPECT_EQ(refused(picture, maker.floats({1, 1, 1, 3}, {0, 0, 0})), fault + "1x1x1x3 does not fit 1x3x8x20");
    EXPECT_EQ(refused(picture, maker.floats({2, 1, 1, 2}, {0, 0, 0, 0})), fault + "2x1x1x2 does not fit 1x3x8x20");
    EXPECT_EQ(refused(picture, maker.floats({1, 1, 2}, {0, 0})), fault + "1x1x2 does not fit 1x3x8x20");
    EXPECT_EQ(refused(maker.floats({2}, {0, 0}), maker.floats({1, 1, 1, 2}, {0, 0})), fault + "1x1x1x2 does not fit 2");
    EXPECT_EQ(refused(picture, maker.integers({1, 1, 1, 2}, {0, 0})), "GridSample 'node1': input 1 holds integers");
}

TEST_F(Shapes, RefuseToResizeWhatCannotBe)
{
    const auto refused = [&](int data, int extents) { return refusal(format::ResizeT(), {data, extents}); };
    const std::string cannot = "Resize 'node1': 1x3x8x20 cannot be resized to ";
    EXPECT_EQ(refused(picture, maker.list({1, 3, 16})), cannot + "1x3x16");
    EXPECT_EQ(refused(picture, maker.list({2, 3, 8, 20})), cannot + "2x3x8x20");
    EXPECT_EQ(refused(picture, maker.list({1, 4, 8, 20})), cannot + "1x4x8x20");
    EXPECT_EQ(refused(picture, maker.list({1, 3, 1, 20})), cannot + "1x3x1x20");
    EXPECT_EQ(refused(picture, maker.list({1, 3, 8, 1})), cannot + "1x3x8x1");
    EXPECT_EQ(
        refused(picture, maker.list({1, 3, 8, 0})), "Resize 'node1': its result of 1x3x8x0 is empty or too large");
    EXPECT_EQ(
        refused(picture, maker.list({1, 3, 8, -20})), "Resize 'node1': its result of 1x3x8x-20 is empty or too large");
    EXPECT_EQ(refused(picture, maker.list({1, 3, 8, std::numeric_limits<std::int64_t>::max()})),
        "Resize 'node1': its result of 1x3x8x9223372036854775807 is empty or too large");
    EXPECT_EQ(refused(picture, maker.floats({4}, {1, 3, 8, 40})), "Resize 'node1': input 1 is not a list of integers");
    EXPECT_EQ(
        refused(picture, maker.integers({2, 2}, {1, 3, 8, 40})), "Resize 'node1': input 1 is not a list of integers");
    EXPECT_EQ(refused(maker.floats({4}, {1, 2, 3, 4}), maker.list({4})), "Resize 'node1': 4 cannot be resized to 4");
    EXPECT_EQ(refused(maker.list({1, 2, 3, 4}), maker.list({4})), "Resize 'node1': input 0 holds integers");
}

TEST_F(Shapes, RefuseIntegersOutOfRange)
{
    constexpr auto integer = ElementType::Int64;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    const auto refused = [&](format::BinaryKind kind, std::int64_t a, std::int64_t b) {
        format::BinaryT binary;
        binary.kind = kind;
        EXPECT_EQ(refusal(binary, {maker.list({a}), maker.list({b})}, integer),
            "Binary 'node1': its integers divide by zero or overflow");
    };
    refused(format::BinaryKind::Add, most, 1);
    refused(format::BinaryKind::Subtract, least, 1);
    refused(format::BinaryKind::Multiply, most, 2);
    refused(format::BinaryKind::Divide, 1, 0);
    refused(format::BinaryKind::Divide, least, -1);
    refused(format::BinaryKind::Power, 10, 19);
    refused(format::BinaryKind::Power, 2, -1);
    EXPECT_EQ(refusal(format::GatherT(), {maker.list({1, 2}), maker.list({2})}, integer),
        "Gather 'node1': index 2 lies outside 2");
    EXPECT_EQ(refusal(format::GatherT(), {maker.list({1, 2}), maker.list({-3})}, integer),
        "Gather 'node1': index -3 lies outside 2");
    format::CastT cast;
    cast.to = integer;
    EXPECT_EQ(refusal(cast, {picture}, integer), "Cast 'node1': its integers are not known before the picture is");
    EXPECT_EQ(refusal(cast, {maker.floats({1}, {1e30F})}, integer),
        "Cast 'node1': its integers are not known before the picture is");
    EXPECT_EQ(refusal(cast, {maker.floats({1}, {std::numeric_limits<float>::quiet_NaN()})}, integer),
        "Cast 'node1': its integers are not known before the picture is");
}

TEST_F(Shapes, RefuseWhatIsEmptyOrTooLarge)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(refusal(format::FillT(), {maker.list({most, most})}),
        "Fill 'node1': its result of " + std::to_string(most) + "x" + std::to_string(most) + " is empty or too large");
    EXPECT_EQ(refusal(format::FillT(), {maker.list({0})}), "Fill 'node1': its result of 0 is empty or too large");
    EXPECT_EQ(refusal(format::FillT(), {maker.list({-3})}), "Fill 'node1': its result of -3 is empty or too large");
    EXPECT_EQ(refusal(format::FillT(), {maker.list({1, 1, 1, 1, 1, 1, 1, 1, 1})}),
        "Fill 'node1': its result has 9 dimensions");
    format::FillT integers;
    integers.type = ElementType::Int64;
    EXPECT_EQ(refusal(integers, {maker.list({1 << 21})}, ElementType::Int64),
        "Fill 'node1': its result of 2097152 is too large");
    EXPECT_EQ(refusal(format::ExpandT(), {picture, maker.list({1 << 30, 1, 1, 1})}),
        "Expand 'node1': its result of 1073741824x3x8x20 is too large");
    EXPECT_EQ(refusal(format::ExpandT(), {picture, maker.list({-1})}), "Expand 'node1': 1x3x8x20 cannot be made -1");
    format::PadT pad;
    pad.begin = {most, 0, 0, 0};
    pad.end = {most, 0, 0, 0};
    EXPECT_EQ(refusal(pad, {picture}),
        "Pad 'node1': a padding of " + std::to_string(most) + " and " + std::to_string(most) + " makes no sense");
    pad.begin = {1 << 28, 0, 0, 0};
    pad.end = {0, 0, 0, 0};
    EXPECT_EQ(refusal(pad, {picture}), "Pad 'node1': its result of 268435457x3x8x20 is too large");
    EXPECT_EQ(refusal(format::SliceT(), {picture, maker.list({5}), maker.list({5}), maker.list({2})}),
        "Slice 'node1': its result of 1x3x0x20 is empty or too large");
    const std::string slice
        = "Slice 'node1': it slices an axis that does not exist in 1x3x8x20, or one twice, or with step 0";
    EXPECT_EQ(refusal(format::SliceT(), {picture, maker.list({0}), maker.list({1}), maker.list({4})}), slice);
    EXPECT_EQ(refusal(format::SliceT(), {picture, maker.list({0, 0}), maker.list({1, 1}), maker.list({1, -3})}), slice);
    EXPECT_EQ(refusal(format::SliceT(), {picture, maker.list({0}), maker.list({1}), maker.list({0}), maker.list({0})}),
        slice);
    EXPECT_EQ(refusal(format::SliceT(),
                  {picture, maker.list({0}), maker.list({1}), maker.list({0}),
                      maker.list({std::numeric_limits<std::int64_t>::min()})}),
        slice);
    EXPECT_EQ(refusal(format::SliceT(), {picture, maker.list({0}), maker.list({1, 2})}),
        "Slice 'node1': its starts, ends, axes and steps are not equally many");
}

TEST_F(Shapes, RefuseMoreIntegersThanAreKept)
{
    constexpr auto integer = ElementType::Int64;
    format::FillT fill;
    fill.type = integer;
    const int extents = maker.list({cpu::maximumIntegers});
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(shapeOf(maker.add(fill, {extents}, integer)), Shape{cpu::maximumIntegers});
    }
    EXPECT_EQ(refusal(fill, {extents}, integer), "Fill 'node4': its result makes the network's integers too many");
}

TEST_F(Shapes, RefuseMoreConstantIntegersThanAreKept)
{
    const std::vector<std::int64_t> most(cpu::maximumIntegers);
    for (int i = 0; i < 4; ++i) {
        maker.list(most);
    }
    EXPECT_EQ(shapeOf(output), (Shape{1, 3, 8, 20}));
    maker.list({1});
    EXPECT_EQ(shapeOf(output), Shape());
    EXPECT_EQ(error, "the constant 'constant' makes the network's integers too many");
}

TEST_F(Shapes, OfRecurrentLayers)
{
    const auto zeros = [this](const Shape& shape) {
        std::int64_t count = 1;
        for (std::int64_t extent : shape) {
            count *= extent;
        }
        return maker.floats(shape, std::vector<float>(static_cast<std::size_t>(count)));
    };
    format::RecurrentT recurrent;
    recurrent.hidden_size = 2;
    const int data = maker.add(format::ReshapeT(), {picture, maker.list({-1, 1, 8})});
    const int weights = zeros({1, 8, 8});
    const int recurrentWeights = zeros({1, 8, 2});
    EXPECT_EQ(shapeOf(maker.add(recurrent, {data, weights, recurrentWeights})), (Shape{60, 1, 1, 2}));
    const auto said = [&](const std::vector<int>& inputs) { return refusal(recurrent, inputs); };
    EXPECT_EQ(said({picture, weights, recurrentWeights}), "Recurrent 'node3': it cannot walk along 1x3x8x20");
    EXPECT_EQ(said({data, zeros({1, 8, 9}), recurrentWeights}), "Recurrent 'node3': weights of 1x8x9 instead of 1x8x8");
    EXPECT_EQ(said({data, weights, weights}), "Recurrent 'node3': recurrent weights of 1x8x8 instead of 1x8x2");
    EXPECT_EQ(
        said({data, weights, recurrentWeights, zeros({1, 8})}), "Recurrent 'node3': a bias of 1x8 instead of 1x16");
    EXPECT_EQ(said({data, weights, recurrentWeights, -1, zeros({2, 1, 2})}),
        "Recurrent 'node3': an initial state of 2x1x2 instead of 1x1x2");
    EXPECT_EQ(said({data, weights, recurrentWeights, -1, -1, zeros({1, 2})}),
        "Recurrent 'node3': an initial cell state of 1x2 instead of 1x1x2");
    recurrent.cell = format::CellKind::Gru;
    EXPECT_EQ(said({data, zeros({1, 6, 8}), zeros({1, 6, 2}), -1, -1, zeros({1, 1, 2})}),
        "Recurrent 'node3': a GRU has no cell state");
}

TEST(StridedWalk, JoinsAxesWhereItCan)
{
    using cpu::StridedWalk;
    const auto whole = collapsed(StridedWalk<2>{{2, 3, 4}, {Shape{12, 4, 1}, Shape{12, 4, 1}}});
    EXPECT_EQ(whole.extents, (Shape{24}));
    const auto partly = collapsed(StridedWalk<2>{{2, 1, 3, 4}, {Shape{12, 99, 4, 1}, Shape{0, 99, 4, 1}}});
    EXPECT_EQ(partly.extents, (Shape{2, 12}));
    EXPECT_EQ(partly.strides[0], (Shape{12, 1}));
    EXPECT_EQ(partly.strides[1], (Shape{0, 1}));
    const auto single = collapsed(StridedWalk<2>{{}, {Shape{}, Shape{}}, {3, 4}});
    EXPECT_EQ(single.extents, (Shape{1}));
    EXPECT_EQ(single.start, (StridedWalk<2>::Positions{3, 4}));
}

} // namespace
} // namespace scribo::test
