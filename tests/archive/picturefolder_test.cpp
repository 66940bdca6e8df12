#include "picturearchive.h"

#include "pluginsettings.h"
#include "scriptedtool.h"
#include "testpictures.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

namespace {

const QString model = QStringLiteral("tavoro_p1_1");
const QString toolId = QStringLiteral("C1_T1");

QImage greyConverter(const cv::Mat& mat)
{
    return QImage(mat.data, mat.cols, mat.rows, static_cast<int>(mat.step), QImage::Format_Grayscale8).copy();
}

class PictureFolders : public testing::Test
{
protected:
    PictureFolders() { tool.directory = directory.path() + QStringLiteral("/tool/"); }

    QString modelFolder() const { return tool.directory + QStringLiteral("AISavePic/tavoro_p1_1_C1_T1/"); }
    QString folderOf(const SOrgAI_ResInfo& record) { return archive.pictureFolder(&tool, model, record, toolId); }
    void saveAll(bool on) { settings.saveSwitch[0] = settings.saveSwitch[1] = on; }

    /// Saves a picture and waits until it is on the disk.
    void save(const SOrgAI_ResInfo& record, int number = 1)
    {
        archive.savePicture(&tool, model, record, number, numberedPicture(number));
        QThreadPool::globalInstance()->waitForDone();
    }

    QTemporaryDir directory;
    ScriptedTool tool;
    PluginSettings settings;
    QDateTime now{QDate(2021, 11, 12), QTime(9, 43, 23, 421)};
    QStringList devices{QStringLiteral("/dev/sda")};
    PictureArchive archive{settings, greyConverter,
        MountTable(directory.filePath(QStringLiteral("mounts")),
            [this](const QString& name) { return devices.contains(name); }),
        [this] { return now; }};
};

} // namespace

// Where a picture goes

TEST_F(PictureFolders, NgPicturesOfAllClassesShareOneFolder)
{
    saveAll(true);
    for (const int classIndex : {0, 2, 99, -2}) {
        EXPECT_EQ(folderOf(ngRecord(classIndex)), modelFolder() + "NG/ng");
    }
}

TEST_F(PictureFolders, NgPicturesWithoutAClassHaveAFolderOfTheirOwn)
{
    saveAll(true);
    EXPECT_EQ(folderOf(ngRecord(-1)), modelFolder() + "NG/ng_notype");
}

TEST_F(PictureFolders, TheOkFolderEndsWithASeparator)
{
    saveAll(true);
    EXPECT_EQ(folderOf(okRecord()), modelFolder() + "OK/");
}

TEST_F(PictureFolders, NoSeparatorIsAddedToTheToolsDirectory)
{
    saveAll(true);
    tool.directory = directory.filePath(QStringLiteral("station"));
    EXPECT_EQ(folderOf(okRecord()), directory.filePath("stationAISavePic/tavoro_p1_1_C1_T1/OK/"));
}

TEST_F(PictureFolders, AToolWithoutDirectorySavesInTheWorkingDirectory)
{
    saveAll(true);
    tool.directory.clear();
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    EXPECT_EQ(folderOf(okRecord()), "AISavePic/tavoro_p1_1_C1_T1/OK/");
    EXPECT_TRUE(QDir(directory.filePath("AISavePic/tavoro_p1_1_C1_T1/OK")).exists());
    QDir::setCurrent(before);
}

TEST_F(PictureFolders, ARemovableDiskHasAFolderForEachDay)
{
    saveAll(true);
    tool.removableDisk = directory.filePath(QStringLiteral("USB"));
    EXPECT_EQ(folderOf(okRecord()), tool.removableDisk + "/AISavePic_20211112/tavoro_p1_1_C1_T1/OK/");
    EXPECT_EQ(folderOf(ngRecord(2)), tool.removableDisk + "/AISavePic_20211112/tavoro_p1_1_C1_T1/NG/ng");
    now = now.addDays(50);
    EXPECT_EQ(folderOf(okRecord()), tool.removableDisk + "/AISavePic_20220101/tavoro_p1_1_C1_T1/OK/");
    EXPECT_FALSE(QDir(tool.directory).exists());
}

