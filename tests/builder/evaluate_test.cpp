// Operations on constants, worked out by the builder.

#include "evaluate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace scribo::format;
using scribo::builder::evaluate;
using scribo::builder::floatValues;
using scribo::builder::integerValues;
using scribo::builder::makeConstant;
using testing::ElementsAre;
using Extents = std::vector<std::int64_t>;
using Integers = std::vector<std::int64_t>;
using Floats = std::vector<float>;

TensorT floats(Extents extents, const Floats& values)
{
    return makeConstant("", std::move(extents), values);
}

TensorT integers(Extents extents, const Integers& values)
{
    return makeConstant("", std::move(extents), values);
}

TensorT list(const Integers& values)
{
    return integers({static_cast<std::int64_t>(values.size())}, values);
}

template <class Kind>
std::optional<TensorT> apply(Kind kind, std::vector<TensorT> inputs)
{
    NetworkT network;
    OperationT operation;
    operation.kind.Set(std::move(kind));
    for (TensorT& input : inputs) {
        operation.inputs.push_back(static_cast<int>(network.tensors.size()));
        network.tensors.push_back(std::make_unique<TensorT>(std::move(input)));
    }
    return evaluate(network, operation);
}

BinaryT binary(BinaryKind kind)
{
    BinaryT result;
    result.kind = kind;
    return result;
}

UnaryT unary(UnaryKind kind)
{
    UnaryT result;
    result.kind = kind;
    return result;
}

template <class Kind>
Kind withAxis(int axis)
{
    Kind kind;
    kind.axis = axis;
    return kind;
}

template <class Kind>
Kind withAxes(const std::vector<int>& axes)
{
    Kind kind;
    kind.axes = axes;
    return kind;
}

const TensorT twoByThree = floats({2, 3}, {0, 1, 2, 3, 4, 5});

TEST(Evaluate, BinaryBroadcastsFloats)
{
    const auto sum = apply(binary(BinaryKind::Add), {twoByThree, floats({2, 1}, {10, 20})});
    ASSERT_TRUE(sum);
    EXPECT_EQ(sum->dims, (Extents{2, 3}));
    EXPECT_THAT(floatValues(*sum), ElementsAre(10, 11, 12, 23, 24, 25));
}

TEST(Evaluate, BinaryKindsOnFloats)
{
    const auto result = [](BinaryKind kind) {
        return floatValues(*apply(binary(kind), {floats({2}, {6, 2}), floats({}, {3})}));
    };
    EXPECT_THAT(result(BinaryKind::Subtract), ElementsAre(3, -1));
    EXPECT_THAT(result(BinaryKind::Multiply), ElementsAre(18, 6));
    EXPECT_THAT(result(BinaryKind::Divide), ElementsAre(2, 2.0f / 3));
    EXPECT_THAT(result(BinaryKind::Power), ElementsAre(216, 8));
    EXPECT_THAT(result(BinaryKind::Maximum), ElementsAre(6, 3));
    EXPECT_THAT(result(BinaryKind::Minimum), ElementsAre(3, 2));
}

TEST(Evaluate, BinaryKindsOnIntegers)
{
    const auto result = [](BinaryKind kind) { return integerValues(*apply(binary(kind), {list({-7, 7}), list({2})})); };
    EXPECT_THAT(result(BinaryKind::Add), ElementsAre(-5, 9));
    EXPECT_THAT(result(BinaryKind::Subtract), ElementsAre(-9, 5));
    EXPECT_THAT(result(BinaryKind::Multiply), ElementsAre(-14, 14));
    EXPECT_THAT(result(BinaryKind::Divide), ElementsAre(-3, 3));
    EXPECT_THAT(result(BinaryKind::Power), ElementsAre(49, 49));
    EXPECT_THAT(result(BinaryKind::Maximum), ElementsAre(2, 7));
    EXPECT_THAT(result(BinaryKind::Minimum), ElementsAre(-7, 2));
}

TEST(Evaluate, BinaryRefusesWhatDoesNotFit)
{
    EXPECT_FALSE(apply(binary(BinaryKind::Add), {floats({2}, {1, 2}), floats({3}, {1, 2, 3})}));
    EXPECT_FALSE(apply(binary(BinaryKind::Add), {floats({1}, {1}), list({1})}));
    EXPECT_FALSE(apply(binary(BinaryKind::Divide), {list({1}), list({0})}));
    EXPECT_FALSE(apply(binary(BinaryKind::Multiply), {list({std::numeric_limits<std::int64_t>::max()}), list({2})}));
    EXPECT_FALSE(apply(binary(BinaryKind::Divide), {list({std::numeric_limits<std::int64_t>::min()}), list({-1})}));
}

