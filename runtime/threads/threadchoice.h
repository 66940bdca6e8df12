#pragma once

#include <chrono>
#include <vector>

namespace scribo::cpu {

/// Whether the runs of a plan go with the helper or without. Both are tried in turns, and the helper is taken where it
/// has made the median run clearly shorter; later the trial is repeated, because the load of a machine changes. In
/// between, a plan whose runs with the helper have become slower than those without gives it up at once.
class ThreadChoice
{
public:
    using Duration = std::chrono::nanoseconds;

    /// Timed runs of either kind in a trial.
    static constexpr int trialRuns = 5;
    /// Runs between two trials.
    static constexpr int settledRuns = 2000;

    /// Whether the next run should go with the helper.
    bool wantsHelper() const;
    /// How a run went and what it took.
    void record(bool helped, Duration time);

    /// Whether a helped run of `helped` is worth a second processor where one alone takes `alone`.
    static bool isWorthwhile(Duration helped, Duration alone) { return 10 * helped < 9 * alone; }

private:
    enum class State {
        /// No run yet: the first one touches the memory and is not typical.
        New,
        Trial,
        Settled
    };

    void decide();
    void watch(Duration time);
    void beginTrial();

    State state = State::New;
    std::vector<Duration> aloneTimes;
    std::vector<Duration> helpedTimes;
    bool helping = false;
    int runsLeft = 0;
    /// Once settled: what a run took alone, and what runs with the helper take of late.
    Duration aloneMedian{};
    Duration recent{};
};

} // namespace scribo::cpu
