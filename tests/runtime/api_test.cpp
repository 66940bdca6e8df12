#include "operationcase.h"

#include <gmock/gmock.h>

#include <cstring>

namespace scribo::test {
namespace {

nvinfer1::Dims dimsOf(const std::vector<std::int32_t>& extents)
{
    nvinfer1::Dims dims;
    dims.nbDims = static_cast<std::int32_t>(extents.size());
    std::copy(extents.begin(), extents.end(), dims.d);
    return dims;
}

std::vector<std::int32_t> extentsOf(const nvinfer1::Dims& dims)
{
    return {dims.d, dims.d + std::max(dims.nbDims, 0)};
}

/// A small recogniser in a context whose width is not set.
class Api : public testing::Test
{
protected:
    static constexpr std::size_t inputBytes = std::size_t(3) * 16 * 40 * 4;
    static constexpr std::size_t outputBytes = std::size_t(10) * 7 * 4;

    Api()
        : session(smallCrnn(format::CellKind::Lstm, 7, 1).bytes(32, 96))
        , context(session.executionContext())
    {
    }

    bool setWidth(int width) { return context.setBindingDimensions(0, dimsOf({1, 3, 16, width})); }

    /// What enqueueV2() says of these buffers at width 40.
    std::string enqueueError(void* input, void* output, cudaStream_t stream = nullptr)
    {
        void* const buffers[] = {input, output};
        EXPECT_TRUE(setWidth(40));
        EXPECT_FALSE(context.enqueueV2(buffers, stream, nullptr));
        return session.logger().takeError();
    }

