#pragma once

#include "core/verdictsink.h"
#include "history/historyretention.h"
#include "history/historyrow.h"
#include "history/picturekeeper.h"

#include <QDateTime>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace scribo::line {

struct HistoryOptions
{
    QString path; ///< the SQLite file
    QString station = QStringLiteral("1");
    Retention retention;
    bool keepsUnforwarded = false; ///< items that a plant's database has not got yet are not deleted
    std::function<QDateTime()> now = &QDateTime::currentDateTimeUtc;
};

/// Writes verdicts into the station's own history, in a thread of its own, some at a time: at most 0.3 s of them are
/// lost when the process is killed. A verdict never waits for the disk.
///
/// While the disk is full or the file is locked, up to 100,000 items wait in memory; fault() says so, and how many
/// were lost beyond.
class HistoryWriter : public VerdictSink
{
public:
    /// `pictures` may be null: no picture is kept.
    HistoryWriter(HistoryOptions options, PictureKeeper* pictures);
    /// Writes what waits, for a second at most, and ends.
    ~HistoryWriter() override;
    HistoryWriter(const HistoryWriter&) = delete;
    HistoryWriter& operator=(const HistoryWriter&) = delete;

    /// Makes the file and its tables, and starts the thread. Fails when that cannot be done.
    Result<void> start();

    void deliver(const Verdict& verdict) override;
    void statusChanged(const EngineStatus& /*status*/) override { }
    QString fault() const override;

    /// Records who changed what; written like a verdict.
    void record(const HistoryChange& change);

    /// Waits until everything that was handed over is written, at most ten seconds. Returns whether it is.
    bool flush();

    static constexpr int mostWaiting = 100000;

private:
    void run();
    bool writeBatch();
    Result<void> write(const QList<HistoryRow>& rows, const QList<HistoryChange>& changes);
    void clearOut();
    void setFault(const QString& text);

    const HistoryOptions options;
    PictureKeeper* const pictures;
    std::unique_ptr<SqlConnection> connection; ///< the thread's own
    QDateTime nextClearing;

    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    QList<HistoryRow> rows;
    QList<HistoryChange> changes;
    bool isWriting = false;
    bool isEnding = false;
    std::uint64_t lost = 0;
    QString problem;
    std::thread thread;
};

} // namespace scribo::line
