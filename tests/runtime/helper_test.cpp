#include "threadsvariable.h"

#include "threads/helper.h"
#include "threads/processors.h"
#include "threads/threadchoice.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <vector>

#ifdef __linux__
#include <pthread.h>
#include <sched.h>
#endif

namespace scribo::test {
namespace {

using cpu::Crew;
using cpu::Helper;
using cpu::ThreadChoice;
using std::chrono::microseconds;

/// How often each of `parts` parts is carried out.
std::vector<int> countParts(const Crew& crew, int parts)
{
    std::vector<int> counts(static_cast<std::size_t>(parts));
    crew.share(parts, [&counts](int part) { ++counts[static_cast<std::size_t>(part)]; });
    return counts;
}

TEST(Helper, EveryPartIsCarriedOutOnce)
{
    Helper helper(2);
    for (int round = 0; round < 200; ++round) {
        const Helper::Run run(helper);
        const Crew crew(run);
        ASSERT_TRUE(crew.isHelped());
        for (const int parts : {0, 1, 2, 3, 36, 1000}) {
            EXPECT_EQ(countParts(crew, parts), std::vector<int>(static_cast<std::size_t>(parts), 1));
        }
    }
}

TEST(Helper, TheMostPartsAreCarriedOutToo)
{
    Helper helper(2);
    const Helper::Run run(helper);
    EXPECT_EQ(countParts(Crew(run), Helper::maximumParts), std::vector<int>(Helper::maximumParts, 1));
}

TEST(Helper, MorePartsAreLeftToTheCallingThread)
{
    Helper helper(2);
    const Helper::Run run(helper);
    const Crew crew(run);
    ASSERT_TRUE(crew.isHelped());
    for (const int parts : {Helper::maximumParts + 1, 2 * Helper::maximumParts + 2}) {
        const std::thread::id self = std::this_thread::get_id();
        int own = 0;
        crew.share(parts, [&](int) { own += std::this_thread::get_id() == self ? 1 : 0; });
        EXPECT_EQ(own, parts);
        EXPECT_EQ(countParts(crew, parts), std::vector<int>(static_cast<std::size_t>(parts), 1));
    }
}

TEST(Helper, WhatItHasWrittenIsSeenAfterwards)
{
    Helper helper(2);
    const Helper::Run run(helper);
    const Crew crew(run);
    std::vector<long> values(64);
    for (int step = 0; step < 5000; ++step) {
        // Each step reads what the other thread may have written in the one before.
        std::vector<long> next(values.size());
        crew.share(static_cast<int>(values.size()), [&](int part) {
            const auto i = static_cast<std::size_t>(part);
            next[i] = values[(i + 1) % values.size()] + 1;
        });
        values = next;
    }
    EXPECT_EQ(values, std::vector<long>(64, 5000));
}

TEST(Helper, TakesItsShareWhenTheOtherThreadIsHeldUp)
{
    Helper helper(2);
    const Helper::Run run(helper);
    const Crew crew(run);
    const std::thread::id self = std::this_thread::get_id();
    std::atomic<int> byHelper{0};
    // The calling thread goes on only when the helper has carried out a part.
    crew.share(100, [&](int) {
        if (std::this_thread::get_id() != self) {
            ++byHelper;
        }
        while (byHelper == 0) {
            std::this_thread::yield();
        }
    });
    EXPECT_GT(byHelper, 0);
}

TEST(Helper, IsLentToOneRunAtATime)
{
    Helper helper(16);
    const Helper::Run first(helper);
    const Helper::Run second(helper);
    {
        const Crew crew(first);
        EXPECT_TRUE(crew.isHelped());
        EXPECT_FALSE(Crew(second).isHelped());
        EXPECT_EQ(countParts(Crew(second), 5), std::vector<int>(5, 1));
    }
    EXPECT_TRUE(Crew(second).isHelped());
}

TEST(Helper, RunsThatFillTheProcessorsGoWithoutIt)
{
    Helper helper(2);
    const Helper::Run first(helper);
    const Crew crew(first);
    EXPECT_TRUE(first.isAlone());
    {
        const Helper::Run second(helper);
        EXPECT_FALSE(first.isAlone());
        EXPECT_FALSE(Crew(second).isHelped());
        // The one that has it stops sharing too.
        const std::thread::id self = std::this_thread::get_id();
        crew.share(1000, [&self](int) { EXPECT_EQ(std::this_thread::get_id(), self); });
    }
    EXPECT_TRUE(first.isAlone());
    EXPECT_EQ(countParts(crew, 50), std::vector<int>(50, 1));
}

TEST(Helper, OneProcessorHasNone)
{
    Helper helper(1);
    const Helper::Run run(helper);
    EXPECT_FALSE(Crew(run).isHelped());
}

TEST(Helper, IsSharedByAllAndEndsWithTheLast)
{
    std::shared_ptr<Helper> first = Helper::ofProcess();
    std::shared_ptr<Helper> second = Helper::ofProcess();
    EXPECT_EQ(first, second);
    const std::weak_ptr<Helper> watched = first;
    first.reset();
    EXPECT_FALSE(watched.expired());
    second.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(Helper, RunsOfManyThreadsTakeTurns)
{
    Helper helper(3);
    std::atomic<int> wrong{0};
    const auto work = [&helper, &wrong] {
        for (int round = 0; round < 300; ++round) {
            const Helper::Run run(helper);
            const Crew crew(run);
            for (int step = 0; step < 5; ++step) {
                wrong += countParts(crew, 12) == std::vector<int>(12, 1) ? 0 : 1;
            }
        }
    };
    std::array<std::thread, 3> threads;
    for (std::thread& thread : threads) {
        thread = std::thread(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

/// Records runs as the choice wants them; those with the helper take `helped`, the others `alone`.
void runFor(ThreadChoice* choice, int runs, microseconds helped, microseconds alone)
{
    for (int run = 0; run < runs; ++run) {
        const bool wanted = choice->wantsHelper();
        choice->record(wanted, wanted ? helped : alone);
    }
}

constexpr int trial = 1 + 2 * ThreadChoice::trialRuns;

TEST(ThreadChoice, BeginsAlone)
{
    EXPECT_FALSE(ThreadChoice().wantsHelper());
}

TEST(ThreadChoice, TriesBothInTurns)
{
    ThreadChoice choice;
    std::vector<bool> wanted;
    for (int run = 0; run < trial; ++run) {
        wanted.push_back(choice.wantsHelper());
        choice.record(wanted.back(), microseconds(100));
    }
    EXPECT_EQ(wanted, std::vector<bool>({false, false, true, false, true, false, true, false, true, false, true}));
}

TEST(ThreadChoice, TakesTheHelperWhereItIsClearlyFaster)
{
    ThreadChoice fast;
    runFor(&fast, trial, microseconds(89), microseconds(100));
    EXPECT_TRUE(fast.wantsHelper());
    ThreadChoice same;
    runFor(&same, trial, microseconds(91), microseconds(100));
    EXPECT_FALSE(same.wantsHelper());
}

TEST(ThreadChoice, OneSlowRunDecidesNothing)
{
    ThreadChoice choice;
    choice.record(false, microseconds(100));
    for (int run = 0; run < 2 * ThreadChoice::trialRuns; ++run) {
        const bool wanted = choice.wantsHelper();
        choice.record(wanted, microseconds(run == 3 ? 10'000 : wanted ? 60 : 100));
    }
    EXPECT_TRUE(choice.wantsHelper());
}

TEST(ThreadChoice, ARunThatCouldNotHaveTheHelperDoesNotCount)
{
    ThreadChoice choice;
    choice.record(false, microseconds(100));
    for (int run = 0; run < 50; ++run) {
        choice.record(false, microseconds(run < 1 ? 100 : 1));
    }
    runFor(&choice, 2 * ThreadChoice::trialRuns - 1, microseconds(60), microseconds(100));
    EXPECT_TRUE(choice.wantsHelper());
}

TEST(ThreadChoice, GivesTheHelperUpWhenItSlowsDown)
{
    ThreadChoice choice;
    runFor(&choice, trial, microseconds(60), microseconds(100));
    ASSERT_TRUE(choice.wantsHelper());
    // A hiccup is borne, a lasting one is not.
    runFor(&choice, 1, microseconds(500), microseconds(100));
    EXPECT_TRUE(choice.wantsHelper());
    runFor(&choice, 30, microseconds(140), microseconds(100));
    EXPECT_FALSE(choice.wantsHelper());
    runFor(&choice, 100, microseconds(60), microseconds(100));
    EXPECT_FALSE(choice.wantsHelper());
}

TEST(ThreadChoice, TriesAgainAfterAWhile)
{
    ThreadChoice choice;
    runFor(&choice, trial, microseconds(100), microseconds(100));
    runFor(&choice, ThreadChoice::settledRuns, microseconds(60), microseconds(100));
    EXPECT_FALSE(choice.wantsHelper());
    runFor(&choice, trial, microseconds(60), microseconds(100));
    EXPECT_TRUE(choice.wantsHelper());
}

TEST(Processors, TheEnvironmentLimitsThem)
{
    const int all = [] {
        const ThreadsVariable none("");
        return cpu::usableProcessors();
    }();
    EXPECT_GE(all, 1);
    const ThreadsVariable one("1");
    EXPECT_EQ(cpu::usableProcessors(), 1);
    for (const char* text : {"0", "-1", "two", "1x", "999999999999999999999"}) {
        const ThreadsVariable senseless(text);
        EXPECT_EQ(cpu::usableProcessors(), all) << text;
    }
}

#ifdef __linux__
TEST(Processors, OnlyThoseThatTheThreadMayUseCount)
{
    std::thread([] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
        EXPECT_EQ(cpu::usableProcessors(), 1);
    }).join();
}

TEST(Processors, AThreadIsKeptOffOneButNotOffAll)
{
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof(all), &all), 0);
    std::promise<void> over;
    std::thread thread([&over] { over.get_future().wait(); });
    const auto usedBy = [](std::thread& of) {
        cpu_set_t set;
        CPU_ZERO(&set);
        EXPECT_EQ(pthread_getaffinity_np(of.native_handle(), sizeof(set), &set), 0);
        return set;
    };
    const auto equal = [](cpu_set_t a, cpu_set_t b) { return CPU_EQUAL(&a, &b) != 0; };

    const int here = cpu::currentProcessor();
    ASSERT_GE(here, 0);
    cpu_set_t others = all;
    CPU_CLR(static_cast<std::size_t>(here), &others);
    const cpu_set_t wanted = CPU_COUNT(&others) > 0 ? others : all;
    cpu::keepOff(thread, here);
    EXPECT_TRUE(equal(usedBy(thread), wanted));
    // What is no processor changes nothing.
    for (const int none : {-1, CPU_SETSIZE}) {
        cpu::keepOff(thread, none);
        EXPECT_TRUE(equal(usedBy(thread), wanted));
    }

    // For a caller that is bound to one processor there are no others.
    std::thread([&] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(here, &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
        cpu::keepOff(thread, here);
    }).join();
    EXPECT_TRUE(equal(usedBy(thread), wanted));
    over.set_value();
    thread.join();
}
#endif

} // namespace
} // namespace scribo::test
