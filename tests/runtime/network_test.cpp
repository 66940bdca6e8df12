#include "interpreter.h"
#include "operationcase.h"

namespace scribo::test {
namespace {

Array randomPicture(std::mt19937& random, std::int64_t width)
{
    return {{1, 3, 16, width}, randomFloats(random, 3 * 16 * width)};
}

class Crnn : public testing::TestWithParam<format::CellKind>
{
};

TEST_P(Crnn, EqualsItsDefinitionAtWidthsUpAndDown)
{
    std::mt19937 random(runSeed());
    NetworkMaker maker = smallCrnn(GetParam(), 11, runSeed());
    Session session(maker.bytes(8, 96));
    ASSERT_TRUE(session.isReady()) << session.logger().takeError();
    for (const int width : {8, 9, 40, 96, 95, 33, 8, 96, 40, 41, 10}) {
        SCOPED_TRACE("width " + std::to_string(width) + ", SCRIBO_SEED=" + std::to_string(runSeed()));
        const Array picture = randomPicture(random, width);
        const std::vector<Array> actual = session.run(picture);
        ASSERT_EQ(actual.size(), 1U);
        EXPECT_EQ(actual[0].shape, (Shape{width / 4, 1, 11}));
        expectClose(actual[0], interpret(maker.network, picture).front(), 1e-5F);
    }
    EXPECT_TRUE(session.logger().take().empty());
}

TEST_P(Crnn, GivesTheSameBitsForTheSamePicture)
{
    std::mt19937 random(runSeed());
    NetworkMaker maker = smallCrnn(GetParam(), 30, runSeed());
    const std::vector<std::uint8_t> bytes = maker.bytes(8, 96);
    Session first(bytes);
    Session second(bytes);
    const Array picture = randomPicture(random, 57);
    const std::vector<float> expected = first.run(picture).front().data;
    first.run(randomPicture(random, 90));
    EXPECT_EQ(first.run(picture).front().data, expected);
    EXPECT_EQ(second.run(picture).front().data, expected);
}

INSTANTIATE_TEST_SUITE_P(BothCells, Crnn, testing::Values(format::CellKind::Lstm, format::CellKind::Gru),
    [](const auto& test) { return format::EnumNameCellKind(test.param); });

TEST(Network, GivesTheInputOnThroughAShapeOnly)
{
    NetworkMaker maker;
    const int picture = maker.input(1, 2, 3);
    maker.output(maker.add(format::ReshapeT(), {picture, maker.list({6, -1})}), "flat");
    format::TransposeT transpose;
    transpose.permutation = {3, 2, 1, 0};
    maker.output(maker.add(transpose, {picture}), "turned");
    Session session(maker.bytes(1, 9));
    ASSERT_TRUE(session.isReady()) << session.logger().takeError();
    std::mt19937 random(runSeed());
    const Array input{{1, 2, 3, 5}, randomFloats(random, 30)};
    const std::vector<Array> outputs = session.run(input);
    ASSERT_EQ(outputs.size(), 2U);
    expectClose(outputs[0], {{6, 5}, input.data}, 0);
    EXPECT_EQ(outputs[1].at({4, 2, 1, 0}), input.at({0, 1, 2, 4}));
}

TEST(Network, GivesAConstantOut)
{
    NetworkMaker maker;
    maker.input(1, 1, 1);
    format::UnaryT negate;
    negate.kind = format::UnaryKind::Negate;
    maker.output(maker.add(negate, {maker.floats({2, 2}, {1, 2, 3, 4})}), "constant");
    Session session(maker.bytes(1, 9));
    ASSERT_TRUE(session.isReady()) << session.logger().takeError();
    const std::vector<Array> outputs = session.run({{1, 1, 1, 1}, {0}});
    ASSERT_EQ(outputs.size(), 1U);
    expectClose(outputs[0], {{2, 2}, {-1, -2, -3, -4}}, 0);
}

TEST(Network, WorksOutWhatSeveralReadOnce)
{
    // A result that is an output and also goes on, twice.
    NetworkMaker maker;
    const int picture = maker.input(1, 1, 2);
    const int doubled = maker.add(format::BinaryT(), {picture, picture});
    const int quadrupled = maker.add(format::BinaryT(), {doubled, doubled});
    maker.output(doubled, "doubled");
    maker.output(quadrupled, "quadrupled");
    Session session(maker.bytes(1, 9));
    ASSERT_TRUE(session.isReady()) << session.logger().takeError();
    const std::vector<Array> outputs = session.run({{1, 1, 2, 2}, {1, 2, 3, 4}});
    ASSERT_EQ(outputs.size(), 2U);
    EXPECT_EQ(outputs[0].data, (std::vector<float>{2, 4, 6, 8}));
    EXPECT_EQ(outputs[1].data, (std::vector<float>{4, 8, 12, 16}));
}

TEST(Network, ThousandsOfWidthChangesGiveTheSame)
{
    std::mt19937 random(runSeed());
    NetworkMaker maker = smallCrnn(format::CellKind::Lstm, 5, runSeed(), 4, 4);
    Session session(maker.bytes(8, 64));
    std::vector<std::vector<float>> expected;
    std::vector<Array> pictures;
    for (int width = 8; width <= 64; ++width) {
        pictures.push_back(randomPicture(random, width));
        expected.push_back(session.run(pictures.back()).front().data);
    }
    for (int i = 0; i < 2000; ++i) {
        const auto chosen = static_cast<std::size_t>(pick(random, 0, 56));
        ASSERT_EQ(session.run(pictures[chosen]).front().data, expected[chosen]) << "change " << i;
    }
}

} // namespace
} // namespace scribo::test
