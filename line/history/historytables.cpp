#include "history/historytables.h"

#include <QStringList>
#include <QVariant>

namespace scribo::line {

namespace {

const QString ok = QStringLiteral("OK");
const QString ng = QStringLiteral("NG");

QString verdictWord(bool isOk)
{
    return isOk ? ok : ng;
}

QStringList tableStatements(SqlDialect dialect)
{
    const bool isSqlite = dialect == SqlDialect::sqlite;
    const QString time = isSqlite ? QStringLiteral("TEXT") : QStringLiteral("TIMESTAMPTZ");
    // A table that is its primary key's tree: rows of one item lie together.
    const QString asTree = isSqlite ? QStringLiteral(" WITHOUT ROWID") : QString();
    QStringList statements{
        QStringLiteral("CREATE TABLE IF NOT EXISTS inspection (station TEXT NOT NULL, sequence BIGINT NOT NULL, "
                       "taken_at %1 NOT NULL, job TEXT NOT NULL, job_hash TEXT NOT NULL, model_hash TEXT NOT NULL, "
                       "verdict TEXT NOT NULL, reason_code INTEGER NOT NULL, reason TEXT NOT NULL, "
                       "milliseconds DOUBLE PRECISION NOT NULL, picture TEXT NOT NULL, "
                       "PRIMARY KEY (station, sequence))%2")
            .arg(time, asTree),
        QStringLiteral("CREATE TABLE IF NOT EXISTS reading (station TEXT NOT NULL, sequence BIGINT NOT NULL, "
                       "region INTEGER NOT NULL, name TEXT NOT NULL, text TEXT NOT NULL, expected TEXT NOT NULL, "
                       "verdict TEXT NOT NULL, reason TEXT NOT NULL, PRIMARY KEY (station, sequence, region))%1")
            .arg(asTree),
        QStringLiteral("CREATE TABLE IF NOT EXISTS change (station TEXT NOT NULL, number BIGINT NOT NULL, "
                       "at %1 NOT NULL, who TEXT NOT NULL, what TEXT NOT NULL, old TEXT NOT NULL, new TEXT NOT NULL, "
                       "PRIMARY KEY (station, number))%2")
            .arg(time, asTree),
        QStringLiteral("CREATE INDEX IF NOT EXISTS inspection_by_time ON inspection (taken_at)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS inspection_by_verdict ON inspection (verdict, taken_at)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS inspection_by_job ON inspection (job, taken_at)"),
    };
    if (isSqlite) {
        statements.append(
            QStringLiteral("CREATE TABLE IF NOT EXISTS forwarding (id INTEGER PRIMARY KEY CHECK (id = 1), "
                           "sequence BIGINT NOT NULL, number BIGINT NOT NULL)"));
        statements.append(QStringLiteral("INSERT INTO forwarding VALUES (1, 0, 0)"));
    }
    return statements;
}

Result<int> readNumber(SqlConnection& connection, const QString& statement)
{
    auto query = connection.run(statement);
    if (!query) {
        return tl::unexpected(query.error());
    }
    return query->next() ? query->value(0).toInt() : 0;
}

/// 0: there are no tables yet.
Result<int> versionOf(SqlConnection& connection)
{
    if (connection.dialect() == SqlDialect::sqlite) {
        return readNumber(connection, QStringLiteral("PRAGMA user_version"));
    }
    if (auto made
        = connection.run(QStringLiteral("CREATE TABLE IF NOT EXISTS scribo_version (version INTEGER NOT NULL)"));
        !made) {
        return tl::unexpected(made.error());
    }
    return readNumber(connection, QStringLiteral("SELECT max(version) FROM scribo_version"));
}

Result<void> setVersion(SqlConnection& connection)
{
    const QString statement = connection.dialect() == SqlDialect::sqlite
        ? QStringLiteral("PRAGMA user_version = %1")
        : QStringLiteral("INSERT INTO scribo_version VALUES (%1)");
    auto done = connection.run(statement.arg(tablesVersion));
    return done ? Result<void>() : tl::unexpected(done.error());
}

Result<void> makeMissing(SqlConnection& connection)
{
    if (connection.dialect() == SqlDialect::postgresql) {
        // Several stations may start at once; CREATE ... IF NOT EXISTS alone collides.
        if (auto locked = connection.run(QStringLiteral("SELECT pg_advisory_xact_lock(5201314)")); !locked) {
            return tl::unexpected(locked.error());
        }
    }
    const Result<int> version = versionOf(connection);
    if (!version) {
        return tl::unexpected(version.error());
    }
    if (*version > tablesVersion) {
        return failure(QStringLiteral("the history has tables of version %1; this program knows version %2")
                           .arg(*version)
                           .arg(tablesVersion)
                           .toStdString());
    }
    if (*version == tablesVersion) {
        return {};
    }
    for (const QString& statement : tableStatements(connection.dialect())) {
        if (auto done = connection.run(statement); !done) {
            return tl::unexpected(done.error());
        }
    }
    return setVersion(connection);
}

/// Runs `work` in a transaction: all or nothing.
Result<void> inTransaction(SqlConnection& connection, const std::function<Result<void>()>& work)
{
    if (Result<void> begun = connection.begin(); !begun) {
        return begun;
    }
    Result<void> done = work();
    if (done) {
        done = connection.commit();
    }
    if (!done) {
        connection.rollback();
    }
    return done;
}

Result<void> insertReadings(SqlConnection& connection, const HistoryRow& row)
{
    const QString statement = QStringLiteral("INSERT INTO reading VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    for (const HistoryReading& reading : row.readings) {
        auto done = connection.run(statement,
            {row.station, row.sequence, reading.region, reading.name, reading.text, reading.expected,
                verdictWord(reading.isOk), reading.reason});
        if (!done) {
            return tl::unexpected(done.error());
        }
    }
    return {};
}

/// Says whether the row was added; one that is there already is left alone.
Result<bool> insertRow(SqlConnection& connection, const HistoryRow& row)
{
    auto done = connection.run(
        QStringLiteral("INSERT INTO inspection VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING"),
        {row.station, row.sequence, sqlTime(row.takenAt), row.job, row.jobHash, row.modelHash, verdictWord(row.isOk),
            row.reasonCode, row.reason, row.milliseconds, row.picture});
    if (!done) {
        return tl::unexpected(done.error());
    }
    if (done->numRowsAffected() == 0) {
        return false;
    }
    const Result<void> readings = insertReadings(connection, row);
    return readings ? Result<bool>(true) : tl::unexpected(readings.error());
}

/// Whether the row that has this station and number is the same item.
Result<bool> isTheSame(SqlConnection& connection, const HistoryRow& row)
{
    auto found = connection.run(
        QStringLiteral(
            "SELECT count(*) FROM inspection WHERE station = ? AND sequence = ? AND taken_at = ? AND job = ?"),
        {row.station, row.sequence, sqlTime(row.takenAt), row.job});
    if (!found) {
        return tl::unexpected(found.error());
    }
    return found->next() && found->value(0).toInt() == 1;
}

/// A condition and its values.
struct Where
{
    QStringList conditions;
    QVariantList values;

