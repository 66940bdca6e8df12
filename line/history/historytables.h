#pragma once

#include "history/historyrow.h"
#include "history/sqlconnection.h"

#include <functional>
#include <optional>

namespace scribo::line {

/// The tables of a history, the same in SQLite and in PostgreSQL:
///
///     inspection (station, sequence, taken_at, job, job_hash, model_hash, verdict, reason_code, reason, milliseconds,
///                 picture)              primary key (station, sequence); verdict is OK or NG
///     reading    (station, sequence, region, name, text, expected, verdict, reason)
///                                       primary key (station, sequence, region)
///     change     (station, number, at, who, what, old, new)   primary key (station, number)
///
/// Times are UTC: texts like 2026-11-21T13:04:05.006Z in SQLite, timestamps with a time zone in PostgreSQL.

/// In SQLite also, for the plant's database that items are passed on to:
///
///     forwarding (id, sequence, number)   one row: up to where items and changes have arrived there

/// Makes the tables that are not there. Fails when the history is of a newer version of Scribo.
Result<void> makeTables(SqlConnection& connection);

/// The tables' version, which SQLite's user_version and the table scribo_version of PostgreSQL hold.
constexpr int tablesVersion = 1;

/// Adds those of the rows that are not there, in one transaction. Returns the sequence numbers of rows that could not
/// be added because another item has the station and the number.
Result<QList<qint64>> addMissingRows(SqlConnection& connection, const QList<HistoryRow>& rows);

/// Adds a change, under the next number of the station.
Result<void> insertChange(SqlConnection& connection, const QString& station, const HistoryChange& change);

/// Adds those of the changes that are not there, in one transaction; their numbers count.
Result<void> addMissingChanges(SqlConnection& connection, const QString& station, const QList<HistoryChange>& changes);

/// Which items are wanted. What is not set does not matter.
struct HistoryFilter
{
    QString station;
    QDateTime since; ///< this moment or later
    QDateTime until; ///< before this moment
    std::optional<bool> isOk;
    QString job;
    QString text; ///< part of a reading
    qint64 aboveSequence = -1; ///< sequence numbers above this one
    int limit = -1; ///< -1: all
    enum class Order {
        newestFirst, ///< by time
        bySequence, ///< of one station
    };
    Order order = Order::newestFirst;
};

/// Hands the items to `receive` one by one, with their readings, until it returns false.
Result<void> forEachRow(
    SqlConnection& connection, const HistoryFilter& filter, const std::function<bool(const HistoryRow&)>& receive);

/// The same, collected.
Result<QList<HistoryRow>> selectRows(SqlConnection& connection, const HistoryFilter& filter);

/// The changes of a station with numbers above `aboveNumber`, the oldest first.
Result<QList<HistoryChange>> selectChanges(SqlConnection& connection, const QString& station, qint64 aboveNumber = 0);

/// The time as the tables hold it.
QString sqlTime(const QDateTime& time);

} // namespace scribo::line
