// Models that were trained on other pictures, or give their scores another way, than training/ does it.

#include "build.h"
#include "enginerunner.h"
#include "format/enginefile.h"
#include "modelmaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

namespace {

using namespace scribo::builder;
using scribo::tool::EngineRunner;
using scribo::tool::RunOutput;
using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;
using Integers = std::vector<std::int64_t>;
using scribo::Faults;
using Floats = std::vector<float>;

constexpr int width = 12;
constexpr std::size_t plane = 8 * width;

RunOutput runModel(
    const ModelMaker& model, const BuildOptions& options, const Floats& picture, Integers* input = nullptr)
{
    const std::string bytes = model.bytes();
    const auto built = buildNetwork(bytes.data(), bytes.size(), options);
    if (!built) {
        ADD_FAILURE() << testing::PrintToString(built.error());
        return {};
    }
    const scribo::format::NetworkT& network = **built;
    if (input) {
        *input = network.tensors[static_cast<std::size_t>(network.inputs.front())]->dims;
    }
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(network);
    EngineRunner runner;
    const auto outputs = runner.load(engine.data(), engine.size()).and_then([&] { return runner.run(width, picture); });
    if (!outputs || outputs->empty()) {
        ADD_FAILURE() << (outputs ? "no outputs" : outputs.error().message);
        return {};
    }
    return outputs->front();
}

Faults faultsWith(const ModelMaker& model, const BuildOptions& options)
{
    const std::string bytes = model.bytes();
    const auto network = buildNetwork(bytes.data(), bytes.size(), options);
    EXPECT_FALSE(network);
    return network ? Faults() : network.error();
}

BuildOptions atTestWidth()
{
    return {{width, width}, "test.onnx"};
}

Floats picture()
{
    return scribo::tool::testPicture(3 * plane);
}

/// A model whose first operation takes `channels` channels: a convolution with these pads, or a sum.
ModelMaker modelOf(std::int64_t channels, std::int64_t pad, bool withBias = true)
{
    ModelMaker maker;
    maker.inputShape({1, channels, 8, -1});
    Floats weights(static_cast<std::size_t>(4 * channels * 9));
    for (std::size_t i = 0; i < weights.size(); ++i) {
        weights[i] = std::sin(static_cast<float>(i));
    }
    maker.constant("w", {4, channels, 3, 3}, weights);
    maker.constant("b", {4}, {1, -2, 3, -4});
    std::vector<std::string> inputs = {"x", "w"};
    if (withBias) {
        inputs.push_back("b");
    }
    setAttribute(maker.node("Conv", inputs, {"y"}), "pads", Integers(4, pad));
    return maker;
}

ModelMaker sumOf(std::int64_t channels)
{
    ModelMaker maker;
    maker.inputShape({1, channels, 8, -1});
    maker.constant("c", {1}, {0.5f});
    maker.node("Add", {"x", "c"}, {"y"});
    return maker;
}

/// A model of one convolution that takes a picture of `channels` channels, whatever its weights and bias are made for.
ModelMaker convolutionOf(std::int64_t channels, const Integers& weights, std::int64_t biases)
{
    ModelMaker maker;
    maker.inputShape({1, channels, 8, -1});
    const std::int64_t count = std::accumulate(weights.begin(), weights.end(), std::int64_t(1), std::multiplies<>());
    maker.constant("w", weights, Floats(static_cast<std::size_t>(count), 0.5f));
    maker.constant("b", {biases}, Floats(static_cast<std::size_t>(biases), 0.5f));
    maker.node("Conv", {"x", "w", "b"}, {"y"}, "first");
    return maker;
}

struct Trained
{
    const char* name;
    std::int64_t channels;
    PictureOptions options;
    /// What the network must get for channel `i` of the pixel (red, green, blue).
    float (*expected)(const float (&pixel)[3], std::size_t i);
};

const Trained trained[] = {
    {"Bgr", 3, {0, Channels::Bgr, {{}}}, [](const float (&pixel)[3], std::size_t i) { return pixel[2 - i]; }},
    {"Grey", 1, {0, Channels::Grey, {{}}},
        [](const float (&pixel)[3], std::size_t) { return 0.299f * pixel[0] + 0.587f * pixel[1] + 0.114f * pixel[2]; }},
    {"Range", 3, {0, Channels::Rgb, {{0, 1}}},
        [](const float (&pixel)[3], std::size_t i) { return (pixel[i] + 1) / 2; }},
    {"Inverted", 3, {0, Channels::Rgb, {{1, -1}}}, [](const float (&pixel)[3], std::size_t i) { return -pixel[i]; }},
    {"BgrRanges", 3, {0, Channels::Bgr, {{0, 1}, {-1, 1}, {0, 255}}},
        [](const float (&pixel)[3], std::size_t i) {
            const float value = pixel[2 - i];
            return i == 1 ? value : (value + 1) / 2 * (i == 2 ? 255.0f : 1.0f);
        }},
    {"GreyRange", 1, {0, Channels::Grey, {{0, 1}}},
        [](const float (&pixel)[3], std::size_t) {
            return (0.299f * pixel[0] + 0.587f * pixel[1] + 0.114f * pixel[2] + 1) / 2;
        }},
};

class AdaptPicture : public testing::TestWithParam<Trained>
{
protected:
    void expectSame(const ModelMaker& model)
    {
        const Floats given = picture();
        Floats wanted(static_cast<std::size_t>(GetParam().channels) * plane);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const float pixel[3] = {given[i % plane], given[plane + i % plane], given[2 * plane + i % plane]};
            wanted[i] = GetParam().expected(pixel, i / plane);
        }
        BuildOptions options = atTestWidth();
        const RunOutput plain = runModel(model, options, wanted);
        options.picture = GetParam().options;
        Integers input;
        const RunOutput adapted = runModel(model, options, given, &input);
        EXPECT_EQ(input, (Integers{1, 3, 8, -1}));
        EXPECT_EQ(adapted.extents, plain.extents);
        EXPECT_THAT(adapted.values, Pointwise(FloatNear(2e-3f), plain.values));
    }
};