    void add(const QString& condition, const QVariant& value)
    {
        conditions.append(condition);
        values.append(value);
    }
};

/// Within LIKE, for any characters around it.
QString asPattern(QString text)
{
    text.replace(QLatin1Char('!'), QStringLiteral("!!"));
    text.replace(QLatin1Char('%'), QStringLiteral("!%"));
    text.replace(QLatin1Char('_'), QStringLiteral("!_"));
    return QLatin1Char('%') + text + QLatin1Char('%');
}

Where whereOf(const HistoryFilter& filter)
{
    Where where;
    if (!filter.station.isEmpty()) {
        where.add(QStringLiteral("station = ?"), filter.station);
    }
    if (filter.since.isValid()) {
        where.add(QStringLiteral("taken_at >= ?"), sqlTime(filter.since));
    }
    if (filter.until.isValid()) {
        where.add(QStringLiteral("taken_at < ?"), sqlTime(filter.until));
    }
    if (filter.isOk) {
        where.add(QStringLiteral("verdict = ?"), verdictWord(*filter.isOk));
    }
    if (!filter.job.isEmpty()) {
        where.add(QStringLiteral("job = ?"), filter.job);
    }
    if (filter.aboveSequence >= 0) {
        where.add(QStringLiteral("sequence > ?"), filter.aboveSequence);
    }
    if (!filter.text.isEmpty()) {
        where.add(QStringLiteral("EXISTS (SELECT 1 FROM reading WHERE reading.station = inspection.station AND "
                                 "reading.sequence = inspection.sequence AND reading.text LIKE ? ESCAPE '!')"),
            asPattern(filter.text));
    }
    return where;
}

/// Items with their readings, a row a reading; the readings of an item lie together.
QString selection(SqlDialect dialect, const HistoryFilter& filter, const Where& where)
{
    const bool isNewestFirst = filter.order == HistoryFilter::Order::newestFirst;
    const QString order
        = isNewestFirst ? QStringLiteral("taken_at DESC, sequence DESC, station") : QStringLiteral("station, sequence");
    QString items = QStringLiteral("SELECT * FROM inspection");
    if (!where.conditions.isEmpty()) {
        items += QStringLiteral(" WHERE ") + where.conditions.join(QStringLiteral(" AND "));
    }
    items += QStringLiteral(" ORDER BY ") + order;
    if (filter.limit >= 0) {
        items += QStringLiteral(" LIMIT %1").arg(filter.limit);
    }
    const QString time = dialect == SqlDialect::sqlite
        ? QStringLiteral("taken_at")
        : QStringLiteral("to_char(taken_at AT TIME ZONE 'UTC', 'YYYY-MM-DD\"T\"HH24:MI:SS.MS\"Z\"')");
    return QStringLiteral(
        "SELECT item.station, item.sequence, %1, job, job_hash, model_hash, item.verdict, reason_code, "
        "item.reason, milliseconds, picture, region, name, text, expected, reading.verdict, "
        "reading.reason FROM (%2) AS item LEFT JOIN reading ON reading.station = item.station AND "
        "reading.sequence = item.sequence ORDER BY %3, region")
        .arg(time, items,
            isNewestFirst ? QStringLiteral("taken_at DESC, item.sequence DESC, item.station")
                          : QStringLiteral("item.station, item.sequence"));
}

QDateTime readTime(const QString& text)
{
    return QDateTime::fromString(text, Qt::ISODateWithMs).toUTC();
}

constexpr int itemColumns = 11; // of a selection; those of a reading follow

HistoryRow rowOf(const QSqlQuery& query)
{
    HistoryRow row;
    int column = 0;
    row.station = query.value(column++).toString();
    row.sequence = query.value(column++).toLongLong();
    row.takenAt = readTime(query.value(column++).toString());
    row.job = query.value(column++).toString();
    row.jobHash = query.value(column++).toString();
    row.modelHash = query.value(column++).toString();
    row.isOk = query.value(column++).toString() == ok;
    row.reasonCode = query.value(column++).toInt();
    row.reason = query.value(column++).toString();
    row.milliseconds = query.value(column++).toDouble();
    row.picture = query.value(column++).toString();
    return row;
}

/// The reading behind the item's columns, if it has one.
void appendReading(const QSqlQuery& query, HistoryRow* row)
{
    int column = itemColumns;
    if (query.isNull(column)) {
        return;
    }
    HistoryReading reading;
    reading.region = query.value(column++).toInt();
    reading.name = query.value(column++).toString();
    reading.text = query.value(column++).toString();
    reading.expected = query.value(column++).toString();
    reading.isOk = query.value(column++).toString() == ok;
    reading.reason = query.value(column++).toString();
    row->readings.append(reading);
}

} // namespace

QString sqlTime(const QDateTime& time)
{
    return time.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

Result<void> makeTables(SqlConnection& connection)
{
    if (connection.dialect() == SqlDialect::sqlite) {
        // Readers and the writer do not wait for one another, and a crash loses no committed row; a power cut may lose
        // the newest.
        for (const char* const setting :
            {"PRAGMA auto_vacuum = INCREMENTAL", "PRAGMA journal_mode = WAL", "PRAGMA synchronous = NORMAL"}) {
            if (auto done = connection.run(QString::fromLatin1(setting)); !done) {
                return tl::unexpected(done.error());
            }
        }
    }
    return inTransaction(connection, [&] { return makeMissing(connection); });
}

Result<QList<qint64>> addMissingRows(SqlConnection& connection, const QList<HistoryRow>& rows)
{
    QList<qint64> refused;
    const Result<void> done = inTransaction(connection, [&]() -> Result<void> {
        for (const HistoryRow& row : rows) {
            Result<bool> isThere = insertRow(connection, row);
            if (isThere && !*isThere) {
                isThere = isTheSame(connection, row);
            }
            if (!isThere) {
                return tl::unexpected(isThere.error());
            }
            if (!*isThere) {
                refused.append(row.sequence);
            }
        }
        return {};
    });
    return done ? Result<QList<qint64>>(refused) : tl::unexpected(done.error());
}

Result<void> addMissingChanges(SqlConnection& connection, const QString& station, const QList<HistoryChange>& changes)
{
    return inTransaction(connection, [&]() -> Result<void> {
        for (const HistoryChange& change : changes) {
            auto done = connection.run(
                QStringLiteral("INSERT INTO change VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING"),
                {station, change.number, sqlTime(change.at), change.who, change.what, change.oldValue,
                    change.newValue});
            if (!done) {
                return tl::unexpected(done.error());
            }
        }
        return {};
    });
}

Result<void> insertChange(SqlConnection& connection, const QString& station, const HistoryChange& change)
{
    return inTransaction(connection, [&]() -> Result<void> {
        auto done = connection.run(
            QStringLiteral("INSERT INTO change SELECT ?, coalesce(max(number), 0) + 1, ?, ?, ?, ?, ? FROM change "
                           "WHERE station = ?"),
            {station, sqlTime(change.at), change.who, change.what, change.oldValue, change.newValue, station});
        return done ? Result<void>() : tl::unexpected(done.error());
    });
}

Result<void> forEachRow(
    SqlConnection& connection, const HistoryFilter& filter, const std::function<bool(const HistoryRow&)>& receive)
{
    const Where where = whereOf(filter);
    auto query = connection.run(selection(connection.dialect(), filter, where), where.values);
    if (!query) {
        return tl::unexpected(query.error());
    }
    std::optional<HistoryRow> row; // whose readings are still coming
    while (query->next()) {
        HistoryRow next = rowOf(*query);
        if (row && (row->sequence != next.sequence || row->station != next.station)) {
            if (!receive(*row)) {
                return {};
            }
            row.reset();
        }
        if (!row) {
            row = next;
        }
        appendReading(*query, &*row);
    }
    if (row) {
        receive(*row);
    }
    return {};
}

Result<QList<HistoryRow>> selectRows(SqlConnection& connection, const HistoryFilter& filter)
{
    QList<HistoryRow> rows;
    const Result<void> done = forEachRow(connection, filter, [&rows](const HistoryRow& row) {
        rows.append(row);
        return true;
    });
    return done ? Result<QList<HistoryRow>>(rows) : tl::unexpected(done.error());
}

Result<QList<HistoryChange>> selectChanges(SqlConnection& connection, const QString& station, qint64 aboveNumber)
{
    const QString time = connection.dialect() == SqlDialect::sqlite
        ? QStringLiteral("at")
        : QStringLiteral("to_char(at AT TIME ZONE 'UTC', 'YYYY-MM-DD\"T\"HH24:MI:SS.MS\"Z\"')");
    auto query = connection.run(
        QStringLiteral("SELECT number, %1, who, what, old, new FROM change WHERE station = ? AND number > ? "
                       "ORDER BY number")
            .arg(time),
        {station, aboveNumber});
    if (!query) {
        return tl::unexpected(query.error());
    }
    QList<HistoryChange> changes;
    while (query->next()) {
        HistoryChange change;
        int column = 0;
        change.number = query->value(column++).toLongLong();
        change.at = readTime(query->value(column++).toString());
        change.who = query->value(column++).toString();
        change.what = query->value(column++).toString();
        change.oldValue = query->value(column++).toString();
        change.newValue = query->value(column++).toString();
        changes.append(change);
    }
    return changes;
}

} // namespace scribo::line
