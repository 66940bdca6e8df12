#include "operationcase.h"
#include "reference.h"

namespace scribo::test {
namespace {

TEST(FullyConnected, EqualsItsDefinition)
{
    repeatRandomly(40, [](std::mt19937& random) {
        Array data;
        Array weights;
        Array bias;
        OperationCase test(random);
        const Shape shape = randomShape(random, pick(random, 1, 4), 10);
        const std::int64_t outputs = pick(random, 1, 80);
        std::vector<int> inputs = {test.operand(shape, &data), test.constant({shape.back(), outputs}, &weights)};
        const bool biased = toss(random);
        inputs.push_back(biased ? test.constant({outputs}, &bias) : -1);
        format::FullyConnectedT layer;
        if (toss(random)) {
            layer.activation = std::make_unique<format::ActivationT>();
            layer.activation->kind = static_cast<format::ActivationKind>(pick(random, 0, 9));
            layer.activation->alpha = 0.3F;
            layer.activation->beta = 0.5F;
        }
        const Array expected = reference::fullyConnected(layer, data, weights, biased ? &bias : nullptr);
        test.expect(test.maker.add(layer, inputs), expected);
    });
}

TEST(MatrixProduct, BroadcastsTheLeadingExtents)
{
    repeatRandomly(60, [](std::mt19937& random) {
        const Shape outer = randomShape(random, pick(random, 0, 3), 4);
        const std::int64_t inner = pick(random, 1, 20);
        Shape left = randomBroadcast(random, outer);
        Shape right = randomBroadcast(random, outer);
        left.insert(left.end(), {pick(random, 1, 9), inner});
        right.insert(right.end(), {inner, pick(random, 1, 9)});
        Array a;
        Array b;
        OperationCase test(random);
        const std::vector<int> inputs = {test.operand(left, &a), test.operand(right, &b)};
        test.expect(test.maker.add(format::MatrixProductT(), inputs), reference::matrixProduct(a, b));
    });
}

TEST(MatrixProduct, OfListsOfNumbers)
{
    for (const auto& [left, right] : std::vector<std::pair<Shape, Shape>>{
             {{5}, {5}}, {{5}, {5, 3}}, {{3, 5}, {5}}, {{2, 3, 5}, {5}}, {{5}, {2, 5, 3}}}) {
        std::mt19937 random(runSeed());
        Array a;
        Array b;
        OperationCase test(random);
        const std::vector<int> inputs = {test.computed(left, &a), test.computed(right, &b)};
        test.expect(test.maker.add(format::MatrixProductT(), inputs), reference::matrixProduct(a, b));
    }
}

TEST(Softmax, EqualsItsDefinition)
{
    repeatRandomly(40, [](std::mt19937& random) {
        const Shape shape = randomShape(random, pick(random, 1, 4), 12);
        format::SoftmaxT softmax;
        softmax.axis = static_cast<int>(
            pick(random, -static_cast<std::int64_t>(shape.size()), static_cast<std::int64_t>(shape.size()) - 1));
        softmax.logarithm = toss(random);
        Array data;
        OperationCase test(random);
        const int operand = test.operand(shape, &data, 8.0F);
        test.expect(test.maker.add(softmax, {operand}), reference::softmax(softmax, data));
    });
}

TEST(Softmax, OfLargeScoresDoesNotOverflow)
{
    std::mt19937 random(runSeed());
    OperationCase test(random);
    const Array data{{2, 3}, {500.0F, 499.0F, -500.0F, -1e4F, -1e4F, -1e4F}};
    const int operand = test.computed(data);
    test.expect(test.maker.add(format::SoftmaxT(), {operand}), reference::softmax({}, data));
}

} // namespace
} // namespace scribo::test
