#include "operationcase.h"

#include <cmath>
#include <limits>

namespace scribo::test {

namespace {

std::int64_t countOf(const Shape& shape)
{
    return std::accumulate(shape.begin(), shape.end(), std::int64_t(1), std::multiplies<>());
}

} // namespace

int OperationCase::addPicture()
{
    if (picture < 0) {
        picture = maker.input(1, 1, 1);
    }
    return picture;
}

int OperationCase::computed(const Array& values)
{
    const auto start = static_cast<std::int64_t>(pixels.size());
    pixels.insert(pixels.end(), values.data.begin(), values.data.end());
    const int cut = maker.add(
        format::SliceT(), {addPicture(), maker.list({start}), maker.list({start + values.count()}), maker.list({3})});
    return maker.add(format::ReshapeT(), {cut, maker.list(values.shape)});
}

int OperationCase::computed(const Shape& shape, Array* values, float spread)
{
    *values = {shape, randomFloats(random, countOf(shape), spread)};
    return computed(*values);
}

int OperationCase::constant(const Shape& shape, Array* values, float spread)
{
    *values = {shape, randomFloats(random, countOf(shape), spread)};
    return maker.floats(shape, values->data);
}

int OperationCase::operand(const Shape& shape, Array* values, float spread)
{
    return toss(random) ? computed(shape, values, spread) : constant(shape, values, spread);
}

std::vector<Array> OperationCase::run(const std::vector<int>& outputs)
{
    addPicture();
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        maker.output(outputs[i], "output" + std::to_string(i));
    }
    // A network of constants alone still has a picture.
    if (pixels.empty()) {
        pixels.push_back(0.0F);
    }
    const int width = static_cast<int>(pixels.size());
    Session session(maker.bytes(width, width));
    std::vector<Array> results;
    if (session.isReady()) {
        results = session.run({{1, 1, 1, width}, pixels});
    }
    for (const auto& [severity, message] : session.logger().take()) {
        ADD_FAILURE() << message;
    }
    return results;
}

void OperationCase::expect(int output, const Array& expected, float tolerance)
{
    const std::vector<Array> results = run({output});
    ASSERT_EQ(results.size(), 1U);
    expectClose(results.front(), expected, tolerance);
}

void expectClose(const Array& actual, const Array& expected, float tolerance)
{
    ASSERT_EQ(actual.shape, expected.shape);
    float worst = 0;
    std::size_t where = 0;
    for (std::size_t i = 0; i < expected.data.size(); ++i) {
        const float a = actual.data[i];
        const float b = expected.data[i];
        const float difference = std::isnan(a) != std::isnan(b) ? std::numeric_limits<float>::infinity()
            : std::isnan(a) || a == b                           ? 0.0F
                                                                : std::fabs(a - b) / std::max(1.0F, std::fabs(b));
        if (difference > worst) {
            worst = difference;
            where = i;
        }
    }
    EXPECT_LE(worst, tolerance) << "element " << where << ": " << actual.data[where] << " instead of "
                                << expected.data[where];
}

Shape randomShape(std::mt19937& random, std::int64_t rank, std::int64_t largest)
{
    Shape shape;
    for (std::int64_t i = 0; i < rank; ++i) {
        shape.push_back(pick(random, 1, largest));
    }
    return shape;
}

Shape randomBroadcast(std::mt19937& random, const Shape& shape)
{
    Shape result(shape.begin() + pick(random, 0, static_cast<std::int64_t>(shape.size())), shape.end());
    for (std::int64_t& extent : result) {
        extent = pick(random, 0, 2) == 0 ? 1 : extent;
    }
    return result;
}

} // namespace scribo::test