TEST(Evaluate, UnaryKinds)
{
    const auto result
        = [](UnaryKind kind, float value) { return floatValues(*apply(unary(kind), {floats({1}, {value})})).front(); };
    EXPECT_FLOAT_EQ(result(UnaryKind::Sqrt, 9), 3);
    EXPECT_FLOAT_EQ(result(UnaryKind::Exp, 1), std::exp(1.0f));
    EXPECT_FLOAT_EQ(result(UnaryKind::Log, 5), std::log(5.0f));
    EXPECT_FLOAT_EQ(result(UnaryKind::Negate, 5), -5);
    EXPECT_FLOAT_EQ(result(UnaryKind::Absolute, -5), 5);
    EXPECT_FLOAT_EQ(result(UnaryKind::Reciprocal, 4), 0.25f);
    EXPECT_FLOAT_EQ(result(UnaryKind::Erf, 0.5f), std::erf(0.5f));
    EXPECT_FLOAT_EQ(result(UnaryKind::Floor, -1.5f), -2);
    EXPECT_FLOAT_EQ(result(UnaryKind::Ceil, 1.2f), 2);
    EXPECT_FALSE(apply(unary(UnaryKind::Negate), {list({1})}));
}

TEST(Evaluate, ReshapeCopiesAndCompletesExtents)
{
    EXPECT_EQ(apply(ReshapeT(), {twoByThree, list({3, 2})})->dims, (Extents{3, 2}));
    EXPECT_EQ(apply(ReshapeT(), {twoByThree, list({0, -1, 1})})->dims, (Extents{2, 3, 1}));
    EXPECT_FALSE(apply(ReshapeT(), {twoByThree, list({4, 2})}));
    EXPECT_FALSE(apply(ReshapeT(), {twoByThree, list({4, -1})}));
    EXPECT_FALSE(apply(ReshapeT(), {twoByThree, list({-1, -1})}));
    EXPECT_FALSE(apply(ReshapeT(), {twoByThree, list({-2, 3})}));
    EXPECT_FALSE(apply(ReshapeT(), {twoByThree, list({2, 3, 0})}));
}

TEST(Evaluate, SqueezeAndUnsqueeze)
{
    const TensorT column = floats({1, 3, 1}, {1, 2, 3});
    EXPECT_EQ(apply(withAxes<SqueezeT>({0, -1}), {column})->dims, (Extents{3}));
    EXPECT_FALSE(apply(withAxes<SqueezeT>({1}), {column}));
    EXPECT_FALSE(apply(withAxes<SqueezeT>({3}), {column}));
    EXPECT_EQ(apply(withAxes<UnsqueezeT>({0, -1}), {twoByThree})->dims, (Extents{1, 2, 3, 1}));
    EXPECT_FALSE(apply(withAxes<UnsqueezeT>({0, 0}), {twoByThree}));
    EXPECT_FALSE(apply(withAxes<UnsqueezeT>({4}), {twoByThree}));
}

TEST(Evaluate, Transpose)
{
    TransposeT swap;
    swap.permutation = {1, 0};
    const auto result = apply(swap, {twoByThree});
    EXPECT_EQ(result->dims, (Extents{3, 2}));
    EXPECT_THAT(floatValues(*result), ElementsAre(0, 3, 1, 4, 2, 5));
    swap.permutation = {0, 0};
    EXPECT_FALSE(apply(swap, {twoByThree}));
    swap.permutation = {0};
    EXPECT_FALSE(apply(swap, {twoByThree}));
}

TEST(Evaluate, Concat)
{
    const auto result = apply(withAxis<ConcatT>(-1), {twoByThree, floats({2, 1}, {8, 9})});
    EXPECT_EQ(result->dims, (Extents{2, 4}));
    EXPECT_THAT(floatValues(*result), ElementsAre(0, 1, 2, 8, 3, 4, 5, 9));
    EXPECT_FALSE(apply(withAxis<ConcatT>(0), {twoByThree, floats({2, 1}, {8, 9})}));
    EXPECT_FALSE(apply(withAxis<ConcatT>(2), {twoByThree, twoByThree}));
    EXPECT_FALSE(apply(withAxis<ConcatT>(0), {twoByThree, floats({3}, {1, 2, 3})}));
    EXPECT_FALSE(apply(withAxis<ConcatT>(0), {list({1}), floats({1}, {1})}));
}

TEST(Evaluate, Gather)
{
    const auto columns = apply(withAxis<GatherT>(1), {twoByThree, integers({1, 2}, {2, -3})});
    EXPECT_EQ(columns->dims, (Extents{2, 1, 2}));
    EXPECT_THAT(floatValues(*columns), ElementsAre(2, 0, 5, 3));
    const auto scalar = apply(withAxis<GatherT>(0), {list({5, 6, 7}), integers({}, {1})});
    EXPECT_TRUE(scalar->dims.empty());
    EXPECT_THAT(integerValues(*scalar), ElementsAre(6));
    EXPECT_FALSE(apply(withAxis<GatherT>(1), {twoByThree, list({3})}));
    EXPECT_FALSE(apply(withAxis<GatherT>(1), {twoByThree, list({-4})}));
    EXPECT_FALSE(apply(withAxis<GatherT>(2), {twoByThree, list({0})}));
    EXPECT_FALSE(apply(withAxis<GatherT>(0), {twoByThree, floats({1}, {0})}));
}

