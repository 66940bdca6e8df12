#include "engine/sequencer.h"

#include <utility>

namespace scribo::line {

namespace {

double millisecondsSince(Sequencer::Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Sequencer::Clock::now() - start).count();
}

} // namespace

Sequencer::Sequencer(const Options& options, Emit emit)
    : options(options)
    , emit(std::move(emit))
    , nextSequence(options.firstSequence)
    , watcher([this] { watchDeadlines(); })
{
}

Sequencer::~Sequencer()
{
    stopPending();
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
    }
    changed.notify_all();
    watcher.join();
}

Sequencer::Ticket Sequencer::begin(const Verdict& draft)
{
    Ticket ticket;
    {
        const std::lock_guard lock(mutex);
        Pending added;
        added.verdict = draft;
        added.verdict.sequence = nextSequence++;
        added.triggered = Clock::now();
        ticket.sequence = added.verdict.sequence;
        ticket.accepted = pending.size() < options.mostPending;
        if (!ticket.accepted) {
            finish(added, Reason::overrun, QStringLiteral("too many triggers wait: %1").arg(pending.size()));
        }
        pending.push_back(std::move(added));
    }
    changed.notify_all(); // the watcher minds the new deadline, and hands over what has its NG already
    return ticket;
}

bool Sequencer::complete(Verdict verdict)
{
    {
        const std::lock_guard lock(mutex);
        const bool isKnown = !pending.empty() && verdict.sequence >= pending.front().verdict.sequence
            && verdict.sequence < nextSequence;
        Pending* const entry = isKnown ? &pending[verdict.sequence - pending.front().verdict.sequence] : nullptr;
        if (entry == nullptr || entry->isComplete) {
            ++late;
            return false;
        }
        entry->verdict = std::move(verdict);
        entry->verdict.milliseconds = millisecondsSince(entry->triggered);
        entry->isComplete = true;
    }
    emitReady();
    return true;
}

void Sequencer::stopPending()
{
    {
        const std::lock_guard lock(mutex);
        for (Pending& entry : pending) {
            if (!entry.isComplete) {
                finish(entry, Reason::stopped, QStringLiteral("the station was stopped before the item was judged"));
            }
        }
    }
    emitReady();
}

std::size_t Sequencer::pendingCount() const
{
    const std::lock_guard lock(mutex);
    return pending.size();
}

std::uint64_t Sequencer::lateCount() const
{
    const std::lock_guard lock(mutex);
    return late;
}

std::uint64_t Sequencer::lastSequence() const
{
    const std::lock_guard lock(mutex);
    return nextSequence - 1;
}

void Sequencer::watchDeadlines()
{
    std::unique_lock lock(mutex);
    while (!isEnding) {
        const auto now = Clock::now();
        auto next = Clock::time_point::max();
        bool isReady = !pending.empty() && pending.front().isComplete;
        for (Pending& entry : pending) {
            if (entry.isComplete) {
                continue;
            }
            const auto due = entry.triggered + options.deadline;
            if (due > now) {
                next = due;
                break; // those behind it came later
            }
            finish(
                entry, Reason::deadlinePassed, QStringLiteral("no verdict within %1 ms").arg(options.deadline.count()));
            isReady = true;
        }
        if (isReady) {
            lock.unlock();
            emitReady();
            lock.lock();
        } else if (next == Clock::time_point::max()) {
            changed.wait(lock);
        } else {
            changed.wait_until(lock, next);
        }
    }
}

void Sequencer::emitReady()
{
    const std::lock_guard order(emitting);
    while (const std::optional<Verdict> verdict = takeReady()) {
        emit(*verdict);
    }
}

std::optional<Verdict> Sequencer::takeReady()
{
    const std::lock_guard lock(mutex);
    if (pending.empty() || !pending.front().isComplete) {
        return std::nullopt;
    }
    Verdict verdict = std::move(pending.front().verdict);
    pending.pop_front();
    return verdict;
}

void Sequencer::finish(Pending& pending, Reason reason, const QString& text)
{
    pending.verdict.isOk = false;
    pending.verdict.reason = reason;
    pending.verdict.reasonText = text;
    pending.verdict.milliseconds = millisecondsSince(pending.triggered);
    pending.isComplete = true;
}

} // namespace scribo::line
