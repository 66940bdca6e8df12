#include "operationcase.h"
#include "reference.h"

#include <algorithm>

namespace scribo::test {
namespace {

std::vector<int> randomPermutation(std::mt19937& random, std::size_t rank)
{
    std::vector<int> permutation(rank);
    std::iota(permutation.begin(), permutation.end(), 0);
    std::shuffle(permutation.begin(), permutation.end(), random);
    return permutation;
}

TEST(Transpose, ExchangesAxes)
{
    repeatRandomly(40, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 0, 6), 5);
        Array data;
        OperationCase test(random);
        format::TransposeT transpose;
        transpose.permutation = randomPermutation(random, shape.size());
        const int operand = test.operand(shape, &data);
        test.expect(test.maker.add(transpose, {operand}), reference::transpose(transpose.permutation, data), 0);
    });
}

TEST(Transpose, TwiceWithAReshapeBetween)
{
    repeatRandomly(30, [](std::mt19937& random) {
        Array data;
        OperationCase test(random);
        const Shape shape = randomShape(random, 4, 5);
        format::TransposeT first;
        first.permutation = randomPermutation(random, 4);
        Array expected;
        const int turned = test.maker.add(first, {test.computed(shape, &data)});
        expected = reference::transpose(first.permutation, data);
        expected.shape = {expected.shape[0] * expected.shape[1], 1, expected.shape[2], expected.shape[3]};
        const int reshaped = test.maker.add(format::ReshapeT(), {turned, test.maker.list(expected.shape)});
        format::TransposeT second;
        second.permutation = randomPermutation(random, 4);
        test.expect(test.maker.add(second, {reshaped}), reference::transpose(second.permutation, expected), 0);
    });
}

TEST(Reshape, CopiesAndCompletesExtents)
{
    std::mt19937 random(runSeed());
    for (const auto& [wanted, shape] : std::vector<std::pair<Shape, Shape>>{{{0, -1}, {2, 12}}, {{-1}, {24}},
             {{4, 3, 2}, {4, 3, 2}}, {{0, 0, 0}, {2, 3, 4}}, {{1, 0, -1, 1}, {1, 3, 8, 1}}}) {
        Array data;
        OperationCase test(random);
        const int operand = test.operand({2, 3, 4}, &data);
        test.expect(test.maker.add(format::ReshapeT(), {operand, test.maker.list(wanted)}), {shape, data.data}, 0);
    }
}

TEST(Squeeze, DropsAxesAndUnsqueezeAddsThem)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    format::SqueezeT named;
    named.axes = {-1};
    const int first = test.maker.add(named, {test.computed({1, 2, 1, 3, 1}, &data)});
    const int second = test.maker.add(format::SqueezeT(), {first});
    format::UnsqueezeT unsqueeze;
    unsqueeze.axes = {0, -1};
    const std::vector<Array> results = test.run({first, second, test.maker.add(unsqueeze, {second})});
    ASSERT_EQ(results.size(), 3U);
    expectClose(results[0], {{1, 2, 1, 3}, data.data}, 0);
    expectClose(results[1], {{2, 3}, data.data}, 0);
    expectClose(results[2], {{1, 2, 3, 1}, data.data}, 0);
}

TEST(Concat, PutsPartsBehindEachOther)
{
    repeatRandomly(30, [](std::mt19937& random) {
        Shape shape = randomShape(random, pick(random, 1, 4), 5);
        const auto axis = static_cast<std::size_t>(pick(random, 0, static_cast<std::int64_t>(shape.size()) - 1));
        std::vector<Array> parts(static_cast<std::size_t>(pick(random, 1, 4)));
        std::vector<int> inputs;
        OperationCase test(random);
        for (Array& part : parts) {
            shape[axis] = pick(random, 1, 5);
            inputs.push_back(test.operand(shape, &part));
        }
        format::ConcatT concat;
        concat.axis = static_cast<int>(axis) - (toss(random) ? static_cast<int>(shape.size()) : 0);
        test.expect(test.maker.add(concat, inputs), reference::concat(concat.axis, parts), 0);
    });
}

TEST(Split, IsTheOppositeOfConcat)
{
    repeatRandomly(30, [](std::mt19937& random) {
        Shape shape = randomShape(random, pick(random, 1, 4), 5);
        const auto axis = static_cast<std::size_t>(pick(random, 0, static_cast<std::int64_t>(shape.size()) - 1));
        format::SplitT split;
        split.axis = static_cast<int>(axis);
        split.sizes = randomShape(random, pick(random, 1, 4), 4);
        shape[axis] = std::accumulate(split.sizes.begin(), split.sizes.end(), std::int64_t(0));
        Array data;
        OperationCase test(random);
        const int operand = test.operand(shape, &data);
        const std::vector<Array> results
            = test.run(test.maker.addAll(split, {operand}, static_cast<int>(split.sizes.size())));
        ASSERT_EQ(results.size(), split.sizes.size());
        expectClose(reference::concat(split.axis, results), data, 0);
    });
}

