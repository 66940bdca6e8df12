#include "helper.h"

#include "processors.h"

#include <exception>

namespace scribo::cpu {

namespace {

constexpr int partBits = 16;
constexpr std::uint64_t partMask = Helper::maximumParts;

int nextPart(std::uint64_t ticket)
{
    return static_cast<int>(ticket & partMask);
}

int partCount(std::uint64_t ticket)
{
    return static_cast<int>(ticket >> partBits & partMask);
}

/// A moment's wait within a loop that looks for something, its `turn`-th. Gives the processor to others now and then:
/// one of them may be the thread that is waited for.
void waitAMoment(int turn)
{
    constexpr int pausesInARow = 256;
    if (turn % pausesInARow == pausesInARow - 1) {
        std::this_thread::yield();
        return;
    }
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

} // namespace

Helper::Helper(int processors)
    : processors(processors)
{
}

Helper::~Helper()
{
    if (thread.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ending = true;
        }
        wake.notify_one();
        thread.join();
    }
}

std::shared_ptr<Helper> Helper::ofProcess()
{
    static std::mutex guard;
    static std::weak_ptr<Helper> known;
    const std::lock_guard<std::mutex> lock(guard);
    std::shared_ptr<Helper> helper = known.lock();
    if (!helper) {
        helper = std::make_shared<Helper>(usableProcessors());
        known = helper;
    }
    return helper;
}

bool Helper::start()
{
    if (!thread.joinable()) {
        try {
            thread = std::thread(&Helper::work, this);
        } catch (const std::exception&) {
            // No thread or no memory: the runs go on without it.
            return false;
        }
    }
    return true;
}

bool Helper::borrow()
{
    if (!mayWork() || lent.exchange(true, std::memory_order_acquire)) {
        return false;
    }
    if (!start()) {
        lent.store(false, std::memory_order_release);
        return false;
    }
    const int callers = currentProcessor();
    if (callers != avoided) {
        keepOff(thread, callers);
        avoided = callers;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        called = true;
    }
    wake.notify_one();
    return true;
}

void Helper::giveBack()
{
    lent.store(false, std::memory_order_release);
}

void Helper::share(int parts, Action action, const void* context)
{
    jobAction = action;
    jobContext = context;
    helped.store(0, std::memory_order_relaxed);
    const std::uint64_t number = ++jobNumber;
    ticket.store(number << 2 * partBits | static_cast<std::uint64_t>(parts) << partBits, std::memory_order_release);
    int own = 0;
    while (takePart()) {
        ++own;
    }
    for (int turn = 0; own + helped.load(std::memory_order_acquire) < parts; ++turn) {
        waitAMoment(turn);
    }
}

/// Carries out the next part of what is being shared; false when none is left.
bool Helper::takePart()
{
    std::uint64_t seen = ticket.load(std::memory_order_acquire);
    while (nextPart(seen) < partCount(seen)) {
        if (ticket.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire)) {
            jobAction(jobContext, nextPart(seen));
            return true;
        }
    }
    return false;
}

void Helper::work()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (true) {
        wake.wait(lock, [this] { return called || ending; });
        if (ending) {
            return;
        }
        called = false;
        lock.unlock();
        serve();
        lock.lock();
    }
}

/// Takes parts until the run is over, or until others need the processor.
void Helper::serve()
{
    int idle = 0;
    while (lent.load(std::memory_order_acquire) && mayWork()) {
        if (takePart()) {
            helped.fetch_add(1, std::memory_order_release);
            idle = 0;
        } else {
            waitAMoment(idle++);
        }
    }
}

} // namespace scribo::cpu