TEST_F(PictureFolders, WithoutAModelNothingIsSavedOrCreated)
{
    saveAll(true);
    EXPECT_EQ(archive.pictureFolder(&tool, QString(), okRecord(), toolId), QString());
    EXPECT_FALSE(QDir(tool.directory).exists());
}

TEST_F(PictureFolders, WithoutAToolNothingIsSaved)
{
    saveAll(true);
    EXPECT_EQ(archive.pictureFolder(nullptr, model, okRecord(), toolId), QString());
    archive.savePicture(nullptr, model, okRecord(), 1, numberedPicture(1));
    archive.queuePicture(nullptr, numberedPicture(1), directory.filePath("a.bmp"));
    archive.prepareFolders(nullptr, model, {"0O"});
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_TRUE(QDir(directory.path()).isEmpty());
}

TEST_F(PictureFolders, AStationThatIsNoToolSavesOnARemovableDiskOnly)
{
    struct Station : ToolInterface
    {
        QString disk;
        QString removableDiskPath() override { return disk; }
    } station;
    saveAll(true);
    EXPECT_EQ(archive.pictureFolder(&station, model, okRecord(), toolId), QString());
    station.disk = directory.path();
    EXPECT_EQ(archive.pictureFolder(&station, model, okRecord(), toolId),
        directory.path() + "/AISavePic_20211112/tavoro_p1_1_C1_T1/OK/");
}

// Switches and limits

TEST_F(PictureFolders, FoldersAppearEvenWhenSavingIsOff)
{
    saveAll(false);
    EXPECT_EQ(folderOf(okRecord()), QString());
    EXPECT_EQ(folderOf(ngRecord(0)), QString());
    EXPECT_EQ(folderOf(ngRecord(-1)), QString());
    for (const char* folder : {"OK", "NG/ng", "NG/ng_notype"}) {
        EXPECT_TRUE(QDir(modelFolder() + folder).exists()) << folder;
    }
}

TEST_F(PictureFolders, WithSavingOffNothingIsWrittenOrCounted)
{
    saveAll(false);
    fillFolder(modelFolder() + "OK", 3);
    settings.okSavedCount = 17;
    save(okRecord());
    save(ngRecord(0));
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 3);
    EXPECT_EQ(filesIn(modelFolder() + "NG/ng").size(), 0);
    EXPECT_EQ(settings.okSavedCount, 17);
}

TEST_F(PictureFolders, EachSwitchIsForItsOwnVerdict)
{
    settings.saveSwitch[0] = true;
    EXPECT_NE(folderOf(okRecord()), QString());
    EXPECT_EQ(folderOf(ngRecord(0)), QString());
    settings.saveSwitch[0] = false;
    settings.saveSwitch[1] = true;
    EXPECT_EQ(folderOf(okRecord()), QString());
    EXPECT_NE(folderOf(ngRecord(0)), QString());
}

TEST_F(PictureFolders, SavingStopsWhenTheFolderIsFull)
{
    saveAll(true);
    fillFolder(modelFolder() + "OK", 999);
    EXPECT_EQ(folderOf(okRecord()), modelFolder() + "OK/");
    EXPECT_EQ(settings.okSavedCount, 999);
    fillFolder(modelFolder() + "OK", 1000);
    EXPECT_EQ(folderOf(okRecord()), QString());
    EXPECT_EQ(settings.okSavedCount, 1000);
    EXPECT_NE(folderOf(ngRecord(0)), QString());
    EXPECT_EQ(settings.ngSavedCount, 0);
}

TEST_F(PictureFolders, TheNgFoldersAreCountedOneByOne)
{
    saveAll(true);
    settings.ngSaveLimit = 4;
    fillFolder(modelFolder() + "NG/ng", 4);
    fillFolder(modelFolder() + "NG/ng_notype", 2);
    EXPECT_EQ(folderOf(ngRecord(0)), QString());
    EXPECT_EQ(settings.ngSavedCount, 4);
    EXPECT_NE(folderOf(ngRecord(-1)), QString());
    EXPECT_EQ(settings.ngSavedCount, 2);
}