TEST(Gather, TakesWhatIndicesName)
{
    repeatRandomly(30, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 1, 4), 5);
        format::GatherT gather;
        const std::int64_t axis = pick(random, 0, static_cast<std::int64_t>(shape.size()) - 1);
        gather.axis = static_cast<int>(axis);
        const Shape indexShape = randomShape(random, pick(random, 0, 2), 3);
        std::vector<std::int64_t> indices(static_cast<std::size_t>(Array::zeros(indexShape).count()));
        const std::int64_t extent = shape[static_cast<std::size_t>(axis)];
        std::generate(indices.begin(), indices.end(), [&] { return pick(random, -extent, extent - 1); });
        Array data;
        OperationCase test(random);
        const std::vector<int> inputs = {test.operand(shape, &data), test.maker.integers(indexShape, indices)};
        test.expect(test.maker.add(gather, inputs), reference::gather(gather.axis, data, indexShape, indices), 0);
    });
}

TEST(Slice, ForwardsAndBackwards)
{
    constexpr std::int64_t far = std::numeric_limits<std::int64_t>::max();
    struct Case
    {
        std::int64_t start, end, step, first, count;
    };
    // Along an axis of 10: what is asked for, and which elements that is.
    for (const Case& c : {Case{2, 5, 1, 2, 3}, {0, far, 1, 0, 10}, {-3, far, 1, 7, 3}, {1, 9, 3, 1, 3},
             {1, -1, 3, 1, 3}, {-1, -far, -1, 9, 10}, {8, 2, -2, 8, 3}, {-100, 4, 1, 0, 4}, {far, -far - 1, -4, 9, 3},
             {3, 100, far, 3, 1}, {9, -11, -far, 9, 1}}) {
        std::mt19937 random(runSeed());
        Array data;
        OperationCase test(random);
        const int operand = test.operand({3, 10, 2}, &data);
        const int result = test.maker.add(format::SliceT(),
            {operand, test.maker.list({c.start}), test.maker.list({c.end}), test.maker.list({1}),
                test.maker.list({c.step})});
        test.expect(result, reference::slice(data, 1, c.first, c.count, c.step), 0);
    }
}

TEST(Slice, SeveralAxesAndTheFirstOnesWhenNoneAreNamed)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    const int operand = test.computed({4, 5, 6}, &data);
    const int first = test.maker.add(format::SliceT(), {operand, test.maker.list({1, 0}), test.maker.list({3, 2})});
    const int second = test.maker.add(format::SliceT(),
        {operand, test.maker.list({4, 3}), test.maker.list({0, 1}), test.maker.list({-1, 0}),
            test.maker.list({-2, -1})});
    const std::vector<Array> results = test.run({first, second});
    ASSERT_EQ(results.size(), 2U);
    expectClose(results[0], reference::slice(reference::slice(data, 0, 1, 2, 1), 1, 0, 2, 1), 0);
    expectClose(results[1], reference::slice(reference::slice(data, 2, 4, 2, -2), 0, 3, 2, -1), 0);
}

TEST(Expand, RepeatsAxesOfOne)
{
    repeatRandomly(30, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 0, 4), 5);
        const Shape target = randomBroadcast(random, shape);
        Array data;
        OperationCase test(random);
        const int operand = test.operand(randomBroadcast(random, shape), &data);
        test.expect(
            test.maker.add(format::ExpandT(), {operand, test.maker.list(target)}), reference::expand(data, target), 0);
    });
}

TEST(Pad, SurroundsWithAValue)
{
    repeatRandomly(20, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 0, 4), 5);
        format::PadT pad;
        pad.value = toss(random) ? 0.0F : -2.5F;
        for (std::size_t axis = 0; axis < shape.size(); ++axis) {
            pad.begin.push_back(pick(random, 0, 3));
            pad.end.push_back(pick(random, 0, 3));
        }
        Array data;
        OperationCase test(random);
        const int operand = test.operand(shape, &data);
        test.expect(test.maker.add(pad, {operand}), reference::pad(pad, data), 0);
    });
}

TEST(Cast, MakesFloatsOfAShape)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    const int shape = test.maker.add(format::ShapeOfT(), {test.computed({2, 3, 4}, &data)}, format::ElementType::Int64);
    const int numbers = test.maker.add(format::CastT(), {shape});
    format::BinaryT binary;
    binary.kind = format::BinaryKind::Multiply;
    const Array factors{{3}, {0.5F, -1.0F, 2.0F}};
    test.expect(test.maker.add(binary, {numbers, test.computed(factors)}), {{3}, {1.0F, -3.0F, 8.0F}});
}

TEST(Fill, GivesOneNumberManyTimes)
{
    std::mt19937 random(runSeed());
    Array data;
    OperationCase test(random);
    const int shape = test.maker.add(format::ShapeOfT(), {test.computed({2, 3}, &data)}, format::ElementType::Int64);
    format::FillT fill;
    fill.value = 1.5F;
    test.expect(test.maker.add(fill, {shape}), {{2, 3}, std::vector<float>(6, 1.5F)}, 0);
}

} // namespace
} // namespace scribo::test
