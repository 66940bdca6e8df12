#pragma once

#include <QSemaphore>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

/// Keeps every thread of Qt's global pool busy, so that no writer can start, until it is released.
class BlockedPool
{
public:
    BlockedPool()
        : threads(QThreadPool::globalInstance()->maxThreadCount())
    {
        for (int i = 0; i < threads; ++i) {
            QtConcurrent::run(QThreadPool::globalInstance(), [this] {
                running.release();
                gate.acquire();
            });
        }
        running.acquire(threads);
    }
    ~BlockedPool() { release(); }

    /// Lets the threads go and waits until the pool has nothing left to do.
    void release()
    {
        gate.release(threads);
        QThreadPool::globalInstance()->waitForDone();
    }

private:
    int threads;
    QSemaphore running;
    QSemaphore gate;
};
