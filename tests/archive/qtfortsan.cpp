// Qt comes without the thread sanitizer's instrumentation, so the sanitizer does not see that QMutex orders what its
// owners do, nor that QThreadPool orders a task after its start and waitForDone() after the task, and takes all of it
// for races. To suppress such reports would hide real ones beside them. Instead these functions stand in for Qt's in
// the test programs: each does what Qt's does, and says what it has ordered. Built for the thread sanitizer only.

#include <QMutex>
#include <QRunnable>
#include <QThreadPool>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

/// Qt's own function of the mangled name `name`.
template <typename Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

class OrderedTask : public QRunnable
{
public:
    OrderedTask(QThreadPool* pool, QRunnable* task)
        : pool(pool)
        , task(task)
    {
        __tsan_release(this);
    }

    void run() override
    {
        __tsan_acquire(this);
        const bool owned = task->autoDelete();
        task->run();
        if (owned) {
            delete task;
        }
        __tsan_release(pool);
    }

private:
    QThreadPool* pool;
    QRunnable* task;
};

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto lock = original<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    lock(this);
    __tsan_acquire(this);
}

void QMutex::unlock() noexcept
{
    static const auto unlock = original<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    unlock(this);
}

void QThreadPool::start(QRunnable* task, int priority)
{
    static const auto start = original<void (*)(QThreadPool*, QRunnable*, int)>("_ZN11QThreadPool5startEP9QRunnablei");
    start(this, new OrderedTask(this, task), priority);
}

bool QThreadPool::waitForDone(int milliseconds)
{
    static const auto wait = original<bool (*)(QThreadPool*, int)>("_ZN11QThreadPool11waitForDoneEi");
    const bool done = wait(this, milliseconds);
    __tsan_acquire(this);
    return done;
}

/// Races inside Qt are not looked for.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "ignore_noninstrumented_modules=1";
}
