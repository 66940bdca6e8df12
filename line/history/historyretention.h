#pragma once

#include "history/sqlconnection.h"

#include <QDateTime>
#include <QStringList>

namespace scribo::line {

/// How long the history keeps items.
struct Retention
{
    int days = 0; ///< older items are deleted; 0: none is for its age
    qint64 megabytes = 0; ///< the oldest are deleted while the file is larger; 0: none is for the size
};

/// What was deleted.
struct Deleted
{
    int items = 0;
    QStringList pictures; ///< their files, below the station's picture folder
};

/// Deletes up to `most` items of a SQLite history, with their readings: those that are older than `retention` allows at
/// `now`, and the oldest ones while the file is too large. Items with numbers above `keptAbove` stay.
Result<Deleted> deleteOldRows(
    SqlConnection& connection, const Retention& retention, const QDateTime& now, qint64 keptAbove, int most);

} // namespace scribo::line