TEST_F(PictureFolders, AFolderBeyondItsLimitStaysClosed)
{
    saveAll(true);
    settings.okSaveLimit = 5;
    fillFolder(modelFolder() + "OK", 9);
    EXPECT_EQ(folderOf(okRecord()), QString());
    settings.okSaveLimit = 0;
    EXPECT_EQ(folderOf(okRecord()), QString());
    settings.okSaveLimit = -1;
    EXPECT_EQ(folderOf(okRecord()), QString());
}

TEST_F(PictureFolders, ARemovableDiskHasNoLimit)
{
    saveAll(true);
    tool.removableDisk = directory.filePath(QStringLiteral("USB"));
    settings.okSaveLimit = 3;
    settings.ngSaveLimit = 0;
    const QString day = tool.removableDisk + "/AISavePic_20211112/tavoro_p1_1_C1_T1/";
    fillFolder(day + "OK", 7);
    EXPECT_EQ(folderOf(okRecord()), day + "OK/");
    EXPECT_EQ(settings.okSavedCount, 7);
    EXPECT_EQ(folderOf(ngRecord(1)), day + "NG/ng");
    EXPECT_EQ(settings.ngSavedCount, 0);
}

TEST_F(PictureFolders, TheLimitIsReachedExactlyAndSavingGoesOnOnceTheFolderIsEmptied)
{
    saveAll(true);
    settings.okSaveLimit = 10;
    for (int number = 1; number <= 15; ++number) {
        save(okRecord(), number);
    }
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 10);
    EXPECT_EQ(settings.okSavedCount, 10);

    QDir(modelFolder() + "OK").removeRecursively();
    save(okRecord(), 16);
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 1);
    EXPECT_EQ(settings.okSavedCount, 0) << "counted before the picture was written";
}

