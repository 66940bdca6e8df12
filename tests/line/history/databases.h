#pragma once

#include "history/sqlconnection.h"

#include <QTemporaryDir>

#include <vector>

namespace scribo::test {

/// SQLite, and PostgreSQL where PGHOST and its like name a server, as pg_virtualenv sets them.
std::vector<line::SqlDialect> databases();

/// A database without tables.
class Database
{
public:
    explicit Database(line::SqlDialect dialect);

    /// As SqlConnection::open() takes it; through another port of this machine, if one is given.
    QString place(quint16 port = 0) const;

private:
    QTemporaryDir folder;
    QString name; ///< of PostgreSQL's; empty: SQLite
};

} // namespace scribo::test
