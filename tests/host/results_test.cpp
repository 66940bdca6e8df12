#include "errortext.h"
#include "files/overlayfolder.h"
#include "files/recordfile.h"
#include "fulldisk.h"
#include "station.h"
#include "terminal/resulttable.h"
#include "terminal/terminalcolumns.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace scribo::host;

namespace {

InspectionResult sampleInspection()
{
    RegionResult region;
    region.rect = QRectF(1, 2, 30, 20);
    region.time = QDateTime(QDate(2026, 11, 21), QTime(8, 30, 5, 7), Qt::UTC);
    region.text = "A,\"Ü\n";
    region.count = 5;
    region.milliseconds = 1.25;
    region.comparison = Comparison::fixed;
    region.reference = "X";
    region.ngLines = {{QRect(1, 2, 3, 4), 0.5, "A,\"Ü\n"}};
    InspectionResult result;
    result.milliseconds = 1.25;
    result.regions = {region};
    return result;
}

const QString pictureName = QStringLiteral("a,b \"c\".png");

QByteArray recordsOf(const Station& station, const QString& name)
{
    RecordFile file;
    EXPECT_EQ(errorText(file.open(station.path(name))), "");
    EXPECT_EQ(errorText(file.write(pictureName, sampleInspection())), "");
    return station.read(name);
}

} // namespace

TEST(RecordFile, QuotesCsvAsItMust)
{
    const Station station;
    EXPECT_EQ(recordsOf(station, "r.CSV"),
        "time,picture,index,verdict,text,count,ng_boxes,ng_scores,ng_types\n"
        "2026-11-21T08:30:05.007Z,\"a,b \"\"c\"\".png\",0,NG,\"A,\"\"Ü\n\",5,\"[[1,2,3,4]]\",[0.5],"
        "\"[\"\"A,\\\"\"Ü\\n\"\"]\"\n");
}

TEST(RecordFile, WritesOneJsonObjectALine)
{
    const Station station;
    EXPECT_EQ(recordsOf(station, "r.jsonl"),
        "{\"count\":5,\"index\":0,\"ng_boxes\":[[1,2,3,4]],\"ng_scores\":[0.5],\"ng_types\":[\"A,\\\"Ü\\n\"],"
        "\"picture\":\"a,b \\\"c\\\".png\",\"text\":\"A,\\\"Ü\\n\",\"time\":\"2026-11-21T08:30:05.007Z\","
        "\"verdict\":\"NG\"}\n");
}

TEST(RecordFile, ReplacesAnEarlierFileAndNamesWhatItCannotWrite)
{
    const Station station;
    station.write("r.jsonl", "old\n");
    EXPECT_FALSE(recordsOf(station, "r.jsonl").contains("old"));
    RecordFile file;
    EXPECT_EQ(
        errorText(file.open("/proc/none/r.csv")), "/proc/none/r.csv: cannot be written: No such file or directory");
    EXPECT_EQ(
        errorText(file.open(station.path("r.txt"))), station.path("r.txt") + ": records go to a .jsonl or a .csv file");
}

TEST(RecordFile, NoticesAFullDisk)
{
    const Station station;
    ASSERT_TRUE(hasFullDevice());
    ASSERT_TRUE(QFile::link("/dev/full", station.path("full.jsonl")));
    RecordFile file;
    ASSERT_EQ(errorText(file.open(station.path("full.jsonl"))), "");
    EXPECT_EQ(errorText(file.write(pictureName, sampleInspection())),
        station.path("full.jsonl") + ": cannot be written: No space left on device");
}

TEST(ResultTable, ShowsARowForEachRegionAndKeepsEveryRowOneLine)
{
    PictureResult result{pictureName, sampleInspection()};
    RegionResult second;
    second.index = 1;
    second.isOk = true;
    second.text = "REV(3)";
    second.count = 6;
    second.milliseconds = 12;
    result.inspection->regions.append(second);
    const ResultTable table({result.picture});
    EXPECT_EQ(table.header(), "picture      text                  count  verdict       ms\n");
    EXPECT_EQ(table.rows(result),
        QString::fromUtf8("a,b \"c\".png  A,\"Ü\uFFFD                     5  NG           1.3\n"
                          "             REV(3)                    6  OK          12.0\n"));
}

