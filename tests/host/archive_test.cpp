#include "files/archiveaccount.h"
#include "station.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>

using namespace scribo::host;

using testing::HasSubstr;

namespace {

RegionResult region(bool isOk, Archiving archiving)
{
    RegionResult result;
    result.isOk = isOk;
    result.archiving = archiving;
    return result;
}

} // namespace

TEST(ArchiveAccount, CountsItsOwnPicturesByVerdict)
{
    const Station station;
    station.write("AISavePic/m_C1_T1/OK/old.bmp", "x");
    station.write("AISavePic/m_C9_T9/OK/other.bmp", "x");
    ArchiveAccount account(station.path(""), {}, "C1_T1");
    for (int i = 0; i < 3; ++i) {
        account.add(region(true, Archiving::queued));
    }
    account.add(region(false, Archiving::queued));
    account.add(region(false, Archiving::capped));
    account.add(region(false, Archiving::off));
    station.write("AISavePic/m_C1_T1/OK/a.bmp", "x");
    station.write("AISavePic/m_C1_T1/OK/b.bmp", "x");
    station.write("AISavePic/m_C1_T1/OK/b.bmp.part", "x");
    station.write("AISavePic/m_C1_T1/NG/ng/c.bmp", "x");
    station.write("AISavePic/m_C9_T9/OK/d.bmp", "x");
    EXPECT_EQ(account.finish().summary(), "archive: 3 saved (2 OK, 1 NG), 1 dropped by the cap, 1 lost");
}

TEST(ArchiveAccount, CountsAllDaysOfARemovableDisk)
{
    const Station station;
    ArchiveAccount account({}, station.path(""), "C1_T1");
    account.add(region(true, Archiving::queued));
    account.add(region(true, Archiving::queued));
    station.write("AISavePic_20261121/m_C1_T1/OK/a.bmp", "x");
    station.write("AISavePic_20261122/m_C1_T1/OK/b.bmp", "x");
    EXPECT_EQ(account.finish().summary(), "archive: 2 saved (2 OK, 0 NG), 0 dropped by the cap, 0 lost");
}

TEST(InspectArchive, SavesWhatIsAskedForAndSaysSo)
{
    const Station station;
    station.write("readings", "AB\nCD\nAB\n");
    for (const char* const name : {"a.png", "b.png", "c.png"}) {
        station.writePicture(name);
    }
    const QStringList judged = {"--compare", "fixed", "--reference", "AB", "--identity", "C2_T3"};
    Station::Outcome outcome
        = station.run(judged + QStringList{"--archive", "ar", "--save", "ok,ng", "a.png", "b.png", "c.png"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(
        outcome.output.toStdString(), HasSubstr("archive: 3 saved (2 OK, 1 NG), 0 dropped by the cap, 0 lost\n"));
    EXPECT_EQ(QDir(station.path("ar/AISavePic/fake_C2_T3/OK")).entryList(QDir::Files).size(), 2);

    outcome = station.run(judged + QStringList{"--archive", "ng", "--save", "ng", "a.png", "b.png", "c.png"});
    EXPECT_THAT(
        outcome.output.toStdString(), HasSubstr("archive: 1 saved (0 OK, 1 NG), 0 dropped by the cap, 0 lost\n"));
}

TEST(InspectArchive, TellsTheCapFromALoss)
{
    const Station station;
    station.write("readings", "AB\nAB\nAB\n(lost)\nAB\n");
    for (const char* const name : {"a.png", "b.png", "c.png"}) {
        station.writePicture(name);
    }
    Station::Outcome outcome
        = station.run({"--archive", "ar", "--save", "ok", "--set", "5=0:2", "a.png", "b.png", "c.png"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(
        outcome.output.toStdString(), HasSubstr("archive: 2 saved (2 OK, 0 NG), 1 dropped by the cap, 0 lost\n"));

    station.write("readings", "AB\n(lost)\nAB\n");
    outcome = station.run({"--removable", "disk", "--save", "ok", "--set", "5=0:1", "a.png", "b.png", "c.png"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(
        outcome.output.toStdString(), HasSubstr("archive: 2 saved (2 OK, 0 NG), 0 dropped by the cap, 1 lost\n"));
    EXPECT_EQ(outcome.errors, "scribo-inspect: 1 picture did not reach the archive\n");
}

TEST(InspectArchive, SavesNothingUnlessAsked)
{
    const Station station;
    station.writePicture("a.png");
    const QStringList before = QDir(station.path("")).entryList(QDir::AllDirs);
    EXPECT_EQ(station.run({"--set", "4=on,on", "a.png"}).code, 0);
    EXPECT_EQ(QDir(station.path("")).entryList(QDir::AllDirs), before);
}
