#include "fulldisk.h"
#include "station.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using testing::HasSubstr;
using testing::Not;

TEST(InspectOutput, JsonLinesStandAloneOnStandardOutput)
{
    const Station station;
    station.write("readings", "AB\n\"Ü\",1\n");
    station.writePicture("a.png");
    station.write("b.png", "x");
    const Station::Outcome outcome
        = station.run({"--json", "--region", "1,2,30,20", "--region", "40,2,30,20", "a.png", "b.png"});
    EXPECT_EQ(outcome.code, 2);
    const QList<QByteArray> lines = outcome.output.split('\n');
    ASSERT_EQ(lines.size(), 3);
    const QJsonObject picture = QJsonDocument::fromJson(lines[0]).object();
    EXPECT_EQ(picture["picture"].toString(), "a.png");
    EXPECT_EQ(picture["verdict"].toString(), "OK");
    ASSERT_EQ(picture["regions"].toArray().size(), 2);
    EXPECT_EQ(picture["regions"].toArray()[0].toObject()["text"].toString(), "AB");
    EXPECT_EQ(picture["regions"].toArray()[1].toObject()["text"].toString(), "\"Ü\",1");
    EXPECT_EQ(picture["regions"].toArray()[1].toObject()["rect"].toArray()[0].toDouble(), 40);
    EXPECT_EQ(QJsonDocument::fromJson(lines[1]).object()["verdict"].toString(), "FAULT");
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("2 pictures: 1 OK, 0 NG, 1 fault; median "));
}

TEST(InspectOutput, QuietLeavesTheSummary)
{
    const Station station;
    station.writePicture("a.png");
    const Station::Outcome outcome = station.run({"--quiet", "a.png"});
    EXPECT_EQ(outcome.output.count('\n'), 1);
    EXPECT_TRUE(outcome.output.startsWith("1 picture: 1 OK, 0 NG, 0 faults; median ")) << outcome.output.constData();
}

TEST(InspectOutput, RegionsFileJudgesEachRegionByItsOwnReference)
{
    const Station station;
    station.write("readings", "AB\nCD\nEF\n");
    station.writePicture("a.png");
    station.writePicture("b.png");
    station.write("r.json",
        R"({"a.png": [{"rect": [0, 0, 20, 20], "reference": "AB"}, {"rect": [20, 0, 20, 20], "reference": "CD"}],
            "b.png": [{"rect": [0, 0, 20, 20], "reference": "XX"}]})");
    const Station::Outcome outcome = station.run({"--regions", "r.json", "--compare", "fixed", "--records", "r.jsonl",
        "--records", "r.csv", "--overlay", "ov", "a.png", "b.png"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("2 pictures: 1 OK, 1 NG, 0 faults"));
    EXPECT_EQ(station.read("r.jsonl").count('\n'), 3);
    EXPECT_EQ(station.read("r.csv").count('\n'), 4);
    EXPECT_THAT(station.read("r.csv").toStdString(), HasSubstr("b.png,0,NG,EF,2,\"[[0,0,20,20]]\",[0.5],\"[\"\"EF"));
    const QImage good(station.path("ov/a.png"));
    const QImage bad(station.path("ov/b.png"));
    EXPECT_EQ(good.size(), QSize(100, 50));
    EXPECT_EQ(good.pixelColor(30, 10), QColor(Qt::green));
    EXPECT_EQ(good.pixelColor(60, 10), QColor(128, 128, 128));
    EXPECT_EQ(bad.pixelColor(10, 10), QColor(Qt::red));
}

TEST(InspectOutput, UnwritableOutputsAreNamedBeforeAnythingIsInspected)
{
    const Station station;
    station.writePicture("a.png");
    const auto refused = [&](const QStringList& arguments, const char* error) {
        const Station::Outcome outcome = station.run(arguments + QStringList("a.png"));
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, QByteArray("scribo-inspect: ") + error + '\n');
    };
    refused({"--records", "/proc/none/r.csv"}, "/proc/none/r.csv: cannot be written: No such file or directory");
    refused({"--overlay", "/dev/null/ov"}, "/dev/null/ov: the folder cannot be made");
    refused({"--archive", "/dev/null/ar", "--save", "ok"}, "/dev/null/ar: the folder cannot be made");
    refused({"--log", "/proc/none/log"}, "/proc/none/log: cannot be written: No such file or directory");
}

TEST(InspectOutput, AFullDiskIsAFaultAndTheRestIsStillInspected)
{
    const Station station;
    station.writePicture("a.png");
    station.writePicture("b.png");
    ASSERT_TRUE(hasFullDevice());
    ASSERT_TRUE(QFile::link("/dev/full", station.path("full.jsonl")));
    const Station::Outcome outcome = station.run({"--records", "full.jsonl", "--records", "r.jsonl", "a.png", "b.png"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("full.jsonl: cannot be written: No space left on device"));
    EXPECT_EQ(station.read("r.jsonl").count('\n'), 2);
}

TEST(InspectOutput, AFullDiskLeavesEarlierOverlaysAndSettings)
{
    const Station station;
    station.writePicture("a.png");
    station.write("ov/a.png", "old");
    station.write("s.json", "old");
    Station::Outcome outcome;
    {
        const FullDisk full;
        outcome = station.run({"--log", "/dev/null", "--overlay", "ov", "--save-settings", "s.json", "a.png"});
    }
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("/ov/a.png: cannot be written: "));
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("/s.json: cannot be written: "));
    EXPECT_EQ(station.read("ov/a.png"), "old");
    EXPECT_EQ(station.read("s.json"), "old");
}

TEST(InspectOutput, AStandardOutputThatTakesNothingIsAFault)
{
    const Station station;
    station.writePicture("a.png");
    ASSERT_TRUE(hasFullDevice());
    for (const QStringList& arguments : {QStringList{"--help"}, QStringList{"--version"}, QStringList{"--list-models"},
             QStringList{"--list-params"}, QStringList{"a.png"}, QStringList{"--json", "a.png"}}) {
        const Station::Outcome outcome = station.run(arguments, {}, "/dev/full");
        EXPECT_EQ(outcome.code, 2) << arguments.first().toStdString();
        EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("scribo-inspect: standard output cannot be written\n"));
    }
}

TEST(InspectOutput, TheLogMayGoToADevice)
{
    const Station station;
    station.writePicture("a.png");
    for (const char* const device : {"/dev/null", "/dev/stderr"}) {
        const Station::Outcome outcome = station.run({"--log", device, "a.png"});
        EXPECT_EQ(outcome.code, 0) << device;
        EXPECT_THAT(outcome.errors.toStdString(), Not(HasSubstr("seek"))) << device;
    }
}

TEST(InspectOutput, TheLogStaysOutOfTheTable)
{
    const Station station;
    station.writePicture("a.png");
    EXPECT_EQ(station.run({"--log", "own.log", "a.png"}).errors, "");
    EXPECT_TRUE(QFile::exists(station.path("own.log")));
}
