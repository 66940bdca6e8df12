#include "line/history/databases.h"

#include <QAtomicInt>
#include <QCoreApplication>

#include <gtest/gtest.h>

namespace scribo::test {

namespace {

QString variable(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}

QString placeOf(const QString& database, quint16 port)
{
    return QStringLiteral("postgresql://%1:%2@127.0.0.1:%3/%4")
        .arg(variable("PGUSER"), variable("PGPASSWORD"), port > 0 ? QString::number(port) : variable("PGPORT"),
            database);
}

} // namespace

std::vector<line::SqlDialect> databases()
{
    if (variable("PGPORT").isEmpty()) {
        return {line::SqlDialect::sqlite};
    }
    return {line::SqlDialect::sqlite, line::SqlDialect::postgresql};
}

Database::Database(line::SqlDialect dialect)
{
    if (dialect == line::SqlDialect::sqlite) {
        return;
    }
    static QAtomicInt count;
    name = QStringLiteral("scribo_%1_%2").arg(QCoreApplication::applicationPid()).arg(++count);
    auto server = line::SqlConnection::open(placeOf(QStringLiteral("postgres"), 0));
    EXPECT_TRUE(server) << server.error().message;
    EXPECT_TRUE(server && server->run(QStringLiteral("CREATE DATABASE ") + name));
}

QString Database::place(quint16 port) const
{
    return name.isEmpty() ? folder.filePath(QStringLiteral("history.sqlite")) : placeOf(name, port);
}

} // namespace scribo::test
