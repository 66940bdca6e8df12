#pragma once

#include "core/verdictsink.h"
#include "engine/sequencestore.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace scribo::line {

/// Reserves sequence numbers ahead of their use, on a thread of its own: a crash leaves out at most 2,000 numbers, and
/// the disk is written to once in a thousand triggers.
class SequenceKeeper : public VerdictSink
{
public:
    /// Numbers start at `first`, as SequenceStore::load() gave it. Nothing is reserved before start().
    SequenceKeeper(SequenceStore store, std::uint64_t first);
    ~SequenceKeeper() override;
    SequenceKeeper(const SequenceKeeper&) = delete;
    SequenceKeeper& operator=(const SequenceKeeper&) = delete;

    /// Reserves the first numbers and starts the thread. Fails when that cannot be written.
    Result<void> start();

    void deliver(const Verdict& verdict) override;
    void statusChanged(const EngineStatus& /*status*/) override { }
    QString fault() const override;

    static constexpr std::uint64_t ahead = 2000; ///< reserved beyond the number in use when the file is written
    static constexpr std::uint64_t lowest = 1000; ///< with fewer left the file is written again

private:
    void keepAhead();

    const SequenceStore store;
    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    std::uint64_t used; ///< the highest number in use
    std::uint64_t reserved; ///< all numbers below are
    QString problem;
    bool isEnding = false;
    std::thread thread;
};

} // namespace scribo::line
