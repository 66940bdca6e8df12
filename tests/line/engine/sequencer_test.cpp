#include "engine/sequencer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <random>

namespace scribo::line {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

/// Verdicts as the sequencer hands them over.
class Verdicts
{
public:
    Sequencer::Emit receiver()
    {
        return [this](const Verdict& verdict) {
            {
                const std::lock_guard lock(mutex);
                all.push_back(verdict);
            }
            changed.notify_all();
        };
    }

    std::vector<Verdict> await(std::size_t count)
    {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, 10s, [&] { return all.size() >= count; });
        return all;
    }

    std::vector<std::uint64_t> numbers()
    {
        const std::lock_guard lock(mutex);
        std::vector<std::uint64_t> result;
        for (const Verdict& verdict : all) {
            result.push_back(verdict.sequence);
        }
        return result;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Verdict> all;
};

Sequencer::Options withDeadline(std::chrono::milliseconds deadline)
{
    Sequencer::Options options;
    options.deadline = deadline;
    return options;
}

Verdict okFor(std::uint64_t sequence)
{
    Verdict verdict;
    verdict.sequence = sequence;
    verdict.isOk = true;
    verdict.reason = Reason::none;
    return verdict;
}

TEST(Sequencer, NumbersTriggersFromTheFirstOnwards)
{
    Verdicts verdicts;
    Sequencer::Options options;
    options.firstSequence = 41;
    Sequencer sequencer(options, verdicts.receiver());

    EXPECT_EQ(sequencer.lastSequence(), 40U);
    EXPECT_EQ(sequencer.begin({}).sequence, 41U);
    EXPECT_EQ(sequencer.begin({}).sequence, 42U);
    EXPECT_EQ(sequencer.lastSequence(), 42U);
    EXPECT_EQ(sequencer.pendingCount(), 2U);
}

TEST(Sequencer, HoldsAVerdictUntilThoseOfEarlierTriggersAreThere)
{
    Verdicts verdicts;
    Sequencer sequencer(withDeadline(10s), verdicts.receiver());
    const auto first = sequencer.begin({}).sequence;
    const auto second = sequencer.begin({}).sequence;

    EXPECT_TRUE(sequencer.complete(okFor(second)));
    EXPECT_THAT(verdicts.numbers(), ElementsAre());
    EXPECT_TRUE(sequencer.complete(okFor(first)));
    EXPECT_THAT(verdicts.numbers(), ElementsAre(first, second));
    EXPECT_EQ(sequencer.pendingCount(), 0U);
}

TEST(Sequencer, GivesNgWhenTheDeadlinePasses)
{
    Verdicts verdicts;
    Sequencer sequencer(withDeadline(20ms), verdicts.receiver());
    Verdict draft;
    draft.job = QStringLiteral("carton");
    draft.isOk = true;
    const auto sequence = sequencer.begin(draft).sequence;

    const auto got = verdicts.await(1);
    ASSERT_EQ(got.size(), 1U);
    EXPECT_EQ(got[0].sequence, sequence);
    EXPECT_FALSE(got[0].isOk);
    EXPECT_EQ(got[0].reason, Reason::deadlinePassed);
    EXPECT_EQ(got[0].reasonText, QStringLiteral("no verdict within 20 ms"));
    EXPECT_EQ(got[0].job, QStringLiteral("carton"));
    EXPECT_GE(got[0].milliseconds, 20);
}

TEST(Sequencer, DropsAVerdictThatComesTooLate)
{
    Verdicts verdicts;
    Sequencer sequencer(withDeadline(1ms), verdicts.receiver());
    const auto sequence = sequencer.begin({}).sequence;
    verdicts.await(1);

    EXPECT_FALSE(sequencer.complete(okFor(sequence)));
    EXPECT_EQ(sequencer.lateCount(), 1U);
    EXPECT_THAT(verdicts.numbers(), ElementsAre(sequence));
}

TEST(Sequencer, DropsAVerdictThatComesTooLateButWaitsForAnEarlierOne)
{
    Verdicts verdicts;
    Sequencer sequencer(withDeadline(10s), verdicts.receiver());
    sequencer.begin({});
    const auto second = sequencer.begin({}).sequence;

    EXPECT_TRUE(sequencer.complete(okFor(second)));
    EXPECT_FALSE(sequencer.complete(okFor(second)));
    EXPECT_EQ(sequencer.lateCount(), 1U);
}

TEST(Sequencer, DropsVerdictsOfTriggersThatNeverWere)
{
    Verdicts verdicts;
    Sequencer sequencer(withDeadline(10s), verdicts.receiver());
    EXPECT_FALSE(sequencer.complete(okFor(1)));
    sequencer.begin({});
    EXPECT_FALSE(sequencer.complete(okFor(0)));
    EXPECT_FALSE(sequencer.complete(okFor(2)));
    EXPECT_EQ(sequencer.pendingCount(), 1U);
}

TEST(Sequencer, GivesTooManyTriggersNgInTheirTurn)
{
    Verdicts verdicts;
    Sequencer::Options options = withDeadline(10s);
    options.mostPending = 2;
    Sequencer sequencer(options, verdicts.receiver());
    EXPECT_TRUE(sequencer.begin({}).accepted);
    EXPECT_TRUE(sequencer.begin({}).accepted);
    EXPECT_FALSE(sequencer.begin({}).accepted);

    sequencer.complete(okFor(2));
    EXPECT_THAT(verdicts.numbers(), ElementsAre());
    sequencer.complete(okFor(1));
    const auto got = verdicts.await(3);
    EXPECT_THAT(verdicts.numbers(), ElementsAre(1, 2, 3));
    EXPECT_EQ(got[2].reason, Reason::overrun);
    EXPECT_EQ(got[2].reasonText, QStringLiteral("too many triggers wait: 2"));
}

TEST(Sequencer, HandsOverATriggerThatNothingStandsBeforeThoughNoneMayWait)
{
    Verdicts verdicts;
    Sequencer::Options options = withDeadline(10s);
    options.mostPending = 0;
    Sequencer sequencer(options, verdicts.receiver());
    EXPECT_FALSE(sequencer.begin({}).accepted);
    EXPECT_EQ(verdicts.await(1).at(0).reason, Reason::overrun);
}

TEST(Sequencer, GivesWhatIsPendingNgWhenItEnds)
{
    Verdicts verdicts;
    {
        Sequencer sequencer(withDeadline(10s), verdicts.receiver());
        sequencer.begin({});
        sequencer.begin({});
        sequencer.complete(okFor(2));
    }
    const auto got = verdicts.await(2);
    ASSERT_EQ(got.size(), 2U);
    EXPECT_EQ(got[0].reason, Reason::stopped);
    EXPECT_TRUE(got[1].isOk);
}

TEST(Sequencer, GivesEveryTriggerOneVerdictInOrderWhateverThreadsDo)
{
    Verdicts verdicts;
    constexpr int count = 3000;
    std::atomic<int> begun{0};
    {
        Sequencer::Options options = withDeadline(3ms);
        options.mostPending = 40;
        Sequencer sequencer(options, verdicts.receiver());
        std::mutex mutex;
        std::vector<std::uint64_t> open;
        std::vector<std::thread> threads;
        for (unsigned seed = 0; seed < 2; ++seed) {
            threads.emplace_back([&] {
                while (begun++ < count) {
                    const auto ticket = sequencer.begin({});
                    const std::lock_guard lock(mutex);
                    open.push_back(ticket.sequence);
                }
            });
            threads.emplace_back([&, seed] {
                std::mt19937 dice(seed);
                while (begun < count) {
                    std::uint64_t sequence = 0;
                    {
                        const std::lock_guard lock(mutex);
                        if (!open.empty()) {
                            const std::size_t which = dice() % open.size();
                            sequence = open[which];
                            open.erase(open.begin() + static_cast<std::ptrdiff_t>(which));
                        }
                    }
                    sequencer.complete(okFor(sequence));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    const auto numbers = verdicts.numbers();
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        ASSERT_EQ(numbers[i], i + 1);
    }
}

} // namespace
} // namespace scribo::line
