#pragma once

#include "history/sqlconnection.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace scribo::line {

/// How far a station's history has arrived in the plant's database.
struct Forwarded
{
    qint64 sequence = 0; ///< of the newest item
    qint64 change = 0; ///< number of the newest change
};

/// Reads, from the station's own history, how far it has arrived.
Result<Forwarded> readForwarded(SqlConnection& local);

/// Passes the station's own history on to a plant's PostgreSQL database, in a thread of its own: stores and forwards.
/// What happened while the database was away arrives when it is back; nothing arrives twice.
class HistoryForwarder
{
public:
    /// `local` is the station's SQLite file, whose tables are there; `plant` the database, see SqlConnection::open().
    HistoryForwarder(QString local, QString plant, QString station);
    /// Ends after the batch that it is at.
    ~HistoryForwarder();
    HistoryForwarder(const HistoryForwarder&) = delete;
    HistoryForwarder& operator=(const HistoryForwarder&) = delete;

    /// "the plant's database is behind: ..."; empty: nothing is wrong.
    QString fault() const;

private:
    void run();
    Result<bool> forwardBatch();
    Result<void> connect();
    Result<bool> forwardItems(Forwarded* arrived);
    Result<bool> forwardChanges(Forwarded* arrived);
    bool pause(std::chrono::milliseconds time);

    const QString localPlace;
    const QString plantPlace;
    const QString station;
    std::unique_ptr<SqlConnection> local; ///< the thread's own, as is the next
    std::unique_ptr<SqlConnection> plant;

    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    QString problem;
    bool isEnding = false;
    std::thread thread;
};

} // namespace scribo::line
