#include "history/historywriter.h"

#include "history/historyforwarder.h"
#include "history/historytables.h"

#include <QLoggingCategory>

#include <chrono>
#include <limits>
#include <utility>

namespace scribo::line {

namespace {

Q_LOGGING_CATEGORY(log, "scribo.history")

using namespace std::chrono_literals;

constexpr auto batchTime = 300ms; ///< how long verdicts gather before they are written together
constexpr auto retryTime = 1s; ///< after a failure to write
constexpr int mostInABatch = 1000;
constexpr int clearingInterval = 60; ///< s
constexpr int mostDeleted = 2000; ///< items at a time, so that new ones need not wait long

} // namespace

HistoryWriter::HistoryWriter(HistoryOptions options, PictureKeeper* pictures)
    : options(std::move(options))
    , pictures(pictures)
{
}

HistoryWriter::~HistoryWriter()
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

Result<void> HistoryWriter::start()
{
    // A connection belongs to the thread that made it, so this one is for the tables alone.
    Result<SqlConnection> opened = SqlConnection::open(options.path);
    if (!opened) {
        return tl::unexpected(opened.error());
    }
    if (Result<void> made = makeTables(*opened); !made) {
        return made;
    }
    thread = std::thread([this] { run(); });
    return {};
}

void HistoryWriter::deliver(const Verdict& verdict)
{
    const HistoryRow row
        = historyRow(options.station, verdict, pictures != nullptr ? pictures->keep(verdict) : QString());
    {
        const std::lock_guard lock(mutex);
        if (rows.size() >= mostWaiting) {
            ++lost;
            return;
        }
        rows.append(row);
    }
    changed.notify_all();
}

void HistoryWriter::record(const HistoryChange& change)
{
    {
        const std::lock_guard lock(mutex);
        changes.append(change);
    }
    changed.notify_all();
}

QString HistoryWriter::fault() const
{
    QStringList faults;
    {
        const std::lock_guard lock(mutex);
        if (!problem.isEmpty()) {
            faults.append(problem);
        }
        if (lost > 0) {
            faults.append(QStringLiteral("%1 items are missing in the history").arg(lost));
        }
    }
    if (pictures != nullptr && !pictures->fault().isEmpty()) {
        faults.append(pictures->fault());
    }
    return faults.join(QStringLiteral("; "));
}

bool HistoryWriter::flush()
{
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 10s, [this] { return rows.isEmpty() && changes.isEmpty() && !isWriting; });
}

void HistoryWriter::run()
{
    nextClearing = options.now();
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait_for(lock, std::chrono::seconds(clearingInterval),
            [this] { return isEnding || !rows.isEmpty() || !changes.isEmpty(); });
        if (!isEnding) {
            changed.wait_for(lock, batchTime, [this] { return isEnding || rows.size() >= mostInABatch; });
        }
        lock.unlock();
        const bool isWritten = writeBatch();
        clearOut();
        lock.lock();
        if (isEnding && (!isWritten || (rows.isEmpty() && changes.isEmpty()))) {
            break;
        }
        if (!isWritten) {
            changed.wait_for(lock, retryTime, [this] { return isEnding; });
        }
    }
    lock.unlock();
    connection.reset();
}

/// Writes what waits, or a part of it. False: it could not be written and still waits.
bool HistoryWriter::writeBatch()
{
    QList<HistoryRow> batch;
    QList<HistoryChange> newChanges;
    {
        const std::lock_guard lock(mutex);
        batch = rows.mid(0, mostInABatch);
        newChanges = changes;
        isWriting = true;
    }
    const Result<void> written = write(batch, newChanges);
    {
        const std::lock_guard lock(mutex);
        isWriting = false;
        if (written) {
            rows.erase(rows.begin(), rows.begin() + batch.size());
            changes.erase(changes.begin(), changes.begin() + newChanges.size());
        }
    }
    setFault(written ? QString() : QString::fromStdString(written.error().message));
    changed.notify_all();
    return written.has_value();
}

Result<void> HistoryWriter::write(const QList<HistoryRow>& newRows, const QList<HistoryChange>& newChanges)
{
    if (newRows.isEmpty() && newChanges.isEmpty()) {
        return {};
    }
    if (!connection) {
        Result<SqlConnection> opened = SqlConnection::open(options.path);
        if (!opened) {
            return tl::unexpected(opened.error());
        }
        if (Result<void> made = makeTables(*opened); !made) {
            return made; // the file may have been taken away
        }
        connection = std::make_unique<SqlConnection>(std::move(*opened));
    }
    const Result<QList<qint64>> refused = addMissingRows(*connection, newRows);
    Result<void> done = refused ? Result<void>() : tl::unexpected(refused.error());
    if (refused && !refused->isEmpty()) {
        qCCritical(log) << "items with numbers that others have:" << *refused;
        const std::lock_guard lock(mutex);
        lost += static_cast<std::uint64_t>(refused->size());
    }
    for (const HistoryChange& change : newChanges) {
        if (done) {
            done = insertChange(*connection, options.station, change);
        }
    }
    if (!done) {
        connection.reset(); // the next try begins anew
    }
    return done;
}

void HistoryWriter::clearOut()
{
    const QDateTime now = options.now();
    const bool isDue
        = now >= nextClearing || nextClearing > now.addSecs(2 * clearingInterval); // or the clock went back
    if (!isDue || !connection) {
        return;
    }
    qint64 keptAbove = std::numeric_limits<qint64>::max();
    if (options.keepsUnforwarded) {
        const Result<Forwarded> forwarded = readForwarded(*connection);
        keptAbove = forwarded ? forwarded->sequence : 0;
    }
    const Result<Deleted> deleted = deleteOldRows(*connection, options.retention, now, keptAbove, mostDeleted);
    if (!deleted) {
        qCWarning(log).noquote() << "old items cannot be deleted:" << QString::fromStdString(deleted.error().message);
        nextClearing = now.addSecs(clearingInterval);
        return;
    }
    if (pictures != nullptr) {
        pictures->discard(deleted->pictures);
    }
    // With a full batch there are more.
    nextClearing = deleted->items < mostDeleted ? now.addSecs(clearingInterval) : now;
}

void HistoryWriter::setFault(const QString& text)
{
    const std::lock_guard lock(mutex);
    problem = text;
}

} // namespace scribo::line
