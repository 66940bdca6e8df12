#include "core/eventthread.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <cstdint>
#include <future>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace scribo::line {

EventThread::EventThread()
    : wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (wakeUp < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd"); // no file descriptors left
    }
    thread = std::thread([this] { run(); });
}

EventThread::~EventThread()
{
    post([this] {
        const std::lock_guard lock(mutex);
        isEnding = true;
    });
    thread.join();
    ::close(wakeUp);
}

void EventThread::post(std::function<void()> work)
{
    {
        const std::lock_guard lock(mutex);
        posted.push_back(std::move(work));
    }
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then the descriptor is readable anyway.
    static_cast<void>(!::write(wakeUp, &one, sizeof one));
}

void EventThread::call(const std::function<void()>& work)
{
    std::promise<void> done;
    post([&work, &done] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

void EventThread::run()
{
    QEventLoop loop; // before the notifier, which needs its dispatcher
    QSocketNotifier notifier(wakeUp, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this, &loop] {
        runPosted();
        const std::lock_guard lock(mutex);
        if (isEnding && posted.empty()) {
            loop.quit();
        }
    });
    loop.exec();
}

void EventThread::runPosted()
{
    std::uint64_t count = 0;
    static_cast<void>(!::read(wakeUp, &count, sizeof count));
    std::vector<std::function<void()>> work;
    {
        const std::lock_guard lock(mutex);
        work.swap(posted);
    }
    for (const auto& one : work) {
        one();
    }
}

} // namespace scribo::line