TEST_F(PictureFolders, AFolderThatCannotBeCreatedLosesThePictureOnly)
{
    saveAll(true);
    // Below a regular file nobody can make a folder, not even root.
    QFile file(directory.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    tool.directory = file.fileName() + '/';
    EXPECT_EQ(folderOf(okRecord()), modelFolder() + "OK/");
    EXPECT_EQ(settings.okSavedCount, 0);
    save(okRecord());
    EXPECT_EQ(filesIn(directory.path()), QStringList{"file"});
}

// The whole step

TEST_F(PictureFolders, TheNameSaysToolNumberTimeAndText)
{
    saveAll(true);
    save(okRecord("LOT:A4827"), 3);
    save(ngRecord(-1, u8"批号 7"), 12);
    EXPECT_EQ(filesIn(modelFolder() + "OK"), QStringList{"C1_T1ROI3_1112_094323_421_LOT:A4827.bmp"});
    EXPECT_TRUE(fileShows(modelFolder() + "OK/C1_T1ROI3_1112_094323_421_LOT:A4827.bmp", numberedPicture(3)));
    EXPECT_TRUE(fileShows(
        modelFolder() + QStringLiteral("NG/ng_notype/C1_T1ROI12_1112_094323_421_批号 7.bmp"), numberedPicture(12)));
}

TEST_F(PictureFolders, AnEmptyTextLeavesItsPlaceEmpty)
{
    saveAll(true);
    save(okRecord(""));
    EXPECT_EQ(filesIn(modelFolder() + "OK"), QStringList{"C1_T1ROI1_1112_094323_421_.bmp"});
}

TEST_F(PictureFolders, ATextThatAFileNameCannotHoldIsNotSaved)
{
    saveAll(true);
    save(okRecord("EXP 12/2026"), 1);
    save(okRecord("../escape"), 2);
    save(okRecord(std::string("A\0B", 3)), 3);
    save(okRecord(std::string(300, 'A')), 4);
    save(okRecord("fine"), 5);
    EXPECT_EQ(filesIn(modelFolder() + "OK"), QStringList{"C1_T1ROI5_1112_094323_421_fine.bmp"});
    EXPECT_EQ(QDir(modelFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{"OK"});
}

TEST_F(PictureFolders, InspectionsInOneMillisecondGetDifferentNames)
{
    saveAll(true);
    for (int inspection = 0; inspection < 3; ++inspection) {
        for (const int number : {1, 2}) {
            save(okRecord("A"), number);
        }
    }
    const QStringList expected{"C1_T1ROI1_1112_094323_421_A.bmp", "C1_T1ROI1_1112_094323_422_A.bmp",
        "C1_T1ROI1_1112_094323_423_A.bmp", "C1_T1ROI2_1112_094323_421_A.bmp", "C1_T1ROI2_1112_094323_422_A.bmp",
        "C1_T1ROI2_1112_094323_423_A.bmp"};
    EXPECT_EQ(filesIn(modelFolder() + "OK"), expected);
}

TEST_F(PictureFolders, NamesStayApartHoweverFarTheyRunAheadOfTheClock)
{
    saveAll(true);
    tool.removableDisk = directory.filePath(QStringLiteral("USB")); // which has no limit
    for (int inspection = 0; inspection < 1100; ++inspection) {
        now = now.addMSecs(inspection % 2);
        save(okRecord("A"));
    }
    EXPECT_EQ(filesIn(tool.removableDisk + "/AISavePic_20211112/tavoro_p1_1_C1_T1/OK").size(), 1100);
}

TEST_F(PictureFolders, NamesStayApartWhenTheClockIsCorrected)
{
    saveAll(true);
    save(okRecord("A"));
    for (int correction : {-500, 500, -999, 999}) { // past times that are in names already
        now = now.addMSecs(correction);
        save(okRecord("A"));
    }
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 5);
}

TEST_F(PictureFolders, NamesFollowAClockThatIsSetBack)
{
    saveAll(true);
    save(okRecord("A"));
    now = now.addSecs(-3600);
    save(okRecord("A"));
    const QStringList expected{"C1_T1ROI1_1112_084323_421_A.bmp", "C1_T1ROI1_1112_094323_421_A.bmp"};
    EXPECT_EQ(filesIn(modelFolder() + "OK"), expected);
}

TEST_F(PictureFolders, AtMidnightFolderAndNameAgreeOnTheDay)
{
    saveAll(true);
    tool.removableDisk = directory.filePath(QStringLiteral("USB"));
    QDateTime time(QDate(2021, 12, 31), QTime(23, 59, 59, 998));
    PictureArchive ticking(settings, greyConverter, MountTable(), [&time] { return time = time.addMSecs(1); });
    for (int number = 1; number <= 3; ++number) {
        ticking.savePicture(&tool, model, okRecord("A"), number, numberedPicture(number));
    }
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(filesIn(tool.removableDisk + "/AISavePic_20211231/tavoro_p1_1_C1_T1/OK"),
        QStringList{"C1_T1ROI1_1231_235959_999_A.bmp"});
    const QStringList newYear{"C1_T1ROI2_0101_000000_000_A.bmp", "C1_T1ROI3_0101_000000_001_A.bmp"};
    EXPECT_EQ(filesIn(tool.removableDisk + "/AISavePic_20220101/tavoro_p1_1_C1_T1/OK"), newYear);
}

TEST_F(PictureFolders, TheLocalTimeIsTheDefault)
{
    saveAll(true);
    PictureArchive byTheClock(settings, greyConverter);
    byTheClock.savePicture(&tool, model, okRecord("A"), 1, numberedPicture(1));
    QThreadPool::globalInstance()->waitForDone();
    const QStringList files = filesIn(modelFolder() + "OK");
    ASSERT_EQ(files.size(), 1);
    EXPECT_TRUE(QRegularExpression("^C1_T1ROI1_\\d{4}_\\d{6}_\\d{3}_A\\.bmp$").match(files[0]).hasMatch());
}

TEST_F(PictureFolders, AToolThatForbidsSavingGetsItsFoldersButNoPicture)
{
    saveAll(true);
    tool.maySave = false;
    save(okRecord());
    EXPECT_TRUE(QDir(modelFolder() + "OK").exists());
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 0);
}

