#include "history/historyretention.h"

#include "history/historytables.h"

#include <QVariant>

#include <utility>

namespace scribo::line {

namespace {

Result<qint64> readNumber(SqlConnection& connection, const QString& statement)
{
    auto query = connection.run(statement);
    if (!query) {
        return tl::unexpected(query.error());
    }
    return query->next() ? query->value(0).toLongLong() : 0;
}

/// Bytes of the file that hold something.
Result<qint64> usedBytes(SqlConnection& connection)
{
    const Result<qint64> pages = readNumber(connection, QStringLiteral("PRAGMA page_count"));
    const Result<qint64> unused = readNumber(connection, QStringLiteral("PRAGMA freelist_count"));
    const Result<qint64> size = readNumber(connection, QStringLiteral("PRAGMA page_size"));
    for (const auto* const number : {&pages, &unused, &size}) {
        if (!*number) {
            return tl::unexpected(number->error());
        }
    }
    return (*pages - *unused) * *size;
}

struct Key
{
    QString station;
    qint64 sequence = 0;
};

/// The items that `selection` finds go, with their readings, in one transaction.
Result<Deleted> deleteSelected(SqlConnection& connection, const QString& selection, const QVariantList& values)
{
    if (Result<void> begun = connection.begin(); !begun) {
        return tl::unexpected(begun.error());
    }
    Deleted deleted;
    QList<Key> keys;
    auto found = connection.run(selection, values);
    while (found && found->next()) {
        keys.append({found->value(0).toString(), found->value(1).toLongLong()});
        const QString picture = found->value(2).toString();
        if (!picture.isEmpty()) {
            deleted.pictures.append(picture);
        }
    }
    Result<void> done = found ? Result<void>() : tl::unexpected(found.error());
    if (found) {
        found->finish();
    }
    for (const Key& key : std::as_const(keys)) {
        for (const char* const table : {"reading", "inspection"}) {
            auto gone = connection.run(
                QStringLiteral("DELETE FROM %1 WHERE station = ? AND sequence = ?").arg(QLatin1String(table)),
                {key.station, key.sequence});
            if (!gone && done) {
                done = tl::unexpected(gone.error());
            }
        }
    }
    if (done) {
        done = connection.commit();
    }
    if (!done) {
        connection.rollback();
        return tl::unexpected(done.error());
    }
    deleted.items = keys.size();
    return deleted;
}

} // namespace

Result<Deleted> deleteOldRows(
    SqlConnection& connection, const Retention& retention, const QDateTime& now, qint64 keptAbove, int most)
{
    const QString items = QStringLiteral("SELECT station, sequence, picture FROM inspection WHERE sequence <= ?");
    const QString oldest = QStringLiteral(" ORDER BY taken_at LIMIT %1").arg(most);
    Result<Deleted> deleted = Deleted{};
    if (retention.days > 0) {
        deleted = deleteSelected(connection, items + QStringLiteral(" AND taken_at < ?") + oldest,
            {keptAbove, sqlTime(now.addDays(-retention.days))});
    }
    if (deleted && deleted->items == 0 && retention.megabytes > 0) {
        constexpr qint64 megabyte = 1000000;
        const Result<qint64> used = usedBytes(connection);
        if (!used) {
            return tl::unexpected(used.error());
        }
        if (*used > retention.megabytes * megabyte) {
            deleted = deleteSelected(connection, items + oldest, {keptAbove});
        }
    }
    if (deleted && deleted->items > 0) {
        // Gives what became free back to the disk, a part at a time.
        if (auto done = connection.run(QStringLiteral("PRAGMA incremental_vacuum(1000)"))) {
            while (done->next()) { }
        }
    }
    return deleted;
}

} // namespace scribo::line
