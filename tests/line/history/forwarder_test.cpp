#include "history/historyforwarder.h"

#include "history/historytables.h"
#include "history/historywriter.h"
#include "line/history/databases.h"
#include "line/history/somerows.h"
#include "line/tcpproxy.h"

#include <QTest>

#include <gmock/gmock.h>

namespace scribo::line {
namespace {

using test::row;

/// The stations of a plant and its database. Runs under pg_virtualenv.
class Plant : public testing::Test
{
protected:
    /// A station's own history.
    struct Station
    {
        test::Database database{SqlDialect::sqlite};
        std::unique_ptr<SqlConnection> connection;

        Station()
        {
            connection = std::make_unique<SqlConnection>(*SqlConnection::open(database.place()));
            EXPECT_TRUE(makeTables(*connection));
        }
        void add(const QString& name, int from, int to)
        {
            QList<HistoryRow> rows;
            for (int i = from; i <= to; ++i) {
                rows.append(row(i, i % 10 != 0, name));
            }
            EXPECT_TRUE(addMissingRows(*connection, rows));
        }
    };

    qint64 count(const QString& what)
    {
        auto connection = SqlConnection::open(plant.place());
        if (!connection) {
            return -1;
        }
        auto query = connection->run(QStringLiteral("SELECT count(*) FROM ") + what);
        return query && query->next() ? query->value(0).toLongLong() : -1;
    }

    bool comesTo(const QString& what, qint64 wanted)
    {
        return QTest::qWaitFor([&] { return count(what) == wanted; }, 10000);
    }

    test::Database plant{SqlDialect::postgresql};
};

TEST_F(Plant, GetsWhatItsStationsRead)
{
    Station stations[3];
    std::vector<std::unique_ptr<HistoryForwarder>> forwarders;
    for (int i = 0; i < 3; ++i) {
        const QString name = QStringLiteral("S%1").arg(i);
        stations[i].add(name, 1, 1200);
        forwarders.push_back(std::make_unique<HistoryForwarder>(stations[i].database.place(), plant.place(), name));
    }
    EXPECT_TRUE(comesTo(QStringLiteral("inspection"), 3600));
    EXPECT_TRUE(comesTo(QStringLiteral("reading"), 7200));
    stations[1].add(QStringLiteral("S1"), 1201, 1300);
    EXPECT_TRUE(comesTo(QStringLiteral("inspection WHERE station = 'S1'"), 1300));
    for (const auto& forwarder : forwarders) {
        EXPECT_EQ(forwarder->fault().toStdString(), "");
    }
}

TEST_F(Plant, GetsNothingTwiceWhenAStationStartsAgain)
{
    Station station;
    station.add(QStringLiteral("S1"), 1, 600);
    {
        const HistoryForwarder forwarder(station.database.place(), plant.place(), QStringLiteral("S1"));
        ASSERT_TRUE(comesTo(QStringLiteral("inspection"), 600));
    }
    // As when the power fails between the plant's commit and the station's note of it.
    ASSERT_TRUE(station.connection->run(QStringLiteral("UPDATE forwarding SET sequence = 100")));
    station.add(QStringLiteral("S1"), 601, 700);
    const HistoryForwarder forwarder(station.database.place(), plant.place(), QStringLiteral("S1"));
    EXPECT_TRUE(comesTo(QStringLiteral("inspection"), 700));
    EXPECT_EQ(count(QStringLiteral("reading")), 1400);
    EXPECT_EQ(forwarder.fault().toStdString(), "");
}

TEST_F(Plant, GetsWhatHappenedDuringAnOutage)
{
    Station station;
    test::TcpProxy proxy(static_cast<quint16>(qgetenv("PGPORT").toUInt()));
    station.add(QStringLiteral("S1"), 1, 10);
    const HistoryForwarder forwarder(station.database.place(), plant.place(proxy.port()), QStringLiteral("S1"));
    ASSERT_TRUE(comesTo(QStringLiteral("inspection"), 10));

    proxy.cut();
    station.add(QStringLiteral("S1"), 11, 800);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !forwarder.fault().isEmpty(); }, 15000));
    EXPECT_THAT(forwarder.fault().toStdString(), testing::StartsWith("the plant's database is behind: "));
    EXPECT_EQ(count(QStringLiteral("inspection")), 10);

    proxy.mend();
    EXPECT_TRUE(comesTo(QStringLiteral("inspection"), 800));
    EXPECT_TRUE(QTest::qWaitFor([&] { return forwarder.fault().isEmpty(); }, 5000));
}

TEST_F(Plant, SaysWhenTwoStationsHaveOneName)
{
    Station first;
    first.add(QStringLiteral("S1"), 1, 5);
    const HistoryForwarder one(first.database.place(), plant.place(), QStringLiteral("S1"));
    ASSERT_TRUE(comesTo(QStringLiteral("inspection"), 5));

    Station second;
    HistoryRow other = row(3);
    other.job = QStringLiteral("can");
    ASSERT_TRUE(addMissingRows(*second.connection, {other}));
    const HistoryForwarder two(second.database.place(), plant.place(), QStringLiteral("S1"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !two.fault().isEmpty(); }, 15000));
    EXPECT_EQ(two.fault(),
        QStringLiteral("the plant's database is behind: it holds another item 3 of station S1: do two stations have "
                       "this name?"));
    EXPECT_EQ(readForwarded(*second.connection)->sequence, 0);
}

TEST_F(Plant, GetsChangesToo)
{
    Station station;
    HistoryChange change;
    change.at = QDateTime(QDate(2026, 11, 21), QTime(6, 0), Qt::UTC);
    change.what = QStringLiteral("reference");
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(insertChange(*station.connection, QStringLiteral("S1"), change));
    }
    const HistoryForwarder forwarder(station.database.place(), plant.place(), QStringLiteral("S1"));
    EXPECT_TRUE(comesTo(QStringLiteral("change"), 3));
    ASSERT_TRUE(insertChange(*station.connection, QStringLiteral("S1"), change));
    EXPECT_TRUE(comesTo(QStringLiteral("change"), 4));
}

} // namespace
} // namespace scribo::line