TEST(ResultTable, CountsColumnsAsATerminalDoes)
{
    EXPECT_EQ(terminalColumns(QString()), 0);
    EXPECT_EQ(terminalColumns(QStringLiteral("LOT 7")), 5);
    EXPECT_EQ(terminalColumns(QString::fromUtf8("\xe7\x94\x9f\xe4\xba\xa7")), 4); // two Chinese characters
    EXPECT_EQ(terminalColumns(QString::fromUtf8("e\xcc\x81")), 1); // an accent of its own
    EXPECT_EQ(terminalColumns(QString::fromUtf8("\xf0\xa0\x80\x80")), 2); // beyond the basic plane
    EXPECT_EQ(terminalColumns(QString(QChar(QChar::ReplacementCharacter))), 1);
    EXPECT_EQ(paddedTo(6, QString::fromUtf8("\xe7\x94\x9f")), QString::fromUtf8("\xe7\x94\x9f    "));
    EXPECT_EQ(paddedTo(1, QStringLiteral("long")), QStringLiteral("long"));
}

TEST(ResultTable, SaysWhatWasNotRead)
{
    PictureResult result{"a.png", sampleInspection()};
    RegionResult& region = result.inspection->regions[0];
    region.text.clear();
    region.count = -1;
    region.ngLines[0].score = -1;
    EXPECT_EQ(ResultTable({}).rows(result), "a.png    (not read)                -  NG           1.3\n");
    EXPECT_EQ(unreadMessage(region), "A,\"Ü\n");
    result.inspection = scribo::failure("is damaged");
    EXPECT_EQ(ResultTable({}).rows(result), "a.png                                 fault           \n");
}

TEST(ResultTable, GivesProgramsOneObjectAPicture)
{
    EXPECT_EQ(toJsonLine({pictureName, sampleInspection()}),
        "{\"milliseconds\":1.25,\"picture\":\"a,b \\\"c\\\".png\",\"regions\":[{\"compare\":\"fixed\",\"count\":5,"
        "\"index\":0,\"milliseconds\":1.25,\"ng\":[{\"box\":[1,2,3,4],\"score\":0.5,\"text\":\"A,\\\"Ü\\n\"}],"
        "\"rect\":[1,2,30,20],\"reference\":\"X\",\"text\":\"A,\\\"Ü\\n\",\"verdict\":\"NG\"}],\"verdict\":\"NG\"}");
    EXPECT_EQ(toJsonLine({"a.png", scribo::failure("is empty")}),
        "{\"fault\":\"is empty\",\"picture\":\"a.png\",\"verdict\":\"FAULT\"}");
}

TEST(Totals, CountsVerdictsAndTakesTheMiddleTime)
{
    Totals totals;
    EXPECT_EQ(totals.summary(), "0 pictures: 0 OK, 0 NG, 0 faults; median - ms");
    for (const double milliseconds : {9.0, 1.0, 2.0, 4.0}) {
        InspectionResult result;
        result.milliseconds = milliseconds;
        result.isOk = milliseconds != 9.0;
        totals.add({"a.png", result});
    }
    totals.add({"b.png", scribo::failure("is empty")});
    EXPECT_EQ(totals.summary(), "5 pictures: 3 OK, 1 NG, 1 fault; median 3.0 ms");
}

TEST(OverlayFolder, DoesNotReplaceThePicturesThemselves)
{
    Station station;
    OverlayFolder overlays;
    ASSERT_TRUE(QDir().mkpath(station.path("line")));
    const QList<PictureFile> pictures = {{"line/a.png", station.path("line/a.png"), {}}};
    EXPECT_EQ(errorText(overlays.open(station.path("line/../line/"), pictures)),
        station.path("line/../line/") + ": holds pictures to inspect, overlays could replace them");
    EXPECT_EQ(errorText(overlays.open(station.path("line/overlays"), pictures)), "");
}

TEST(OverlayFolder, KeepsPicturesOfOneNameApart)
{
    const Station station;
    OverlayFolder overlays;
    ASSERT_EQ(errorText(overlays.open(station.path("a/b"), {})), "");
    const QImage image(4, 4, QImage::Format_RGB32);
    EXPECT_EQ(errorText(overlays.write("left/x.1.png", image)), "");
    EXPECT_EQ(errorText(overlays.write("right/x.1.jpg", image)), "");
    EXPECT_EQ(QImage(station.path("a/b/x.1.png")).size(), QSize(4, 4));
    EXPECT_EQ(QImage(station.path("a/b/x.1_2.png")).size(), QSize(4, 4));
    EXPECT_EQ(errorText(overlays.open("/dev/null/x", {})), "/dev/null/x: the folder cannot be made");
}
