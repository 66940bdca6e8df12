#include "operationcase.h"
#include "reference.h"

namespace scribo::test {
namespace {

using format::CellKind;
using format::Direction;

/// A random layer and what it is made of.
struct RandomLayer
{
    format::RecurrentT recurrent;
    Array data;
    Array weights;
    Array recurrentWeights;
    Array bias;
    Array hidden;
    Array cell;
    std::vector<int> inputs;

    RandomLayer(OperationCase& test, std::mt19937& random, CellKind kind, bool started)
    {
        recurrent.cell = kind;
        recurrent.direction = static_cast<Direction>(pick(random, 0, 2));
        recurrent.hidden_size = static_cast<int>(pick(random, 1, 40));
        recurrent.linear_before_reset = toss(random);
        const std::int64_t directions = recurrent.direction == Direction::Bidirectional ? 2 : 1;
        const std::int64_t rows = (kind == CellKind::Lstm ? 4 : 3) * recurrent.hidden_size;
        const Shape extents = {pick(random, 1, 12), pick(random, 1, 3), pick(random, 1, 30)};
        const Shape state = {directions, extents[1], recurrent.hidden_size};
        inputs = {test.operand(extents, &data), test.constant({directions, rows, extents[2]}, &weights, 0.4F),
            test.constant({directions, rows, recurrent.hidden_size}, &recurrentWeights, 0.4F), -1};
        if (toss(random)) {
            inputs[3] = test.constant({directions, 2 * rows}, &bias, 0.5F);
        }
        if (started) {
            inputs.push_back(toss(random) ? test.operand(state, &hidden) : -1);
            if (kind == CellKind::Lstm) {
                inputs.push_back(toss(random) ? test.operand(state, &cell) : -1);
            }
        }
    }

    std::vector<Array> expected() const
    {
        const auto given = [](const Array& array) { return array.data.empty() ? nullptr : &array; };
        return reference::recurrent(
            recurrent, {data, weights, recurrentWeights, given(bias), given(hidden), given(cell)});
    }
};

void checkAllResults(CellKind kind)
{
    repeatRandomly(40, [kind](std::mt19937& random) {
        OperationCase test(random);
        const RandomLayer layer(test, random, kind, toss(random));
        const std::size_t results = kind == CellKind::Lstm ? 3 : 2;
        const std::vector<int> outputs = test.maker.addAll(layer.recurrent, layer.inputs, static_cast<int>(results));
        const std::vector<Array> actual = test.run(outputs);
        const std::vector<Array> expected = layer.expected();
        ASSERT_EQ(actual.size(), results);
        for (std::size_t i = 0; i < results; ++i) {
            expectClose(actual[i], expected[i], 2e-5F);
        }
    });
}

TEST(Recurrent, LstmEqualsItsDefinition)
{
    checkAllResults(CellKind::Lstm);
}

TEST(Recurrent, GruEqualsItsDefinition)
{
    checkAllResults(CellKind::Gru);
}

TEST(Recurrent, OnlyOneOfTheResultsIsRead)
{
    repeatRandomly(20, [](std::mt19937& random) {
        OperationCase test(random);
        const CellKind kind = toss(random) ? CellKind::Lstm : CellKind::Gru;
        const RandomLayer layer(test, random, kind, false);
        const int results = kind == CellKind::Lstm ? 3 : 2;
        const auto chosen = static_cast<std::size_t>(pick(random, 0, results - 1));
        const int output = test.maker.addAll(layer.recurrent, layer.inputs, results)[chosen];
        // The others are either there and unread, or not there at all.
        if (toss(random)) {
            for (int& other : test.maker.network.operations.back()->outputs) {
                other = other == output ? other : -1;
            }
        }
        test.expect(output, layer.expected()[chosen]);
    });
}

TEST(Recurrent, TwoLayersAsPyTorchWritesThem)
{
    std::mt19937 random(runSeed());
    OperationCase test(random);
    Array data;
    int current = test.computed({7, 2, 5}, &data);
    Array expected = data;
    for (const std::int64_t inputs : {5, 16}) {
        format::RecurrentT recurrent;
        recurrent.direction = Direction::Bidirectional;
        recurrent.hidden_size = 8;
        Array weights;
        Array recurrentWeights;
        const int sequence = test.maker.addAll(recurrent,
            {current, test.constant({2, 32, inputs}, &weights), test.constant({2, 32, 8}, &recurrentWeights)}, 1)[0];
        format::TransposeT transpose;
        transpose.permutation = {0, 2, 1, 3};
        current
            = test.maker.add(format::ReshapeT(), {test.maker.add(transpose, {sequence}), test.maker.list({0, 0, -1})});
        expected = reference::transpose({0, 2, 1, 3},
            reference::recurrent(recurrent, {expected, weights, recurrentWeights, nullptr, nullptr, nullptr})[0]);
        expected.shape = {7, 2, 16};
    }
    test.expect(current, expected);
}

} // namespace
} // namespace scribo::test
