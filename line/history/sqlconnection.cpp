#include "history/sqlconnection.h"

#include <QAtomicInteger>
#include <QFileInfo>
#include <QSqlError>
#include <QUrl>

#include <utility>

namespace scribo::line {

namespace {

QString freshName()
{
    static QAtomicInteger<quint64> count;
    return QStringLiteral("scribo-history-%1").arg(++count);
}

std::string message(const QString& what, const QSqlError& error)
{
    const QString words = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    return QStringLiteral("%1: %2").arg(what, words.simplified()).toStdString();
}

QSqlDatabase postgresql(const QString& name, const QUrl& url)
{
    constexpr int port = 5432;
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
    database.setHostName(url.host());
    database.setPort(url.port(port));
    database.setDatabaseName(url.path().mid(1));
    database.setUserName(url.userName());
    database.setPassword(url.password());
    // A plant's server that is switched off answers nothing at all.
    database.setConnectOptions(QStringLiteral("connect_timeout=3"));
    return database;
}

} // namespace

bool isPostgresql(const QString& place)
{
    return place.startsWith(QStringLiteral("postgresql://")) || place.startsWith(QStringLiteral("postgres://"));
}

QString withoutPassword(const QString& place)
{
    return isPostgresql(place) ? QUrl(place).toString(QUrl::RemovePassword) : place;
}

Result<SqlConnection> SqlConnection::open(const QString& place)
{
    return openNamed(place, false);
}

Result<SqlConnection> SqlConnection::openToRead(const QString& place)
{
    return openNamed(place, true);
}

Result<SqlConnection> SqlConnection::openNamed(const QString& place, bool isToRead)
{
    SqlConnection connection(freshName(), isPostgresql(place) ? SqlDialect::postgresql : SqlDialect::sqlite);
    QSqlDatabase database;
    if (connection.kind == SqlDialect::postgresql) {
        database = postgresql(connection.name, QUrl(place));
    } else {
        if (isToRead && !QFileInfo::exists(place)) {
            return failure(QStringLiteral("%1: there is no such file").arg(place).toStdString());
        }
        database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection.name);
        database.setDatabaseName(place);
        // A reader must not take a lock from the writer, and either waits for the other a while.
        database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    }
    if (!database.open()) {
        return failure(message(withoutPassword(place), database.lastError()));
    }
    return connection;
}

SqlConnection::SqlConnection(QString name, SqlDialect dialect)
    : name(std::move(name))
    , kind(dialect)
{
}

SqlConnection::~SqlConnection()
{
    if (!name.isEmpty()) {
        QSqlDatabase::database(name, false).close();
        QSqlDatabase::removeDatabase(name);
    }
}

SqlConnection::SqlConnection(SqlConnection&& other) noexcept
    : name(std::exchange(other.name, {}))
    , kind(other.kind)
{
}

SqlConnection& SqlConnection::operator=(SqlConnection&& other) noexcept
{
    std::swap(name, other.name);
    std::swap(kind, other.kind);
    return *this;
}

Result<QSqlQuery> SqlConnection::run(const QString& statement, const QVariantList& values)
{
    QSqlQuery query(QSqlDatabase::database(name, false));
    query.setForwardOnly(true);
    bool isDone = false;
    if (values.isEmpty()) {
        isDone = query.exec(statement); // PostgreSQL prepares no statement that makes tables
    } else if (query.prepare(statement)) {
        for (const QVariant& value : values) {
            // A text without characters is no missing value.
            query.addBindValue(
                value.type() == QVariant::String && value.isNull() ? QVariant(QLatin1String("")) : value);
        }
        isDone = query.exec();
    }
    if (!isDone) {
        return failure(message(QStringLiteral("the history"), query.lastError()));
    }
    return query;
}

Result<void> SqlConnection::begin()
{
    QSqlDatabase database = QSqlDatabase::database(name, false);
    return database.transaction() ? Result<void>()
                                  : failure(message(QStringLiteral("the history"), database.lastError()));
}

Result<void> SqlConnection::commit()
{
    QSqlDatabase database = QSqlDatabase::database(name, false);
    return database.commit() ? Result<void>() : failure(message(QStringLiteral("the history"), database.lastError()));
}

void SqlConnection::rollback()
{
    QSqlDatabase::database(name, false).rollback();
}

} // namespace scribo::line
