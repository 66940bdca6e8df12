#pragma once

#include "core/picturesource.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace scribo::test {

/// A source that does what a test tells it to: each take() is the next of the script, and waits for one.
class ScriptedSource : public line::PictureSource
{
public:
    using Taken = tl::expected<line::Frame, line::CaptureError>;
    using Step = std::function<Taken()>;

    /// The next take() gives a picture of this grey, named after it.
    void show(int grey)
    {
        add([grey]() -> Taken {
            line::Frame frame;
            frame.picture = cv::Mat(4, 4, CV_8UC1, cv::Scalar(grey));
            frame.takenAt = QDateTime::currentDateTimeUtc();
            frame.name = QString::number(grey);
            return frame;
        });
    }

    /// The next take() fails.
    void fail(line::CaptureFault fault, const QString& message)
    {
        add([fault, message]() -> Taken { return tl::unexpected(line::CaptureError{fault, message}); });
    }

    void add(Step step)
    {
        {
            const std::lock_guard lock(mutex);
            script.push_back(std::move(step));
        }
        changed.notify_all();
    }

    void open(Mode mode) override
    {
        openedAs = mode;
        ++opened;
    }

    Result<void> configure(const QJsonObject& settings) override
    {
        const std::lock_guard lock(mutex);
        configured.push_back(settings);
        return configuring();
    }

    Taken take(std::chrono::milliseconds timeout) override
    {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, timeout, [this] { return isInterrupted || !script.empty(); });
        if (isInterrupted) {
            return tl::unexpected(line::CaptureError{line::CaptureFault::interrupted, QStringLiteral("interrupted")});
        }
        if (script.empty()) {
            return tl::unexpected(line::CaptureError{line::CaptureFault::timeout, QStringLiteral("no picture came")});
        }
        Step step = std::move(script.front());
        script.pop_front();
        lock.unlock();
        return step();
    }

    QString watch() override
    {
        const std::lock_guard lock(mutex);
        return fault;
    }

    void setFault(const QString& newFault)
    {
        const std::lock_guard lock(mutex);
        fault = newFault;
    }

    void interrupt() override
    {
        {
            const std::lock_guard lock(mutex);
            isInterrupted = true;
        }
        changed.notify_all();
    }

    void close() override { ++closed; }
    QString description() const override { return QStringLiteral("script"); }

    std::deque<QJsonObject> configurations()
    {
        const std::lock_guard lock(mutex);
        return configured;
    }

    std::function<Result<void>()> configuring = [] { return Result<void>(); };
    std::atomic<int> opened{0};
    std::atomic<int> closed{0};
    std::atomic<Mode> openedAs{Mode::triggered};

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Step> script;
    std::deque<QJsonObject> configured;
    QString fault;
    bool isInterrupted = false;
};

} // namespace scribo::test