TEST_F(PictureFolders, APictureWithoutPixelsIsNotSaved)
{
    saveAll(true);
    archive.savePicture(&tool, model, okRecord(), 1, cv::Mat());
    archive.savePicture(&tool, model, okRecord(), 2, cv::Mat(0, 0, CV_8UC3));
    archive.savePicture(&tool, model, okRecord(), 3, cv::Mat(4, 4, CV_64FC3, cv::Scalar::all(1)));
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(filesIn(modelFolder() + "OK").size(), 0);
}

// Preparation

TEST_F(PictureFolders, PreparationCreatesAllFoldersAndCounts)
{
    saveAll(true);
    fillFolder(modelFolder() + "OK", 5);
    fillFolder(modelFolder() + "NG/ng", 9);
    fillFolder(modelFolder() + "NG/ng_notype", 2);
    archive.prepareFolders(&tool, model, {"0O", "1Il"});
    EXPECT_EQ(settings.okSavedCount, 5);
    EXPECT_EQ(settings.ngSavedCount, 2) << "the folder looked at last";
}

TEST_F(PictureFolders, PreparationNeedsNoSwitch)
{
    archive.prepareFolders(&tool, model, {"0O"});
    for (const char* folder : {"OK", "NG/ng", "NG/ng_notype"}) {
        EXPECT_TRUE(QDir(modelFolder() + folder).exists()) << folder;
    }
}

TEST_F(PictureFolders, AModelWithoutClassesHasNoFolderForThem)
{
    archive.prepareFolders(&tool, model, {});
    EXPECT_FALSE(QDir(modelFolder() + "NG/ng").exists());
    EXPECT_TRUE(QDir(modelFolder() + "NG/ng_notype").exists());
}

TEST_F(PictureFolders, WithoutAModelNothingIsPrepared)
{
    archive.prepareFolders(&tool, QString(), {"0O"});
    EXPECT_FALSE(QDir(tool.directory).exists());
}

// The shown location

TEST_F(PictureFolders, ShowsTheFirstRemovableDiskOrTheSystemDisk)
{
    archive.refreshSaveLocation();
    EXPECT_EQ(settings.savePathText, QStringLiteral("系统盘")) << "no table";

    QFile table(directory.filePath(QStringLiteral("mounts")));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    table.write("/dev/sda1 / ext4 rw 0 0\n");
    archive.refreshSaveLocation();
    EXPECT_EQ(settings.savePathText, QStringLiteral("系统盘")) << "no disk";

    const QByteArray mediaRoot = "/media/root";
    table.write("/dev/sdb1 " + mediaRoot + "/USB vfat rw 0 0\n/dev/sdc1 " + mediaRoot + "/B vfat rw 0 0\n");
    archive.refreshSaveLocation();
    EXPECT_EQ(settings.savePathText, QString(mediaRoot + "/USB"));
    EXPECT_EQ(archive.findRemovableMounts().size(), 2);

    table.resize(0);
    archive.refreshSaveLocation();
    EXPECT_EQ(settings.savePathText, QStringLiteral("系统盘")) << "all gone";
}

TEST_F(PictureFolders, DatesAndTimesAreDigits0To9InEveryLocale)
{
    if (qgetenv("LC_ALL").startsWith("fa_IR")) {
        ASSERT_EQ(QLocale::system().zeroDigit(), QChar(0x6F0)) << "or this run shows nothing";
    }
    saveAll(true);
    const QLocale before;
    int number = 0;
    for (const QLocale& locale : {QLocale(QLocale::Persian), QLocale(QLocale::Arabic, QLocale::Egypt), QLocale::c()}) {
        QLocale::setDefault(locale);
        tool.removableDisk.clear();
        save(okRecord(), ++number);
        const QStringList expected = {QString("C1_T1ROI%1_1112_094323_421_LOT4827.bmp").arg(number)};
        EXPECT_EQ(filesIn(modelFolder() + "OK"), expected);
        tool.removableDisk = directory.path();
        EXPECT_EQ(folderOf(okRecord()), directory.path() + "/AISavePic_20211112/tavoro_p1_1_C1_T1/OK/");
        QDir(modelFolder()).removeRecursively();
    }
    QLocale::setDefault(before);
}
