#pragma once

#include "core/verdict.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace scribo::line {

/// Gives every trigger exactly one verdict, in the order of the triggers, at the latest when its deadline passes.
///
/// A verdict that is ready waits for those of earlier triggers. One that comes after its deadline is dropped: the
/// trigger has its NG by then. All functions may be called on any thread.
class Sequencer
{
public:
    using Clock = std::chrono::steady_clock;
    /// Gets each verdict, one call at a time, on the thread that completed it or on the sequencer's own.
    using Emit = std::function<void(const Verdict&)>;

    struct Options
    {
        std::chrono::milliseconds deadline{500}; ///< from the trigger to its verdict
        std::size_t mostPending = 64; ///< triggers without a verdict; one more gets NG at once
        std::uint64_t firstSequence = 1;
    };

    Sequencer(const Options& options, Emit emit);
    /// Gives all pending triggers NG with Reason::stopped.
    ~Sequencer();
    Sequencer(const Sequencer&) = delete;
    Sequencer& operator=(const Sequencer&) = delete;

    struct Ticket
    {
        std::uint64_t sequence = 0;
        bool accepted = false; ///< false: too many triggers are pending, and this one gets NG
    };

    /// Takes note of a trigger. `draft` is what its verdict says of job and time if none comes. Hands over no verdict
    /// on this thread, so a caller may hold locks that the receiver takes.
    Ticket begin(const Verdict& draft);

    /// The verdict of a trigger; its sequence number says which. False: it came too late, or there is no such trigger.
    bool complete(Verdict verdict);

    /// Gives all pending triggers NG with Reason::stopped.
    void stopPending();

    /// Triggers that have no verdict yet.
    std::size_t pendingCount() const;
    /// Verdicts that came after their deadline.
    std::uint64_t lateCount() const;
    std::uint64_t lastSequence() const;

private:
    struct Pending
    {
        Verdict verdict; ///< the draft, and once it is complete the verdict
        Clock::time_point triggered;
        bool isComplete = false;
    };

    void watchDeadlines();
    void emitReady();
    std::optional<Verdict> takeReady();
    static void finish(Pending& pending, Reason reason, const QString& text);

    const Options options;
    const Emit emit;
    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    std::deque<Pending> pending; ///< by sequence number, without gaps
    std::uint64_t nextSequence;
    std::uint64_t late = 0;
    bool isEnding = false;
    std::mutex emitting; ///< held while a verdict is handed over, so that they stay in order; taken before `mutex`
    std::thread watcher;
};

} // namespace scribo::line
