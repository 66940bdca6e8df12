#include "history/historywriter.h"

#include "history/historyforwarder.h"
#include "history/historytables.h"
#include "line/history/databases.h"
#include "line/history/somerows.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTest>

#include <gmock/gmock.h>

namespace scribo::line {
namespace {

using test::numbers;
using test::verdict;
using testing::ElementsAre;

class Writer : public testing::Test
{
protected:
    Writer()
    {
        options.path = folder.filePath(QStringLiteral("history.sqlite"));
        options.station = QStringLiteral("S1");
        options.now = [this] { return now; };
    }

    QList<HistoryRow> rows()
    {
        auto connection = SqlConnection::openToRead(options.path);
        EXPECT_TRUE(connection) << connection.error().message;
        HistoryFilter all;
        all.order = HistoryFilter::Order::bySequence;
        return selectRows(*connection, all).value_or(QList<HistoryRow>());
    }

    QTemporaryDir folder;
    HistoryOptions options;
    QDateTime now{QDate(2026, 11, 21), QTime(7, 0), Qt::UTC};
};

TEST_F(Writer, WritesEveryVerdictOnce)
{
    HistoryWriter writer(options, nullptr);
    ASSERT_TRUE(writer.start());
    for (std::uint64_t i = 1; i <= 2500; ++i) {
        writer.deliver(verdict(i, i % 2 == 0));
    }
    ASSERT_TRUE(writer.flush());
    const auto written = rows();
    ASSERT_EQ(written.size(), 2500);
    EXPECT_EQ(written.last().sequence, 2500);
    EXPECT_FALSE(written.first().isOk);
    EXPECT_EQ(written.first().readings.at(0).text, QStringLiteral("LOT:A1"));
    EXPECT_EQ(writer.fault(), QString());
}

TEST_F(Writer, WritesWhatWaitsWhenItEnds)
{
    {
        HistoryWriter writer(options, nullptr);
        ASSERT_TRUE(writer.start());
        writer.deliver(verdict(1));
        writer.record({});
    }
    EXPECT_EQ(rows().size(), 1);
    auto connection = SqlConnection::openToRead(options.path);
    EXPECT_EQ(selectChanges(*connection, QStringLiteral("S1"))->size(), 1);
}

TEST_F(Writer, CannotStartWhereNoFileCanBe)
{
    options.path = folder.filePath(QStringLiteral("missing/history.sqlite"));
    HistoryWriter writer(options, nullptr);
    const Result<void> started = writer.start();
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().message, options.path.toStdString() + ": unable to open database file");
}

TEST_F(Writer, KeepsItemsWhileAnotherHoldsTheFile)
{
    HistoryWriter writer(options, nullptr);
    ASSERT_TRUE(writer.start());
    auto other = SqlConnection::open(options.path);
    ASSERT_TRUE(other->run(QStringLiteral("BEGIN EXCLUSIVE")));
    writer.deliver(verdict(1));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !writer.fault().isEmpty(); }, 15000));
    EXPECT_EQ(writer.fault(), QStringLiteral("the history: database is locked"));
    ASSERT_TRUE(other->run(QStringLiteral("ROLLBACK")));
    ASSERT_TRUE(writer.flush());
    EXPECT_EQ(rows().size(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return writer.fault().isEmpty(); }, 5000));
}

TEST_F(Writer, SaysWhichItemsItHasLost)
{
    HistoryWriter writer(options, nullptr);
    for (int i = 1; i <= HistoryWriter::mostWaiting + 2; ++i) {
        writer.deliver(Verdict()); // it is not started, so all of them wait
    }
    EXPECT_EQ(writer.fault(), QStringLiteral("2 items are missing in the history"));
}

TEST_F(Writer, DoesNotWriteAnItemOverAnother)
{
    HistoryWriter writer(options, nullptr);
    ASSERT_TRUE(writer.start());
    writer.deliver(verdict(1));
    Verdict other = verdict(1);
    other.job = QStringLiteral("can");
    writer.deliver(other);
    writer.deliver(verdict(2));
    ASSERT_TRUE(writer.flush());
    EXPECT_THAT(numbers(rows()), ElementsAre(1, 2));
    EXPECT_EQ(writer.fault(), QStringLiteral("1 items are missing in the history"));
}

TEST_F(Writer, KeepsThePicturesThatAreWanted)
{
    const QString pictures = folder.filePath(QStringLiteral("pictures"));
    {
        PictureKeeper keeper(pictures, QStringLiteral("S1"), KeptPictures::ng);
        HistoryWriter writer(options, &keeper);
        ASSERT_TRUE(writer.start());
        writer.deliver(verdict(1, true));
        writer.deliver(verdict(2, false));
        Verdict without = verdict(3, false);
        without.picture.reset();
        writer.deliver(without);
        ASSERT_TRUE(writer.flush());
    }
    const auto written = rows();
    EXPECT_EQ(written.at(0).picture, QString());
    EXPECT_EQ(written.at(1).picture, QStringLiteral("2026-11-21/S1-0000000002.png"));
    EXPECT_EQ(written.at(2).picture, QString());
    const QImage picture(pictures + QLatin1Char('/') + written.at(1).picture);
    EXPECT_EQ(picture.size(), QSize(16, 8));
    EXPECT_EQ(picture.pixelColor(3, 3), QColor(200, 100, 50));
}