std::optional<TensorT> slice(
    const TensorT& data, const Integers& starts, const Integers& ends, const Integers& axes, const Integers& steps)
{
    return apply(SliceT(), {data, list(starts), list(ends), list(axes), list(steps)});
}

TEST(Evaluate, Slice)
{
    const TensorT digits = list({0, 1, 2, 3, 4, 5, 6, 7});
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    EXPECT_THAT(integerValues(*slice(digits, {2}, {5}, {0}, {1})), ElementsAre(2, 3, 4));
    EXPECT_THAT(integerValues(*slice(digits, {-3}, {most}, {-1}, {1})), ElementsAre(5, 6, 7));
    EXPECT_THAT(integerValues(*slice(digits, {1}, {100}, {0}, {3})), ElementsAre(1, 4, 7));
    EXPECT_THAT(integerValues(*slice(digits, {-1}, {least}, {0}, {-3})), ElementsAre(7, 4, 1));
    EXPECT_THAT(integerValues(*slice(digits, {100}, {5}, {0}, {-1})), ElementsAre(7, 6));
    EXPECT_FALSE(slice(digits, {5}, {2}, {0}, {1})) << "nothing is left";
    EXPECT_FALSE(slice(digits, {0}, {1}, {1}, {1}));
    EXPECT_FALSE(slice(digits, {0}, {1}, {0}, {0}));
    EXPECT_FALSE(slice(digits, {0}, {1}, {0}, {least}));
    EXPECT_FALSE(slice(digits, {0, 0}, {1}, {0}, {1}));
    const auto inner = slice(twoByThree, {0, 1}, {1, 3}, {0, 1}, {1, 1});
    EXPECT_EQ(inner->dims, (Extents{1, 2}));
    EXPECT_THAT(floatValues(*inner), ElementsAre(1, 2));
}

TEST(Evaluate, ExpandIsTwoSided)
{
    const auto result = apply(ExpandT(), {floats({2, 1}, {1, 2}), list({1, 3})});
    EXPECT_EQ(result->dims, (Extents{2, 3}));
    EXPECT_THAT(floatValues(*result), ElementsAre(1, 1, 1, 2, 2, 2));
    EXPECT_FALSE(apply(ExpandT(), {twoByThree, list({4})}));
    EXPECT_FALSE(apply(ExpandT(), {floats({1}, {1}), list({1 << 14, 1 << 14})})) << "too large to keep";
}

TEST(Evaluate, ShapeFillAndCast)
{
    EXPECT_THAT(integerValues(*apply(ShapeOfT(), {twoByThree})), ElementsAre(2, 3));
    FillT fill;
    fill.value = 2.5f;
    EXPECT_THAT(floatValues(*apply(fill, {list({1, 2})})), ElementsAre(2.5f, 2.5f));
    EXPECT_FALSE(apply(fill, {list({-1})}));
    EXPECT_FALSE(apply(fill, {list({0})}));
    EXPECT_FALSE(apply(fill, {list({1 << 20, 1 << 20})}));
    fill.type = ElementType::Int64;
    EXPECT_THAT(integerValues(*apply(fill, {list({2})})), ElementsAre(2, 2));
    CastT cast;
    cast.to = ElementType::Int64;
    EXPECT_THAT(integerValues(*apply(cast, {floats({2}, {-1.9f, -1.9f})})), ElementsAre(-1, -1));
    EXPECT_FALSE(apply(cast, {floats({2}, {1, 2})})) << "integers from floats only where they are one number";
    EXPECT_THAT(integerValues(*apply(cast, {list({4})})), ElementsAre(4));
    EXPECT_FALSE(apply(cast, {floats({1}, {std::numeric_limits<float>::quiet_NaN()})}));
    EXPECT_FALSE(apply(cast, {floats({1}, {1e30f})}));
    cast.to = ElementType::Float32;
    EXPECT_THAT(floatValues(*apply(cast, {list({7, -2})})), ElementsAre(7, -2));
}

TEST(Evaluate, LeavesWhatIsComputed)
{
    EXPECT_FALSE(apply(binary(BinaryKind::Add), {twoByThree, TensorT()}));
    EXPECT_FALSE(apply(SoftmaxT(), {twoByThree})) << "not worked out by the builder";
}

TEST(Evaluate, ElementCountsAreBounded)
{
    EXPECT_EQ(scribo::builder::elementCount({}), 1);
    EXPECT_EQ(scribo::builder::elementCount({3, 0, 2}), 0);
    EXPECT_EQ(scribo::builder::elementCount({3, -1}), -1);
    EXPECT_EQ(scribo::builder::elementCount({1 << 20, 1 << 20}), -1);
    EXPECT_EQ(scribo::builder::elementCount({std::int64_t(1) << 62, 4}), -1);
    EXPECT_EQ(scribo::builder::elementCount({0, std::int64_t(1) << 62}), -1);
}

} // namespace
