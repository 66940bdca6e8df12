#include "station.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>

using testing::HasSubstr;

// The command over the real processor and the shipped model, as in the demo.

namespace {

const QString samples = QStringLiteral(SCRIBO_SOURCE_FOLDER "/samples");

Station::Outcome runReal(const Station& station, const QStringList& arguments)
{
    return station.run(QStringList{"--plugin", SCRIBO_PLUGIN_FILE, "--work", SCRIBO_WORK_FOLDER} + arguments);
}

} // namespace

TEST(InspectSamples, OnlyTheWrongPrintsAreNg)
{
    const Station station;
    const Station::Outcome outcome = runReal(station,
        {"--json", "--regions", samples + "/jobs.json", "--compare", "fixed", "--archive", "ar", "--save", "ok,ng",
            "--overlay", "ov", samples});
    EXPECT_EQ(outcome.code, 1) << outcome.errors.constData();
    const QList<QByteArray> lines = outcome.output.trimmed().split('\n');
    EXPECT_EQ(lines.size(), 13);
    for (const QByteArray& line : lines) {
        const QJsonObject picture = QJsonDocument::fromJson(line).object();
        const QString name = picture["picture"].toString();
        EXPECT_EQ(picture["verdict"].toString(), name.contains("wrong") ? "NG" : "OK") << line.constData();
    }
    EXPECT_THAT(
        outcome.errors.toStdString(), HasSubstr("archive: 15 saved (13 OK, 2 NG), 0 dropped by the cap, 0 lost\n"));
    EXPECT_EQ(QImage(station.path("ov/08_label.png")).size(), QImage(samples + "/08_label.png").size());
    EXPECT_NE(QImage(station.path("ov/08_label.png")), QImage(samples + "/08_label.png"));
}

TEST(InspectSamples, AutomaticComparisonLearnsFromPictureToPicture)
{
    const Station station;
    const QString picture = samples + "/01_carton.png";
    QStringList pictures;
    for (int i = 0; i < 7; ++i) {
        pictures.append(picture);
    }
    const Station::Outcome outcome
        = runReal(station, QStringList{"--quiet", "--compare", "auto", "--region", "141,201,331,58"} + pictures);
    EXPECT_EQ(outcome.code, 1) << outcome.errors.constData();
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("7 pictures: 1 OK, 6 NG, 0 faults"));
}

TEST(InspectSamples, AModelThatCannotBeLoadedIsNamedOnce)
{
    const Station station;
    station.write("model/ocr_a_p1_1.json", "{");
    const Station::Outcome outcome
        = station.run({"--plugin", SCRIBO_PLUGIN_FILE, samples + "/01_carton.png", samples + "/02_can.png"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors.count('\n'), 1) << outcome.errors.constData();
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("01_carton.png: not read: "));
    EXPECT_THAT(outcome.output.toStdString(), HasSubstr("2 pictures: 0 OK, 2 NG, 0 faults"));
}

TEST(InspectSamples, TheProcessorsLogsGoToTheFileAndToTheTerminalOnRequest)
{
    const Station station;
    const Station::Outcome quiet = runReal(station, {"--log", "own.log", samples + "/01_carton.png"});
    EXPECT_EQ(quiet.errors, "");
    EXPECT_THAT(station.read("own.log").toStdString(), HasSubstr(" info ocranalyser.cpp:"));
    EXPECT_THAT(station.read("own.log").toStdString(), HasSubstr(" info ocrdetector.cpp:"));
    const Station::Outcome verbose = runReal(station, {"-v", samples + "/01_carton.png"});
    EXPECT_THAT(verbose.errors.toStdString(), HasSubstr(" info ocrdetector.cpp:"));
    const Station::Outcome device = runReal(station, {"--log", "/dev/stderr", samples + "/01_carton.png"});
    EXPECT_THAT(device.errors.toStdString(), HasSubstr(" info ocrdetector.cpp:"));
}
