#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <mutex>
#include <vector>

/// A first-in, first-out queue between threads, of limited length and with time-outs on both ends.
template <class Item>
class BlockingQueue
{
public:
    explicit BlockingQueue(std::uint64_t maxSize)
        : maxSize(maxSize)
    {
    }

    /// Appends a copy of `item`, waiting up to `timeoutMs` milliseconds for room (0: not at all).
    /// False when there was none.
    bool push(const Item& item, std::uint32_t timeoutMs)
    {
        std::unique_lock lock(mutex);
        if (!notFull.wait_until(lock, deadline(timeoutMs), [this] { return items.size() < maxSize; })) {
            return false;
        }
        items.push_back(item);
        lock.unlock();
        notEmpty.notify_all();
        return true;
    }

    /// Replaces `taken` by up to `maxCount` items, oldest first. Waits up to `timeoutMs` milliseconds for
    /// `maxCount` of them: a shorter batch is taken only after the time-out. False when there is none.
    bool pop(std::vector<Item>& taken, std::uint64_t maxCount, std::uint32_t timeoutMs)
    {
        taken.clear();
        std::unique_lock lock(mutex);
        notEmpty.wait_until(lock, deadline(timeoutMs), [&] { return items.size() >= maxCount; });
        if (items.empty()) {
            return false;
        }
        const auto count = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(items.size(), maxCount));
        const auto end = items.begin() + count;
        std::move(items.begin(), end, std::back_inserter(taken));
        items.erase(items.begin(), end);
        lock.unlock();
        notFull.notify_all();
        return true;
    }

private:
    using Clock = std::chrono::steady_clock;

    static Clock::time_point deadline(std::uint32_t timeoutMs)
    {
        const Clock::time_point now = Clock::now();
        const Clock::duration timeout = std::chrono::milliseconds(timeoutMs);
        return timeout < Clock::time_point::max() - now ? now + timeout : Clock::time_point::max();
    }

    std::deque<Item> items;
    const std::uint64_t maxSize;
    std::mutex mutex;
    std::condition_variable notEmpty;
    std::condition_variable notFull;
};
