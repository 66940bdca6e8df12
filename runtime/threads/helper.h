#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

/// The second thread of the process, which takes its share of the steps of one run at a time.
///
/// The steps of a small network take microseconds, which is what waking a thread takes: so the helper is woken once a
/// run, and within it looks for work without sleeping. A run never waits for it to wake, because it takes all parts
/// itself that the helper has not begun.
namespace scribo::cpu {

class Helper
{
public:
    /// Steps of more parts are not shared.
    static constexpr int maximumParts = 0xFFFF;

    /// For at most `processors` busy threads, those of the runs included. The thread itself is started when it is first
    /// borrowed.
    explicit Helper(int processors);
    /// Ends the thread. No run may be under way.
    ~Helper();
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    /// The one that all contexts of the process share; it lasts until the last of them has let it go.
    static std::shared_ptr<Helper> ofProcess();

    /// A run that is under way, while it lives.
    class Run
    {
    public:
        explicit Run(Helper& helper)
            : helper(helper)
        {
            helper.runs.fetch_add(1, std::memory_order_relaxed);
        }
        ~Run() { helper.runs.fetch_sub(1, std::memory_order_relaxed); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;

        /// Whether it is the only one.
        bool isAlone() const { return helper.runs.load(std::memory_order_relaxed) == 1; }

    private:
        friend class Crew;

        Helper& helper;
    };

private:
    friend class Crew;

    using Action = void (*)(const void* context, int part);

    bool borrow();
    void giveBack();
    void share(int parts, Action action, const void* context);

    bool mayWork() const { return runs.load(std::memory_order_relaxed) < processors; }
    bool start();
    void work();
    void serve();
    bool takePart();

    const int processors;
    std::atomic<int> runs{0};
    std::atomic<bool> lent{false};

    // What is being shared. The ticket has its number in the upper half, then how many parts it has and which is the
    // next to be taken, 16 bits each: whoever moves it on by one owns that part and may read the job, which stays as it
    // is until all parts are done.
    std::atomic<std::uint64_t> ticket{0};
    Action jobAction = nullptr;
    const void* jobContext = nullptr;
    std::uint32_t jobNumber = 0;
    std::atomic<int> helped{0};

    std::mutex mutex;
    std::condition_variable wake;
    bool called = false;
    bool ending = false;
    std::thread thread;
    /// The processor that the thread is kept off: the last borrower's.
    int avoided = -1;
};

/// Who carries out the shared steps of a run: the calling thread, with the helper where it could be had.
class Crew
{
public:
    /// The calling thread alone.
    Crew() = default;
    /// As long as this lives with the helper, if `run` can have it: no other run has it, the runs under way leave a
    /// processor free, and its thread can be started.
    explicit Crew(const Helper::Run& run)
        : helper(run.helper.borrow() ? &run.helper : nullptr)
    {
    }
    ~Crew()
    {
        if (helper) {
            helper->giveBack();
        }
    }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    bool isHelped() const { return helper != nullptr; }

    /// Calls action(part) for every part from 0 to `parts` - 1, in any order. Parts may not touch each other's memory,
    /// nor throw. All are done when it returns.
    template <class PartAction>
    void share(int parts, const PartAction& action) const
    {
        // Another run that has begun meanwhile needs the processor more.
        if (helper && parts > 1 && parts <= Helper::maximumParts && helper->mayWork()) {
            helper->share(parts, &call<PartAction>, &action);
            return;
        }
        for (int part = 0; part < parts; ++part) {
            action(part);
        }
    }

private:
    template <class PartAction>
    static void call(const void* action, int part)
    {
        (*static_cast<const PartAction*>(action))(part);
    }

    Helper* helper = nullptr;
};

} // namespace scribo::cpu
