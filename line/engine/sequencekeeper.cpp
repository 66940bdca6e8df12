#include "engine/sequencekeeper.h"

#include <chrono>
#include <utility>

namespace scribo::line {

namespace {

/// After a failure to write.
constexpr std::chrono::seconds pause{1};

} // namespace

SequenceKeeper::SequenceKeeper(SequenceStore store, std::uint64_t first)
    : store(std::move(store))
    , used(first - 1)
    , reserved(first)
{
}

SequenceKeeper::~SequenceKeeper()
{
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
    }
    changed.notify_all();
    if (thread.joinable()) {
        thread.join();
    }
}

Result<void> SequenceKeeper::start()
{
    const std::uint64_t end = used + 1 + ahead;
    if (Result<void> written = store.reserveBelow(end); !written) {
        return written;
    }
    reserved = end;
    thread = std::thread([this] { keepAhead(); });
    return {};
}

void SequenceKeeper::deliver(const Verdict& verdict)
{
    {
        const std::lock_guard lock(mutex);
        used = verdict.sequence;
        if (used + lowest < reserved) {
            return;
        }
    }
    changed.notify_all();
}

QString SequenceKeeper::fault() const
{
    const std::lock_guard lock(mutex);
    return problem;
}

void SequenceKeeper::keepAhead()
{
    std::unique_lock lock(mutex);
    while (!isEnding) {
        if (used + lowest < reserved) {
            changed.wait(lock);
            continue;
        }
        const std::uint64_t end = used + 1 + ahead;
        lock.unlock();
        const Result<void> written = store.reserveBelow(end);
        lock.lock();
        if (written) {
            reserved = end;
            problem.clear();
        } else {
            problem = QStringLiteral("sequence numbers are not kept: %1")
                          .arg(QString::fromStdString(written.error().message));
            changed.wait_for(lock, pause);
        }
    }
}

} // namespace scribo::line