TEST_P(AdaptPicture, InTheFirstConvolution)
{
    expectSame(modelOf(GetParam().channels, 0));
    expectSame(modelOf(GetParam().channels, 0, false));
}

TEST_P(AdaptPicture, InAConvolutionThatPads)
{
    expectSame(modelOf(GetParam().channels, 1));
}

TEST_P(AdaptPicture, BeforeAnythingElse)
{
    expectSame(sumOf(GetParam().channels));
}

INSTANTIATE_TEST_SUITE_P(
    Trained, AdaptPicture, testing::ValuesIn(trained), [](const auto& one) { return one.param.name; });

TEST(AdaptPictureFaults, ChannelsThatDoNotFit)
{
    BuildOptions options = atTestWidth();
    options.picture.channels = Channels::Grey;
    EXPECT_THAT(
        faultsWith(modelOf(3, 0), options), ElementsAre("input 'x' has 3 channels, not the 1 of a grey picture"));
    options.picture.channels = Channels::Bgr;
    EXPECT_THAT(
        faultsWith(modelOf(1, 0), options), ElementsAre("input 'x' has 1 channels, not the 3 of a picture in colour"));
    options.picture = {0, Channels::Rgb, {{0, 1}}};
    EXPECT_THAT(
        faultsWith(modelOf(5, 0), options), ElementsAre("input 'x' has 5 channels, not the 3 of a picture in colour"));
    options.picture.channels = Channels::Rgb;
    options.picture.ranges = {{0, 1}, {0, 1}};
    EXPECT_THAT(
        faultsWith(modelOf(3, 0), options), ElementsAre("input 'x' has 3 channels, but 2 ranges of values are given"));
}

TEST(AdaptPictureFaults, WeightsThatDoNotFit)
{
    BuildOptions options = atTestWidth();
    const PictureOptions adaptations[] = {{0, Channels::Bgr, {{}}}, {0, Channels::Rgb, {{0, 1}}}};
    for (const PictureOptions& adaptation : adaptations) {
        options.picture = adaptation;
        EXPECT_THAT(faultsWith(convolutionOf(3, {1, 1, 1, 1}, 1), options),
            ElementsAre("at width 12: Convolution 'first': weights of 1x1x1x1 in 1 group(s) do not fit 1x3x8x12"));
        EXPECT_THAT(faultsWith(convolutionOf(3, {4, 5, 3, 3}, 4), options),
            ElementsAre("at width 12: Convolution 'first': weights of 4x5x3x3 in 1 group(s) do not fit 1x3x8x12"));
        EXPECT_THAT(faultsWith(convolutionOf(3, {4, 3, 3, 3}, 1), options),
            ElementsAre("at width 12: Convolution 'first': a bias of 1 does not fit 4x3x3x3"));
    }
    options.picture = {0, Channels::Grey, {{}}};
    EXPECT_THAT(faultsWith(convolutionOf(1, {4, 3, 3, 3}, 4), options),
        ElementsAre("at width 12: Convolution 'first': weights of 4x3x3x3 in 1 group(s) do not fit 1x1x8x12"));
}

TEST(AdaptPictureHeight, IsGivenWhereTheModelLeavesItOpen)
{
    ModelMaker model = modelOf(3, 0);
    BuildOptions options = atTestWidth();
    options.picture.height = 8;
    const RunOutput fixed = runModel(model, options, picture());
    model.inputShape({1, 3, -1, -1});
    EXPECT_EQ(runModel(model, options, picture()).values, fixed.values);
    model.inputShape({1, 3, 16, -1});
    EXPECT_THAT(faultsWith(model, options), ElementsAre("input 'x' has a height of 16, not 8"));
}

/// A model that gives 2 x 12 x 8 numbers of its picture in a layout of three axes.
ModelMaker scoresIn(const std::string& layout)
{
    ModelMaker maker;
    maker.constant("w", {5, 3, 8, 1}, scribo::tool::testPicture(5 * 3 * 8));
    maker.integers("axes", {2});
    maker.node("Conv", {"x", "w"}, {"scores"});
    maker.node("Squeeze", {"scores", "axes"}, {"nkt"});
    Integers order;
    for (char axis : layout) {
        order.push_back(static_cast<std::int64_t>(std::string("nkt").find(axis)));
    }
    setAttribute(maker.node("Transpose", {"nkt"}, {"y"}), "perm", order);
    return maker;
}

