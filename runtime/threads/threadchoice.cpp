#include "threadchoice.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// Of an odd number of durations.
ThreadChoice::Duration median(std::vector<ThreadChoice::Duration>& times)
{
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

} // namespace

bool ThreadChoice::wantsHelper() const
{
    switch (state) {
    case State::New:
        break;
    case State::Trial:
        return helpedTimes.size() < aloneTimes.size();
    case State::Settled:
        return helping;
    }
    return false;
}

void ThreadChoice::record(bool helped, Duration time)
{
    switch (state) {
    case State::New:
        beginTrial();
        return;
    case State::Trial:
        // A helper that was wanted and not to be had leaves another run alone, which no trial needs.
        if (helped == wantsHelper()) {
            (helped ? helpedTimes : aloneTimes).push_back(time);
        }
        if (helpedTimes.size() == trialRuns) {
            decide();
        }
        return;
    case State::Settled:
        if (helping && helped) {
            watch(time);
        }
        if (--runsLeft == 0) {
            beginTrial();
        }
    }
}

void ThreadChoice::beginTrial()
{
    state = State::Trial;
    aloneTimes.clear();
    helpedTimes.clear();
}

void ThreadChoice::decide()
{
    aloneMedian = median(aloneTimes);
    recent = median(helpedTimes);
    helping = isWorthwhile(recent, aloneMedian);
    runsLeft = settledRuns;
    state = State::Settled;
}

/// Follows the mean of about the last sixteen runs.
void ThreadChoice::watch(Duration time)
{
    recent += (time - recent) / 16;
    helping = recent < aloneMedian;
}

} // namespace scribo::cpu
