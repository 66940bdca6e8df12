#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace scribo::line {

/// A thread with Qt's event loop, for sockets and timers. Runs the functions that other threads hand to it, in order.
///
/// What lives in the thread is made and destroyed by such functions. Hands work over by a mutex and a file descriptor
/// of its own, not by Qt's posted events, so that the thread sanitizer can follow it.
class EventThread
{
public:
    EventThread();
    /// Runs what was posted, and ends the thread.
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Runs `work` in the thread, soon; returns at once.
    void post(std::function<void()> work);
    /// Runs `work` in the thread and waits for its end. Not from the thread itself.
    void call(const std::function<void()>& work);

private:
    void run();
    void runPosted();

    int wakeUp; ///< file descriptor that is readable while work was posted
    std::mutex mutex; ///< guards what follows
    std::vector<std::function<void()>> posted;
    bool isEnding = false;
    std::thread thread;
};

} // namespace scribo::line
