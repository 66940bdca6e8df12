#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace scribo::line {

/// What one thread leaves for another. The sequencer bounds how many triggers are on their way, and so this too.
template <class T>
class WorkQueue
{
public:
    void push(T work)
    {
        {
            const std::lock_guard lock(mutex);
            waiting.push_back(std::move(work));
        }
        arrived.notify_one();
    }

    /// Waits at most `patience` for the oldest; nothing when none came, or the queue is closed and empty.
    std::optional<T> pop(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(mutex);
        arrived.wait_for(lock, patience, [this] { return isClosed || !waiting.empty(); });
        if (waiting.empty()) {
            return std::nullopt;
        }
        T work = std::move(waiting.front());
        waiting.pop_front();
        return work;
    }

    /// Lets pop() end at once when nothing waits.
    void close()
    {
        {
            const std::lock_guard lock(mutex);
            isClosed = true;
        }
        arrived.notify_all();
    }

    /// Makes a closed queue usable again.
    void reopen()
    {
        const std::lock_guard lock(mutex);
        waiting.clear();
        isClosed = false;
    }

    /// Whether it is closed and everything was taken.
    bool isDone() const
    {
        const std::lock_guard lock(mutex);
        return isClosed && waiting.empty();
    }

private:
    mutable std::mutex mutex;
    std::condition_variable arrived;
    std::deque<T> waiting;
    bool isClosed = false;
};

} // namespace scribo::line
