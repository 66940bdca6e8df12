#include "blockingqueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <limits>
#include <memory>
#include <numeric>
#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::uint32_t forever = std::numeric_limits<std::uint32_t>::max();
/// Long enough to be sure that a thread does wait; nothing is expected to happen within it.
constexpr std::chrono::milliseconds aWhile(50);

TEST(BlockingQueue, IsFirstInFirstOut)
{
    BlockingQueue<int> queue(100);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(queue.push(i, 0));
    }
    std::vector<int> taken;
    EXPECT_TRUE(queue.pop(taken, 2, 0));
    EXPECT_THAT(taken, ElementsAre(0, 1));
    EXPECT_TRUE(queue.pop(taken, 3, 0));
    EXPECT_THAT(taken, ElementsAre(2, 3, 4));
}

TEST(BlockingQueue, PopEmptiesItsOutputFirst)
{
    BlockingQueue<int> queue(100);
    std::vector<int> taken = {7, 8};
    EXPECT_FALSE(queue.pop(taken, 1, 0));
    EXPECT_THAT(taken, IsEmpty());
    taken = {7, 8};
    queue.push(1, 0);
    EXPECT_TRUE(queue.pop(taken, 1, 0));
    EXPECT_THAT(taken, ElementsAre(1));
}

TEST(BlockingQueue, PopOnAnEmptyQueueTimesOut)
{
    BlockingQueue<int> queue(100);
    std::vector<int> taken;
    EXPECT_FALSE(queue.pop(taken, 1, 1));
}

TEST(BlockingQueue, AShortBatchIsTakenAfterTheTimeOut)
{
    BlockingQueue<int> queue(100);
    queue.push(1, 0);
    std::vector<int> taken;
    EXPECT_TRUE(queue.pop(taken, 3, 1));
    EXPECT_THAT(taken, ElementsAre(1));
}

TEST(BlockingQueue, PopWaitsForTheWholeBatch)
{
    BlockingQueue<int> queue(100);
    queue.push(1, 0);
    std::vector<int> taken;
    auto popping = std::async(std::launch::async, [&] { return queue.pop(taken, 3, forever); });
    queue.push(2, 0);
    EXPECT_EQ(popping.wait_for(aWhile), std::future_status::timeout);
    queue.push(3, 0);
    EXPECT_TRUE(popping.get());
    EXPECT_THAT(taken, ElementsAre(1, 2, 3));
}

TEST(BlockingQueue, PopOfNoneTakesNone)
{
    BlockingQueue<int> queue(100);
    std::vector<int> taken;
    EXPECT_FALSE(queue.pop(taken, 0, forever));
    queue.push(1, 0);
    EXPECT_TRUE(queue.pop(taken, 0, forever));
    EXPECT_THAT(taken, IsEmpty());
    EXPECT_TRUE(queue.pop(taken, 1, 0));
}

TEST(BlockingQueue, TakesItsCapacityAndNoMore)
{
    BlockingQueue<int> queue(100);
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(queue.push(i, 0));
    }
    EXPECT_FALSE(queue.push(100, 0));
    EXPECT_FALSE(queue.push(100, 1));
    std::vector<int> taken;
    EXPECT_TRUE(queue.pop(taken, std::numeric_limits<std::uint64_t>::max(), 0));
    EXPECT_THAT(taken, SizeIs(100));
    EXPECT_EQ(taken.back(), 99);
}

TEST(BlockingQueue, The101stPushWaitsForRoom)
{
    BlockingQueue<int> queue(100);
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(queue.push(i, 0));
    }
    auto pushing = std::async(std::launch::async, [&] { return queue.push(100, forever); });
    EXPECT_EQ(pushing.wait_for(aWhile), std::future_status::timeout);
    std::vector<int> taken;
    EXPECT_TRUE(queue.pop(taken, 1, 0));
    EXPECT_TRUE(pushing.get());
    EXPECT_TRUE(queue.pop(taken, 100, 0));
    EXPECT_EQ(taken.back(), 100);
}

TEST(BlockingQueue, OnePopMakesRoomForSeveralPushers)
{
    BlockingQueue<int> queue(2);
    queue.push(0, 0);
    queue.push(1, 0);
    auto first = std::async(std::launch::async, [&] { return queue.push(2, forever); });
    auto second = std::async(std::launch::async, [&] { return queue.push(3, forever); });
    std::vector<int> taken;
    EXPECT_TRUE(queue.pop(taken, 2, 0));
    EXPECT_TRUE(first.get());
    EXPECT_TRUE(second.get());
}

TEST(BlockingQueue, ManyThreadsLoseAndDoubleNothing)
{
    constexpr int threads = 4;
    constexpr int each = 2000;
    BlockingQueue<int> queue(7);
    std::vector<std::thread> pushers;
    for (int thread = 0; thread < threads; ++thread) {
        pushers.emplace_back([&queue, thread] {
            for (int i = 0; i < each; ++i) {
                queue.push(thread * each + i, forever);
            }
        });
    }
    std::atomic<int> left = threads * each;
    std::vector<std::vector<int>> popped(threads);
    std::vector<std::thread> poppers;
    for (int thread = 0; thread < threads; ++thread) {
        poppers.emplace_back([&, thread] {
            std::vector<int> taken;
            while (left > 0) {
                queue.pop(taken, 1 + static_cast<std::uint64_t>(thread), 1);
                left -= static_cast<int>(taken.size());
                popped[static_cast<std::size_t>(thread)].insert(
                    popped[static_cast<std::size_t>(thread)].end(), taken.begin(), taken.end());
            }
        });
    }
    for (std::thread& thread : pushers) {
        thread.join();
    }
    for (std::thread& thread : poppers) {
        thread.join();
    }
    std::vector<int> all;
    for (const std::vector<int>& one : popped) {
        // What one popper sees of one pusher keeps that pusher's order.
        for (int thread = 0; thread < threads; ++thread) {
            std::vector<int> seen;
            std::copy_if(one.begin(), one.end(), std::back_inserter(seen), [&](int i) { return i / each == thread; });
            EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
        }
        all.insert(all.end(), one.begin(), one.end());
    }
    std::sort(all.begin(), all.end());
    std::vector<int> expected(threads * each);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(all, expected);
}

TEST(BlockingQueue, DropsWhatIsQueuedWhenItGoes)
{
    std::future<int> broken;
    {
        BlockingQueue<std::shared_ptr<std::promise<int>>> queue(100);
        auto promise = std::make_shared<std::promise<int>>();
        broken = promise->get_future();
        queue.push(promise, 0);
    }
    EXPECT_THROW(broken.get(), std::future_error);
}

} // namespace
