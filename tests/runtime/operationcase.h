#pragma once

#include "array.h"
#include "randomarrays.h"
#include "session.h"

#include <gtest/gtest.h>

#include <string>

namespace scribo::test {

/// A network around one or a few operations. Its operands are cut out of the picture, so that they
/// are computed, or are constants.
class OperationCase
{
public:
    explicit OperationCase(std::mt19937& random)
        : random(random)
    {
    }

    /// Random floats of `shape` as an operand that is computed.
    int computed(const Shape& shape, Array* values, float spread = 1.0F);
    /// The same with given floats.
    int computed(const Array& values);
    /// Random floats of `shape` as a constant.
    int constant(const Shape& shape, Array* values, float spread = 1.0F);
    /// One of the two.
    int operand(const Shape& shape, Array* values, float spread = 1.0F);

    NetworkMaker maker;

    /// What the runtime gives for the tensors in `outputs`; empty, with a failed expectation, when it
    /// refuses the network.
    std::vector<Array> run(const std::vector<int>& outputs);
    /// Expects that the runtime gives `expected` for `output`.
    void expect(int output, const Array& expected, float tolerance = 2e-5F);

private:
    int addPicture();

    std::mt19937& random;
    int picture = -1;
    std::vector<float> pixels;
};

/// Expects the same shape, and every element within `tolerance` of what is expected, relative to it
/// where it is larger than 1.
void expectClose(const Array& actual, const Array& expected, float tolerance);

/// Calls `body(random)` `count` times, each with a seed of its own that a failure names.
template <class Body>
void repeatRandomly(int count, Body body)
{
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("case " + std::to_string(i) + " with SCRIBO_SEED=" + std::to_string(runSeed()));
        std::mt19937 random(runSeed() + static_cast<unsigned>(i) * 7919U);
        body(random);
    }
}

/// `rank` extents from 1 to `largest`.
Shape randomShape(std::mt19937& random, std::int64_t rank, std::int64_t largest);

/// A shape that goes together with `shape` by broadcasting: some axes 1, some in front left out.
Shape randomBroadcast(std::mt19937& random, const Shape& shape);

} // namespace scribo::test