TEST(AdaptScores, AnyLayout)
{
    const RunOutput wanted = runModel(scoresIn("tnk"), atTestWidth(), picture());
    EXPECT_EQ(wanted.extents, (Integers{width, 1, 5}));
    for (const char* layout : {"tkn", "ntk", "nkt", "ktn", "knt"}) {
        BuildOptions options = atTestWidth();
        options.scores.layout = layout;
        const RunOutput turned = runModel(scoresIn(layout), options, picture());
        EXPECT_EQ(turned.extents, wanted.extents) << layout;
        EXPECT_EQ(turned.values, wanted.values) << layout;
    }
}

TEST(AdaptScores, BlankLast)
{
    BuildOptions options = atTestWidth();
    Floats wanted = runModel(scoresIn("tnk"), options, picture()).values;
    for (auto row = wanted.begin(); row != wanted.end(); row += 5) {
        std::rotate(row, row + 4, row + 5);
    }
    options.scores = {"ntk", true, false};
    EXPECT_EQ(runModel(scoresIn("ntk"), options, picture()).values, wanted);
}

TEST(AdaptScores, Softmax)
{
    BuildOptions options = atTestWidth();
    Floats wanted = runModel(scoresIn("tnk"), options, picture()).values;
    for (auto row = wanted.begin(); row != wanted.end(); row += 5) {
        float sum = 0;
        for (auto score = row; score != row + 5; ++score) {
            *score = std::exp(*score);
            sum += *score;
        }
        std::transform(row, row + 5, row, [sum](float score) { return score / sum; });
    }
    options.scores.needsSoftmax = true;
    EXPECT_THAT(runModel(scoresIn("tnk"), options, picture()).values, Pointwise(FloatNear(1e-5f), wanted));
}

TEST(AdaptScores, TurningMeetsTheModelsOwnTranspose)
{
    ModelMaker model = scoresIn("ntk");
    model.graph().mutable_output(0)->set_name("z");
    model.constant("weights", {5, 7}, scribo::tool::testPicture(35));
    model.constant("bias", {7}, {1, 2, 3, 4, 5, 6, 7});
    model.node("MatMul", {"y", "weights"}, {"products"});
    model.node("Add", {"bias", "products"}, {"sums"});
    model.node("Relu", {"sums"}, {"relu"});
    setAttribute(model.node("Softmax", {"relu"}, {"z"}), "axis", std::int64_t(2));
    BuildOptions options = atTestWidth();
    const RunOutput wanted = runModel(model, options, picture());
    options.scores.layout = "ntk";
    EXPECT_EQ(runModel(model, options, picture()).values, wanted.values);
    const std::string bytes = model.bytes();
    const auto network = buildNetwork(bytes.data(), bytes.size(), options);
    ASSERT_TRUE(network);
    const auto transposes = std::count_if((*network)->operations.begin(), (*network)->operations.end(),
        [](const auto& one) { return one->kind.type == scribo::format::OperationKind::Transpose; });
    EXPECT_EQ(transposes, 1);
}

TEST(AdaptScores, KeepsTheNameAndEveryOutput)
{
    ModelMaker model = scoresIn("ntk");
    model.graph().add_output()->set_name("z");
    setAttribute(model.node("Softmax", {"y"}, {"z"}), "axis", std::int64_t(2));
    BuildOptions options = {{width, width + 4}, "test.onnx"};
    options.scores.layout = "ntk";
    const std::string bytes = model.bytes();
    const auto network = buildNetwork(bytes.data(), bytes.size(), options);
    ASSERT_TRUE(network) << testing::PrintToString(network.error());
    std::vector<std::string> names;
    for (int output : (*network)->outputs) {
        const auto& tensor = *(*network)->tensors[static_cast<std::size_t>(output)];
        names.push_back(tensor.name);
        EXPECT_EQ(tensor.dims, (Integers{-1, 1, 5}));
    }
    EXPECT_THAT(names, ElementsAre("y", "z"));
}

TEST(AdaptScoresFaults, LayoutsThatDoNotFit)
{
    BuildOptions options = {{width, width + 4}, "test.onnx"};
    options.scores.layout = "ttk";
    EXPECT_THAT(faultsWith(scoresIn("ntk"), options),
        ElementsAre("layout 'ttk' is not made of t (steps), n (batch) and k (classes)"));
    options.scores.layout = "nkt";
    EXPECT_THAT(faultsWith(modelOf(3, 0), options),
        ElementsAre("output 'y' has 4 dimensions; steps, batch and classes are three"));
    options.scores.layout = "nkt";
    EXPECT_THAT(faultsWith(scoresIn("ntk"), options),
        ElementsAre("output 'y' has a number of classes that depends on the width"));
}

} // namespace