    Session session;
    nvinfer1::IExecutionContext& context;
    void* input = deviceBuffer(0, inputBytes);
    void* output = deviceBuffer(1, outputBytes);
};

TEST_F(Api, NamesBindingsInOrder)
{
    EXPECT_EQ(session.engine().getNbBindings(), 2);
    EXPECT_EQ(session.engine().getBindingIndex("input"), 0);
    EXPECT_EQ(session.engine().getBindingIndex("output"), 1);
    EXPECT_EQ(session.engine().getBindingIndex("outpu"), -1);
    EXPECT_EQ(session.engine().getBindingIndex(""), -1);
    EXPECT_EQ(session.engine().getBindingIndex(nullptr), -1);
    EXPECT_TRUE(session.logger().take().empty());
}

TEST_F(Api, DimensionsFollowTheWidth)
{
    EXPECT_EQ(extentsOf(context.getBindingDimensions(0)), (std::vector<std::int32_t>{1, 3, 16, -1}));
    EXPECT_EQ(extentsOf(context.getBindingDimensions(1)), (std::vector<std::int32_t>{-1, 1, 7}));
    ASSERT_TRUE(setWidth(96));
    EXPECT_EQ(extentsOf(context.getBindingDimensions(0)), (std::vector<std::int32_t>{1, 3, 16, 96}));
    EXPECT_EQ(extentsOf(context.getBindingDimensions(1)), (std::vector<std::int32_t>{24, 1, 7}));
    ASSERT_TRUE(setWidth(32));
    EXPECT_EQ(extentsOf(context.getBindingDimensions(1)), (std::vector<std::int32_t>{8, 1, 7}));
    EXPECT_TRUE(session.logger().take().empty());
}

TEST_F(Api, DimensionsOfABindingThatDoesNotExist)
{
    for (const int index : {-1, 2, 1000}) {
        EXPECT_EQ(context.getBindingDimensions(index).nbDims, -1);
        EXPECT_EQ(session.logger().takeError(),
            "getBindingDimensions: binding " + std::to_string(index) + " does not exist, the engine has 2");
    }
}

TEST_F(Api, RefusesDimensionsThatDoNotFit)
{
    ASSERT_TRUE(setWidth(40));
    const auto refused = [this](int index, const std::vector<std::int32_t>& extents) {
        EXPECT_FALSE(context.setBindingDimensions(index, dimsOf(extents)));
        return session.logger().takeError();
    };
    EXPECT_EQ(refused(2, {1, 3, 16, 40}), "setBindingDimensions: binding 2 does not exist, the engine has 2");
    EXPECT_EQ(refused(-1, {1, 3, 16, 40}), "setBindingDimensions: binding -1 does not exist, the engine has 2");
    EXPECT_EQ(refused(1, {10, 1, 7}),
        "setBindingDimensions: binding 1 ('output') is an output, its dimensions follow from the input's");
    EXPECT_EQ(refused(0, {3, 16, 40}), "setBindingDimensions: the input has 4 dimensions, not 3");
    EXPECT_EQ(refused(0, {}), "setBindingDimensions: the input has 4 dimensions, not 0");
    EXPECT_EQ(refused(0, {2, 3, 16, 40}), "setBindingDimensions: dimension 0 of the input is 1, not 2");
    EXPECT_EQ(refused(0, {1, 1, 16, 40}), "setBindingDimensions: dimension 1 of the input is 3, not 1");
    EXPECT_EQ(refused(0, {1, 3, 48, 40}), "setBindingDimensions: dimension 2 of the input is 16, not 48");
    for (const int width : {31, 97, 0, -1, 1 << 30}) {
        EXPECT_EQ(refused(0, {1, 3, 16, width}),
            "setBindingDimensions: a width of " + std::to_string(width)
                + " lies outside the engine's range of 32 to 96");
    }
    // What was set before stays, and still runs.
    EXPECT_EQ(context.getBindingDimensions(0).d[3], 40);
    void* const buffers[] = {input, output};
    EXPECT_TRUE(context.enqueueV2(buffers, nullptr, nullptr));
}

TEST_F(Api, RefusesToRunWithoutAWidth)
{
    void* const buffers[] = {input, output};
    EXPECT_FALSE(context.enqueueV2(buffers, nullptr, nullptr));
    EXPECT_EQ(session.logger().takeError(), "enqueueV2: the dimensions of the input have not been set");
}

TEST_F(Api, RefusesBuffersThatDoNotFit)
{
    ASSERT_TRUE(setWidth(40));
    EXPECT_FALSE(context.enqueueV2(nullptr, nullptr, nullptr));
    EXPECT_EQ(session.logger().takeError(), "enqueueV2: there is no list of buffers");

    EXPECT_EQ(enqueueError(nullptr, output), "enqueueV2: the buffer of binding 0 ('input') is null");
    EXPECT_EQ(enqueueError(input, nullptr), "enqueueV2: the buffer of binding 1 ('output') is null");

    std::vector<float> host(outputBytes / 4);
    EXPECT_EQ(enqueueError(input, host.data()), "enqueueV2: the buffer of binding 1 ('output') is not device memory");

    void* small = nullptr;
    ASSERT_EQ(cudaMalloc(&small, outputBytes - 1), cudaSuccess);
    EXPECT_EQ(enqueueError(input, small),
        "enqueueV2: the buffer of binding 1 ('output') is too small, it takes " + std::to_string(outputBytes)
            + " bytes");

    std::byte* large = nullptr;
    ASSERT_EQ(cudaMalloc(&large, inputBytes + outputBytes), cudaSuccess);
    EXPECT_EQ(enqueueError(large, large + inputBytes - 4),
        "enqueueV2: the buffer of binding 1 ('output') overlaps that of binding 0 ('input')");
    EXPECT_EQ(
        enqueueError(input, large + 2), "enqueueV2: the buffer of binding 1 ('output') is not aligned for floats");

    // Two buffers in one allocation are as good as two allocations.
    void* const buffers[] = {large, large + inputBytes};
    EXPECT_TRUE(context.enqueueV2(buffers, nullptr, nullptr));
    EXPECT_TRUE(session.logger().take().empty());
}

TEST_F(Api, RunsOnStreamsThatExist)
{
    cudaStream_t stream = nullptr;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    ASSERT_TRUE(setWidth(40));
    void* const buffers[] = {input, output};
    EXPECT_TRUE(context.enqueueV2(buffers, stream, nullptr));
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    auto* const foreign = reinterpret_cast<cudaStream_t>(&stream);
    EXPECT_EQ(enqueueError(input, output, foreign), "enqueueV2: the stream does not exist");
}

TEST_F(Api, BuffersMayChangeFromRunToRun)
{
    std::mt19937 random(1);
    const Array picture{{1, 3, 16, 40}, randomFloats(random, 3 * 16 * 40)};
    const std::vector<float> expected = session.run(picture).front().data;
    for (int i = 0; i < 3; ++i) {
        float* in = nullptr;
        float* out = nullptr;
        ASSERT_EQ(cudaMalloc(&in, inputBytes), cudaSuccess);
        ASSERT_EQ(cudaMalloc(&out, outputBytes), cudaSuccess);
        ASSERT_EQ(cudaMemcpyAsync(in, picture.data.data(), inputBytes, cudaMemcpyHostToDevice, nullptr), cudaSuccess);
        void* const buffers[] = {in, out};
        ASSERT_TRUE(context.enqueueV2(buffers, nullptr, nullptr));
        EXPECT_EQ(std::memcmp(out, expected.data(), outputBytes), 0);
    }
}

TEST(Runtime, IsMadeForThisVersionOnly)
{
    RecordingLogger logger;
    EXPECT_EQ(createInferRuntime_INTERNAL(&logger, 8600), nullptr);
    EXPECT_EQ(createInferRuntime_INTERNAL(&logger, 10000), nullptr);
    EXPECT_EQ(createInferRuntime_INTERNAL(&logger, 0), nullptr);
    EXPECT_EQ(createInferRuntime_INTERNAL(nullptr, 8601), nullptr);
    const std::unique_ptr<nvinfer1::IRuntime> runtime(
        static_cast<nvinfer1::IRuntime*>(createInferRuntime_INTERNAL(&logger, 8601)));
    EXPECT_NE(runtime, nullptr);
    EXPECT_TRUE(logger.take().empty());
}

TEST(Runtime, KeepsItsOwnCopyOfAnEngine)
{
    std::vector<std::uint8_t> bytes = smallCrnn(format::CellKind::Gru, 7, 1).bytes(32, 96);
    std::mt19937 random(1);
    const Array picture{{1, 3, 16, 40}, randomFloats(random, 3 * 16 * 40)};
    // Not even aligned as an engine file must be.
    bytes.insert(bytes.begin(), 0);
    RecordingLogger logger;
    const std::unique_ptr<nvinfer1::IRuntime> runtime(nvinfer1::createInferRuntime(logger));
    std::unique_ptr<nvinfer1::ICudaEngine> engine(runtime->deserializeCudaEngine(bytes.data() + 1, bytes.size() - 1));
    ASSERT_NE(engine, nullptr);
    std::fill(bytes.begin(), bytes.end(), std::uint8_t(0xAA));
    const std::unique_ptr<nvinfer1::IExecutionContext> first(engine->createExecutionContext());
    const std::unique_ptr<nvinfer1::IExecutionContext> second(engine->createExecutionContext());
    // Against the contract, yet harmless.
    engine.reset();
    EXPECT_TRUE(first->setBindingDimensions(0, dimsOf({1, 3, 16, 40})));
    EXPECT_TRUE(second->setBindingDimensions(0, dimsOf({1, 3, 16, 41})));
    EXPECT_TRUE(logger.take().empty());
}

TEST(Runtime, WithoutAnEngineIsRefused)
{
    RecordingLogger logger;
    const std::unique_ptr<nvinfer1::IRuntime> runtime(nvinfer1::createInferRuntime(logger));
    EXPECT_EQ(runtime->deserializeCudaEngine(nullptr, 100), nullptr);
    EXPECT_EQ(logger.takeError(), "deserializeCudaEngine: there are no bytes");
    EXPECT_EQ(runtime->deserializeCudaEngine("", 0), nullptr);
    EXPECT_EQ(logger.takeError(), "deserializeCudaEngine: it is not an engine file of the CPU runtime");
    const std::string foreign = "ftrt, or something else that is no engine of ours at all";
    EXPECT_EQ(runtime->deserializeCudaEngine(foreign.data(), foreign.size()), nullptr);
    EXPECT_EQ(logger.takeError(), "deserializeCudaEngine: it is not an engine file of the CPU runtime");
}

TEST(Runtime, RefusesANetworkThatFitsNoWidth)
{
    NetworkMaker maker;
    const int picture = maker.input(1, 3, 4);
    maker.output(maker.add(format::ReshapeT(), {picture, maker.list({5, -1})}), "output");
    Session session(maker.bytes(1, 9));
    EXPECT_FALSE(session.isReady());
    EXPECT_EQ(session.logger().takeError(), "deserializeCudaEngine: Reshape 'node0': 1x3x4x1 cannot be made 5x-1");
}

TEST(Runtime, RefusesAWidthInBetweenThatDoesNotFit)
{
    // Fits at both ends of the range, not in between.
    NetworkMaker maker;
    const int picture = maker.input(1, 3, 4);
    maker.output(maker.add(format::ReshapeT(), {picture, maker.list({5, -1})}), "output");
    Session session(maker.bytes(5, 10));
    ASSERT_TRUE(session.isReady());
    nvinfer1::IExecutionContext& context = session.executionContext();
    EXPECT_TRUE(context.setBindingDimensions(0, dimsOf({1, 3, 4, 5})));
    EXPECT_FALSE(context.setBindingDimensions(0, dimsOf({1, 3, 4, 7})));
    EXPECT_EQ(session.logger().takeError(), "setBindingDimensions: Reshape 'node0': 1x3x4x7 cannot be made 5x-1");
    EXPECT_EQ(context.getBindingDimensions(0).d[3], 5);
}

TEST(Runtime, RefusesARankThatDependsOnTheWidth)
{
    NetworkMaker maker;
    const int picture = maker.input(1, 1, 1);
    maker.output(maker.add(format::SqueezeT(), {picture}), "output");
    Session session(maker.bytes(1, 9));
    EXPECT_EQ(session.logger().takeError(),
        "deserializeCudaEngine: the number of dimensions of 'output' depends on the width");
}

TEST(Runtime, RefusesAPlanThatTakesTooMuchMemory)
{
    NetworkMaker maker;
    int current = maker.input(1, 1, 1);
    // At the largest width each is 256 megabytes, and four of them wait for their readers.
    std::vector<int> large;
    for (int i = 0; i < 4; ++i) {
        format::UnaryT unary;
        unary.kind = format::UnaryKind::Absolute;
        current = maker.add(unary, {current});
        large.push_back(maker.add(format::ExpandT(), {current, maker.list({1 << 20, 1, 1, 1})}));
    }
    format::ConcatT concat;
    concat.axis = 3;
    format::ReductionT reduction;
    reduction.axes = {0, 1, 2, 3};
    std::vector<int> sums;
    const int all = maker.add(concat, {large[0], large[1]});
    sums = {maker.add(reduction, {all}), maker.add(reduction, {large[2]}), maker.add(reduction, {large[3]})};
    maker.output(maker.add(concat, sums), "output");
    Session session(maker.bytes(1, 64));
    ASSERT_TRUE(session.isReady()) << session.logger().takeError();
    EXPECT_TRUE(session.executionContext().setBindingDimensions(0, dimsOf({1, 1, 1, 1})));
    EXPECT_FALSE(session.executionContext().setBindingDimensions(0, dimsOf({1, 1, 1, 64})));
    EXPECT_THAT(session.logger().takeError(),
        testing::MatchesRegex("setBindingDimensions: a width of 64 needs [0-9]+ bytes of working memory"));
}

} // namespace
} // namespace scribo::test
