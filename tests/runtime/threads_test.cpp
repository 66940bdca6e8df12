#include "operationcase.h"
#include "threadsvariable.h"

#include "threads/processors.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <dirent.h>
#include <future>
#include <thread>

namespace scribo::test {
namespace {

/// Holds back the first thread that reports until it is let go.
class BlockingLogger : public RecordingLogger
{
public:
    void log(Severity severity, const char* message) noexcept override
    {
        RecordingLogger::log(severity, message);
        if (!entered.exchange(true)) {
            inside.set_value();
            release.get_future().wait();
        }
    }

    std::promise<void> inside;
    std::promise<void> release;

private:
    std::atomic<bool> entered{false};
};

int threadCount()
{
    int count = 0;
    DIR* tasks = opendir("/proc/self/task");
    while (tasks && readdir(tasks)) {
        ++count;
    }
    closedir(tasks);
    return count;
}

/// The smallest of several counts: the kernel lists a thread that has ended for a moment longer.
int fewestThreads()
{
    int fewest = threadCount();
    for (int i = 0; i < 50; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        fewest = std::min(fewest, threadCount());
    }
    return fewest;
}

TEST(Threads, AContextIsForOneAtATime)
{
    const std::vector<std::uint8_t> bytes = smallCrnn(format::CellKind::Lstm, 7, 1).bytes(32, 96);
    BlockingLogger logger;
    const std::unique_ptr<nvinfer1::IRuntime> runtime(nvinfer1::createInferRuntime(logger));
    const std::unique_ptr<nvinfer1::ICudaEngine> engine(runtime->deserializeCudaEngine(bytes.data(), bytes.size()));
    const std::unique_ptr<nvinfer1::IExecutionContext> context(engine->createExecutionContext());
    nvinfer1::Dims dims;
    dims.nbDims = 4;
    const std::int32_t extents[] = {1, 3, 16, 40};
    std::copy(std::begin(extents), std::end(extents), dims.d);
    void* const buffers[] = {deviceBuffer(0, 3 * 16 * 40 * 4), deviceBuffer(1, 10 * 7 * 4)};

    // One thread is held within an operation, in its report; this one comes in meanwhile.
    std::thread first([&context] { context->getBindingDimensions(99); });
    logger.inside.get_future().wait();
    logger.take();
    EXPECT_FALSE(context->setBindingDimensions(0, dims));
    EXPECT_EQ(logger.takeError(), "setBindingDimensions: the context is in use by another thread");
    EXPECT_FALSE(context->enqueueV2(buffers, nullptr, nullptr));
    EXPECT_EQ(logger.takeError(), "enqueueV2: the context is in use by another thread");
    EXPECT_EQ(context->getBindingDimensions(0).nbDims, -1);
    EXPECT_EQ(logger.takeError(), "getBindingDimensions: the context is in use by another thread");

    logger.release.set_value();
    first.join();
    EXPECT_TRUE(context->setBindingDimensions(0, dims));
    EXPECT_TRUE(context->enqueueV2(buffers, nullptr, nullptr));
    EXPECT_TRUE(logger.take().empty());
}

TEST(Threads, ContextsOfOneEngineRunSideBySide)
{
    NetworkMaker maker = smallCrnn(format::CellKind::Lstm, 7, 1);
    const std::vector<std::uint8_t> bytes = maker.bytes(8, 96);
    Session reference(bytes);
    std::mt19937 random(runSeed());
    std::vector<Array> pictures;
    std::vector<std::vector<float>> expected;
    for (int width = 8; width <= 96; width += 4) {
        pictures.push_back({{1, 3, 16, width}, randomFloats(random, 3 * 16 * width)});
        expected.push_back(reference.run(pictures.back()).front().data);
    }
    RecordingLogger logger;
    const std::unique_ptr<nvinfer1::IRuntime> runtime(nvinfer1::createInferRuntime(logger));
    const std::unique_ptr<nvinfer1::ICudaEngine> engine(runtime->deserializeCudaEngine(bytes.data(), bytes.size()));
    std::atomic<int> wrong{0};
    const auto work = [&](unsigned seed) {
        std::mt19937 own(seed);
        const std::unique_ptr<nvinfer1::IExecutionContext> context(engine->createExecutionContext());
        void* const buffers[] = {deviceBuffer(0, 3 * 16 * 96 * 4), deviceBuffer(1, 24 * 7 * 4)};
        for (int i = 0; i < 150; ++i) {
            const auto chosen = static_cast<std::size_t>(pick(own, 0, static_cast<std::int64_t>(pictures.size()) - 1));
            const Array& picture = pictures[chosen];
            nvinfer1::Dims dims;
            dims.nbDims = 4;
            std::copy(picture.shape.begin(), picture.shape.end(), dims.d);
            std::vector<float> result(expected[chosen].size());
            const bool ran = context->setBindingDimensions(0, dims)
                && cudaMemcpyAsync(
                       buffers[0], picture.data.data(), picture.data.size() * 4, cudaMemcpyHostToDevice, nullptr)
                    == cudaSuccess
                && context->enqueueV2(buffers, nullptr, nullptr)
                && cudaMemcpyAsync(result.data(), buffers[1], result.size() * 4, cudaMemcpyDeviceToHost, nullptr)
                    == cudaSuccess;
            wrong += ran && result == expected[chosen] ? 0 : 1;
        }
    };
    std::thread first(work, 1U);
    std::thread second(work, 2U);
    work(3U);
    first.join();
    second.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(logger.take().empty());
}

TEST(Threads, EnginesRunSideBySide)
{
    std::atomic<int> wrong{0};
    const auto work = [&wrong](format::CellKind cell) {
        Session session(smallCrnn(cell, 7, 1).bytes(8, 96));
        std::mt19937 random(1);
        const Array picture{{1, 3, 16, 60}, randomFloats(random, 3 * 16 * 60)};
        const std::vector<float> expected = session.run(picture).front().data;
        for (int width = 8; width <= 96; ++width) {
            session.run({{1, 3, 16, width}, randomFloats(random, 3 * 16 * width)});
            wrong += session.run(picture).front().data == expected ? 0 : 1;
        }
    };
    std::thread other(work, format::CellKind::Gru);
    work(format::CellKind::Lstm);
    other.join();
    EXPECT_EQ(wrong, 0);
}

/// A network whose every kind of kernel works in several parts.
std::vector<std::uint8_t> sharedNetwork()
{
    return smallCrnn(format::CellKind::Lstm, 40, 1, 64, 64).bytes(8, 640);
}

TEST(Threads, ARunGivesTheSameWithAndWithoutTheHelper)
{
    const std::vector<std::uint8_t> bytes = sharedNetwork();
    Session session(bytes);
    std::mt19937 random(runSeed());
    for (const int width : {8, 97, 640}) {
        const Array picture{{1, 3, 16, width}, randomFloats(random, 3 * 16 * width)};
        const std::vector<float> first = session.run(picture).front().data;
        // The trial takes turns; afterwards it is one of the two.
        for (int run = 0; run < 30; ++run) {
            EXPECT_EQ(session.run(picture).front().data, first) << "width " << width << ", run " << run;
        }
    }
}

/// Runs more than a trial, so that the helper has been called where it can be had.
void runOften(Session* session)
{
    std::mt19937 random(1);
    for (const int width : {640, 100}) {
        for (int run = 0; run < 12; ++run) {
            EXPECT_EQ(session->run({{1, 3, 16, width}, randomFloats(random, 3 * 16 * width)}).size(), 1U);
        }
    }
}

TEST(Threads, TheHelperIsTheOnlyOtherAndEndsWithTheLastContext)
{
    // A sanitizer starts a thread of its own with the program's first.
    std::thread([] {}).join();
    const int before = fewestThreads();
    {
        Session session(sharedNetwork());
        EXPECT_EQ(fewestThreads(), before);
        runOften(&session);
        Session another(sharedNetwork());
        runOften(&another);
        EXPECT_EQ(fewestThreads(), before + (cpu::usableProcessors() > 1 ? 1 : 0));
    }
    EXPECT_EQ(fewestThreads(), before);
}

TEST(Threads, WithOneProcessorARunStartsNoOthers)
{
    std::thread([] {}).join();
    const int before = fewestThreads();
    const ThreadsVariable one("1");
    Session session(sharedNetwork());
    runOften(&session);
    EXPECT_EQ(fewestThreads(), before);
}

} // namespace
} // namespace scribo::test