TEST(Pictures, ThatCannotBeWrittenAreAFault)
{
    QTemporaryDir folder;
    const QString blocked = folder.filePath(QStringLiteral("file"));
    QFile file(blocked);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    PictureKeeper keeper(blocked, QStringLiteral("S1"), KeptPictures::all);
    EXPECT_FALSE(keeper.keep(verdict(1)).isEmpty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !keeper.fault().isEmpty(); }, 5000));
    EXPECT_EQ(keeper.fault(), blocked + QStringLiteral(": pictures cannot be written"));
}

TEST(Pictures, GoWithTheirFolder)
{
    QTemporaryDir folder;
    const QString day = folder.filePath(QStringLiteral("2026-11-21"));
    QStringList files;
    {
        PictureKeeper keeper(folder.path(), QStringLiteral("S1"), KeptPictures::all);
        files = QStringList{keeper.keep(verdict(1)), keeper.keep(verdict(2))};
    }
    EXPECT_EQ(QDir(day).entryList(QDir::Files).size(), 2);
    PictureKeeper keeper(folder.path(), QStringLiteral("S1"), KeptPictures::all);
    keeper.discard({files[0]});
    EXPECT_EQ(QDir(day).entryList(QDir::Files).size(), 1);
    keeper.discard({files[1], QStringLiteral("2020-01-01/none.png")});
    EXPECT_FALSE(QFile::exists(day));
}

class OldItems : public testing::Test
{
protected:
    void SetUp() override
    {
        connection = std::make_unique<SqlConnection>(*SqlConnection::open(database.place()));
        ASSERT_TRUE(makeTables(*connection));
        QList<HistoryRow> rows;
        for (int i = 1; i <= 10; ++i) {
            rows.append(test::row(i));
            rows.last().takenAt = start.addDays(i);
            rows.last().picture = QStringLiteral("day/%1.png").arg(i);
        }
        ASSERT_TRUE(addMissingRows(*connection, rows));
    }

    QList<qint64> left()
    {
        HistoryFilter all;
        all.order = HistoryFilter::Order::bySequence;
        return numbers(*selectRows(*connection, all));
    }

    qint64 readings()
    {
        auto query = connection->run(QStringLiteral("SELECT count(*) FROM reading"));
        query->next();
        return query->value(0).toLongLong();
    }

    static constexpr qint64 all = 1000;
    const QDateTime start{QDate(2026, 11, 1), QTime(0, 0), Qt::UTC};
    test::Database database{SqlDialect::sqlite};
    std::unique_ptr<SqlConnection> connection;
};

TEST_F(OldItems, GoWithTheirReadings)
{
    const auto deleted = deleteOldRows(*connection, {3, 0}, start.addDays(10), all, 100);
    ASSERT_TRUE(deleted) << deleted.error().message;
    EXPECT_EQ(deleted->items, 6);
    EXPECT_EQ(deleted->pictures.first(), QStringLiteral("day/1.png"));
    EXPECT_THAT(left(), ElementsAre(7, 8, 9, 10));
    EXPECT_EQ(readings(), 8);
}

TEST_F(OldItems, GoSomeAtATime)
{
    EXPECT_EQ(deleteOldRows(*connection, {3, 0}, start.addDays(10), all, 4)->items, 4);
    EXPECT_EQ(deleteOldRows(*connection, {3, 0}, start.addDays(10), all, 4)->items, 2);
    EXPECT_EQ(deleteOldRows(*connection, {3, 0}, start.addDays(10), all, 4)->items, 0);
}

TEST_F(OldItems, StayUntilThePlantHasThem)
{
    EXPECT_EQ(deleteOldRows(*connection, {3, 0}, start.addDays(10), 2, 100)->items, 2);
    EXPECT_THAT(left(), ElementsAre(3, 4, 5, 6, 7, 8, 9, 10));
}

TEST_F(OldItems, StayWithoutALimit)
{
    EXPECT_EQ(deleteOldRows(*connection, {}, start.addYears(10), all, 100)->items, 0);
    EXPECT_EQ(left().size(), 10);
}

TEST_F(OldItems, GoWhileTheFileIsTooLarge)
{
    QList<HistoryRow> rows;
    for (int i = 11; i <= 3000; ++i) {
        rows.append(test::row(i));
        rows.last().takenAt = start.addDays(20);
        rows.last().reason = QString(1000, QLatin1Char('x'));
    }
    ASSERT_TRUE(addMissingRows(*connection, rows));
    int deleted = 0;
    for (int i = 0; i < 100; ++i) {
        const auto part = deleteOldRows(*connection, {0, 2}, start, all * 1000, 200);
        ASSERT_TRUE(part) << part.error().message;
        deleted += part->items;
        if (part->items == 0) {
            break;
        }
    }
    EXPECT_GT(deleted, 1000);
    EXPECT_LT(deleted, 3000);
    EXPECT_EQ(left().last(), 3000) << "the newest stay";
}

TEST_F(Writer, DeletesWhatIsTooOld)
{
    options.retention.days = 5;
    now = QDateTime(QDate(2026, 11, 21), QTime(7, 0), Qt::UTC).addDays(30);
    HistoryWriter writer(options, nullptr);
    ASSERT_TRUE(writer.start());
    writer.deliver(verdict(1));
    ASSERT_TRUE(writer.flush());
    EXPECT_TRUE(QTest::qWaitFor([this] { return rows().isEmpty(); }, 10000));
}

} // namespace
} // namespace scribo::line
