#pragma once

#include "core/verdictsink.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace scribo::test {

/// Keeps what it is given.
class CollectingSink : public line::VerdictSink
{
public:
    void deliver(const line::Verdict& verdict) override
    {
        {
            const std::lock_guard lock(mutex);
            verdicts.push_back(verdict);
        }
        changed.notify_all();
    }
    void statusChanged(const line::EngineStatus& status) override
    {
        {
            const std::lock_guard lock(mutex);
            statuses.push_back(status);
        }
        changed.notify_all();
    }
    QString fault() const override { return {}; }

    /// All verdicts once there are `count`; those that came within ten seconds otherwise.
    std::vector<line::Verdict> await(std::size_t count)
    {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, patience, [&] { return verdicts.size() >= count; });
        return verdicts;
    }

    /// Whether a status of this kind came within ten seconds; it is the newest then.
    template <class Condition>
    bool awaitStatus(Condition condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, [&] { return !statuses.empty() && condition(statuses.back()); });
    }

private:
    static constexpr std::chrono::seconds patience{10};

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<line::Verdict> verdicts;
    std::vector<line::EngineStatus> statuses;
};

} // namespace scribo::test
