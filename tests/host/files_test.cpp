#include "fulldisk.h"
#include "picturelist.h"
#include "picturereader.h"
#include "places.h"
#include "processorplugin.h"
#include "regionplan.h"
#include "station.h"
#include "wholefile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <limits>

#include <sys/stat.h>

namespace {

const QSize pictureSize(100, 50);

/// What is said about a regions file with this content.
QString regionsError(const Station& station, const QByteArray& json)
{
    station.write("regions.json", json);
    RegionPlan plan;
    QString error;
    EXPECT_FALSE(plan.readFile(station.path("regions.json"), &error)) << json.constData();
    return error.mid(station.path("regions.json").size());
}

QList<TaughtRegion> regionsOf(const RegionPlan& plan, const QString& picture)
{
    QList<TaughtRegion> regions;
    QString error;
    EXPECT_TRUE(plan.regionsFor(picture, pictureSize, &regions, &error)) << qPrintable(error);
    return regions;
}

} // namespace

TEST(RegionPlan, TakesTheWholePictureByDefault)
{
    const QList<TaughtRegion> regions = regionsOf(RegionPlan(), "a.png");
    ASSERT_EQ(regions.size(), 1);
    EXPECT_EQ(regions[0].rect, QRectF(0, 0, 100, 50));
    EXPECT_FALSE(regions[0].reference);
    EXPECT_FALSE(regions[0].count);
}

TEST(RegionPlan, ReadsOneListForAllPictures)
{
    const Station station;
    station.write("r.json", R"([[1, 2.5, 30, 20], {"rect": [5, 6, 7, 8], "reference": "Ä,\"1", "count": [2, 9]}])");
    RegionPlan plan;
    QString error;
    ASSERT_TRUE(plan.readFile(station.path("r.json"), &error)) << qPrintable(error);
    const QList<TaughtRegion> regions = regionsOf(plan, "any.png");
    ASSERT_EQ(regions.size(), 2);
    EXPECT_EQ(regions[0].rect, QRectF(1, 2.5, 30, 20));
    EXPECT_EQ(regions[1].reference, QString("Ä,\"1"));
    EXPECT_EQ(regions[1].count->low, 2);
    EXPECT_EQ(regions[1].count->high, 9);
    EXPECT_TRUE(plan.hasSeveral());
    EXPECT_FALSE(plan.allHaveReferences());
}

TEST(RegionPlan, FindsAPictureByItsGivenNameBeforeItsFileName)
{
    const Station station;
    station.write("r.json", R"({"a.png": [[1, 1, 5, 5]], "left/a.png": [[2, 2, 5, 5]]})");
    RegionPlan plan;
    QString error;
    ASSERT_TRUE(plan.readFile(station.path("r.json"), &error)) << qPrintable(error);
    EXPECT_EQ(regionsOf(plan, "right/a.png")[0].rect.x(), 1);
    EXPECT_EQ(regionsOf(plan, "left/a.png")[0].rect.x(), 2);
    QList<TaughtRegion> regions;
    EXPECT_FALSE(plan.regionsFor("b.png", pictureSize, &regions, &error));
    EXPECT_EQ(error, "has no regions in " + station.path("r.json"));
}

TEST(RegionPlan, NamesThePlaceOfEveryMistake)
{
    const Station station;
    // The parser stops behind the 6 that it did not expect.
    EXPECT_TRUE(regionsError(station, "[[1, 2, 3, 4],\n [5 6]]").startsWith(":2:6: not JSON: "));
    EXPECT_EQ(regionsError(station, "[]"), ": a list of regions is expected");
    EXPECT_EQ(regionsError(station, "[[1, 2, 3]]"), ": region 1: a region is four numbers [x, y, width, height]");
    EXPECT_EQ(regionsError(station, R"([[1, 2, 3, 4], [1, 2, 3, "4"]])"),
        ": region 2: a region is four numbers [x, y, width, height]");
    EXPECT_EQ(regionsError(station, "[[1, 2, 0.5, 4]]"), ": region 1: width and height must be at least 1");
    EXPECT_EQ(regionsError(station, R"({"a.png": [1, 2, 3, 4]})"),
        ": \"a.png\": region 1: a region is four numbers [x, y, width, height]");
    EXPECT_EQ(regionsError(station, R"({"a.png": {}})"), ": \"a.png\": a list of regions is expected");
    EXPECT_EQ(regionsError(station, R"({"a.png": [{"rect": [1, 2, 3, 4], "text": ""}]})"),
        ": \"a.png\": region 1: unknown key \"text\": a region has \"rect\", \"reference\" and \"count\"");
    EXPECT_EQ(regionsError(station, R"([{"rect": [1, 2, 3, 4], "reference": 7}])"),
        ": region 1: \"reference\" must be a text");
    for (const char* const count : {"3", "[1]", "[3, 2]", "[-1, 2]", "[0.5, 2]", "[0, 1e12]", R"(["1", 2])"}) {
        EXPECT_EQ(regionsError(station, R"([{"rect": [1, 2, 3, 4], "count": )" + QByteArray(count) + "}]"),
            ": region 1: \"count\" must be [min, max], whole numbers from 0 to 99999");
    }
}

TEST(RegionPlan, KeepsThePlanWhenAFileIsDamaged)
{
    const Station station;
    station.write("r.json", "[[1, 1, 5, 5], [");
    RegionPlan plan({{QRectF(7, 7, 8, 8), {}, {}}});
    QString error;
    EXPECT_FALSE(plan.readFile(station.path("r.json"), &error));
    EXPECT_EQ(regionsOf(plan, "a.png")[0].rect.x(), 7);
}

TEST(RegionPlan, RefusesARegionThatHasNoPixelOfThePicture)
{
    const RegionPlan plan({{QRectF(0, 0, 5, 5), {}, {}}, {QRectF(99.5, 0, 20, 20), {}, {}}});
    QList<TaughtRegion> regions;
    QString error;
    EXPECT_FALSE(plan.regionsFor("a.png", pictureSize, &regions, &error));
    EXPECT_EQ(error, "region 2 (99.5,0,20,20) lies outside the picture, which is 100 x 50");
}

TEST(RegionPlan, KnowsWhetherSomeRegionHasItsOwnReferenceOrCount)
{
    const Station station;
    const auto planOf = [&](const QByteArray& json) {
        station.write("r.json", json);
        RegionPlan plan;
        QString error;
        EXPECT_TRUE(plan.readFile(station.path("r.json"), &error)) << qPrintable(error);
        return plan;
    };
    EXPECT_FALSE(RegionPlan().hasReferences());
    const RegionPlan common = planOf(R"([[1, 1, 5, 5], {"rect": [1, 1, 5, 5], "reference": ""}])");
    EXPECT_TRUE(common.hasReferences());
    EXPECT_FALSE(common.hasCounts());
    const RegionPlan byPicture = planOf(R"({"a": [[1, 1, 5, 5]], "b": [{"rect": [1, 1, 5, 5], "count": [1, 2]}]})");
    EXPECT_FALSE(byPicture.hasReferences());
    EXPECT_TRUE(byPicture.hasCounts());
}

TEST(RegionPlan, ParsesRegionsAndCountsOfTheCommandLine)
{
    QRectF rect;
    EXPECT_TRUE(parseRegion("1, -2.5,3,4e1", &rect));
    EXPECT_EQ(rect, QRectF(1, -2.5, 3, 40));
    for (const char* const text :
        {"", "1,2,3", "1,2,3,4,5", "1,2,3,x", "1,2,nan,4", "1,inf,3,4", "1,2,0,4", "1,2,3,-4"}) {
        EXPECT_FALSE(parseRegion(text, &rect)) << text;
    }
    CountRange range;
    EXPECT_TRUE(parseCount("3:12", &range));
    EXPECT_EQ(range.low, 3);
    EXPECT_EQ(range.high, 12);
    for (const char* const text : {"", "3", "3:", ":3", "4:3", "-1:3", "1:2:3", "a:b", "0:100000"}) {
        EXPECT_FALSE(parseCount(text, &range)) << text;
    }
}

TEST(PictureList, TakesThePicturesOfAFolderByNameAndNothingElse)
{
    const Station station;
    for (const char* const name : {"b.PNG", "a.tiff", "c.jpg", "jobs.json", "draw.py", "below/d.png"}) {
        station.write(QString("pictures/") + name, "x");
    }
    const QList<PictureFile> pictures = listPictures({"pictures", "pictures/b.PNG"}, station.path("."));
    ASSERT_EQ(pictures.size(), 4);
    EXPECT_EQ(pictures[0].name, "pictures/a.tiff");
    EXPECT_EQ(pictures[1].name, "pictures/b.PNG");
    EXPECT_EQ(pictures[2].name, "pictures/c.jpg");
    EXPECT_EQ(pictures[3].name, "pictures/b.PNG");
    EXPECT_TRUE(QFileInfo(pictures[3].path).isAbsolute());
}

TEST(PictureList, NamesWhatIsNotThere)
{
    const Station station;
    const QList<PictureFile> pictures = listPictures({"model", "none.png"}, station.path("."));
    ASSERT_EQ(pictures.size(), 2);
    EXPECT_EQ(pictures[0].fault, "holds no pictures");
    EXPECT_EQ(pictures[1].fault, "does not exist");
}

TEST(PictureReader, GivesRedGreenBlueAndKeepsGrey)
{
    const Station station;
    station.writePicture("colour.png", cv::Mat(2, 2, CV_8UC3, cv::Scalar(10, 20, 30)));
    station.writePicture("grey.pgm", cv::Mat(2, 2, CV_8UC1, cv::Scalar(40)));
    cv::Mat picture;
    QString error;
    ASSERT_TRUE(readPicture(station.path("colour.png"), &picture, &error)) << qPrintable(error);
    EXPECT_EQ(picture.at<cv::Vec3b>(0, 0), cv::Vec3b(30, 20, 10));
    ASSERT_TRUE(readPicture(station.path("grey.pgm"), &picture, &error)) << qPrintable(error);
    EXPECT_EQ(picture.type(), CV_8UC1);
    EXPECT_EQ(picture.at<uchar>(0, 0), 40);
}

TEST(PictureReader, ScalesSixteenBitsAndLaysTransparencyOnWhite)
{
    const Station station;
    station.writePicture("deep.png", cv::Mat(1, 1, CV_16UC1, cv::Scalar(65535)));
    station.writePicture("half.png", cv::Mat(1, 1, CV_16UC1, cv::Scalar(128 * 257)));
    station.writePicture("clear.png", cv::Mat(1, 1, CV_8UC4, cv::Scalar(1, 2, 3, 0)));
    station.writePicture("solid.png", cv::Mat(1, 1, CV_8UC4, cv::Scalar(1, 2, 3, 255)));
    cv::Mat picture;
    QString error;
    ASSERT_TRUE(readPicture(station.path("deep.png"), &picture, &error));
    EXPECT_EQ(picture.type(), CV_8UC1);
    EXPECT_EQ(picture.at<uchar>(0, 0), 255);
    ASSERT_TRUE(readPicture(station.path("half.png"), &picture, &error));
    EXPECT_EQ(picture.at<uchar>(0, 0), 128);
    ASSERT_TRUE(readPicture(station.path("clear.png"), &picture, &error));
    EXPECT_EQ(picture.at<cv::Vec3b>(0, 0), cv::Vec3b(255, 255, 255));
    ASSERT_TRUE(readPicture(station.path("solid.png"), &picture, &error));
    EXPECT_EQ(picture.at<cv::Vec3b>(0, 0), cv::Vec3b(3, 2, 1));
}

TEST(PictureReader, SaysWhyAFileIsNoPicture)
{
    const Station station;
    station.write("empty.png", {});
    station.write("text.png", "no picture");
    station.writePicture("float.tiff", cv::Mat(2, 2, CV_32FC1, cv::Scalar(0.5)));
    const auto errorOf = [&](const QString& name) {
        cv::Mat picture;
        QString error;
        EXPECT_FALSE(readPicture(station.path(name), &picture, &error));
        return error;
    };
    EXPECT_EQ(errorOf("empty.png"), "is empty");
    EXPECT_EQ(errorOf("text.png"), "is damaged, or not a picture in a known format");
    EXPECT_EQ(errorOf("none.png"), "cannot be opened: No such file or directory");
    EXPECT_EQ(errorOf("model"), "is a folder");
    EXPECT_EQ(errorOf("float.tiff"), "has samples that are neither 8 nor 16 bits without sign");
}

TEST(PictureReader, RefusesAFileTooLargeToBeRead)
{
    const Station station;
    QFile file(station.path("large.png"));
    // A file without content takes no room on the disk.
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(qint64(1) << 31));
    cv::Mat picture;
    QString error;
    EXPECT_FALSE(readPicture(file.fileName(), &picture, &error));
    EXPECT_EQ(error, "is larger than 2 GB, the most that can be read");
}

TEST(WholeFile, TakesThePlaceOfAnEarlierOne)
{
    const Station station;
    QString error;
    for (const char* const bytes : {"old", "new"}) {
        EXPECT_TRUE(writeWholeFile(station.path("file"), bytes, &error)) << qPrintable(error);
    }
    EXPECT_EQ(station.read("file"), "new");
    EXPECT_FALSE(writeWholeFile("/proc/none/file", "new", &error));
    EXPECT_TRUE(error.startsWith("/proc/none/file: cannot be written: ")) << qPrintable(error);
}

TEST(WholeFile, LeavesTheEarlierOneWhenTheDiskIsFull)
{
    const Station station;
    station.write("file", "old");
    QString error;
    bool isWritten = true;
    {
        const FullDisk full;
        isWritten = writeWholeFile(station.path("file"), "new", &error);
    }
    EXPECT_FALSE(isWritten);
    EXPECT_TRUE(error.startsWith(station.path("file") + ": cannot be written: ")) << qPrintable(error);
    EXPECT_EQ(station.read("file"), "old");
    EXPECT_EQ(QDir(station.path(".")).entryList(QDir::Files), QStringList{"file"});
}

TEST(WholeFile, ReplacesOnlyFiles)
{
    const Station station;
    ASSERT_EQ(mkfifo(QFile::encodeName(station.path("fifo")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(station.path("fifo"), station.path("link")));
    for (const char* const name : {"fifo", "link", "model"}) {
        const QString path = station.path(name);
        QString error;
        EXPECT_FALSE(writeWholeFile(path, "new", &error));
        EXPECT_EQ(error, path + ": is no file that could be replaced");
        EXPECT_TRUE(QFileInfo::exists(path) && !QFileInfo(path).isFile()) << name;
    }
}

TEST(ProcessorPlugin, SaysWhyAFileIsNoProcessor)
{
    const Station station;
    station.write("text.so", "not a library");
    const auto errorOf = [](const QString& file) {
        ProcessorPlugin plugin;
        QString error;
        EXPECT_FALSE(plugin.load(file, &error));
        EXPECT_EQ(plugin.makeInstance(nullptr), nullptr);
        EXPECT_TRUE(error.startsWith(file + ": ")) << qPrintable(error);
        return error.mid(file.size() + 2);
    };
    EXPECT_EQ(errorOf(station.path("none.so")), "there is no such plug-in");
    EXPECT_EQ(errorOf(station.path("model")), "there is no such plug-in");
    EXPECT_TRUE(errorOf(station.path("text.so")).startsWith("cannot be loaded: "));
    EXPECT_EQ(
        errorOf(OTHER_PLUGIN_FILE), "is a Qt plug-in, but not a processor (com.qrn.brightfield.processorinterface)");
}

TEST(Places, TakesThePluginThatIsGivenThenTheEnvironmentsThenItsOwn)
{
    const Station station;
    qputenv("SCRIBO_PLUGIN", "/from/environment.so");
    EXPECT_EQ(findPlugin("/given.so", "/program"), "/given.so");
    EXPECT_EQ(findPlugin({}, "/program"), "/from/environment.so");
    qunsetenv("SCRIBO_PLUGIN");
    EXPECT_EQ(findPlugin({}, station.path("bin")), station.path("lib/scribo/libScribo.so"));
    station.write("Plugins/Processing/Scribo/libScribo.so", {});
    EXPECT_EQ(findPlugin({}, station.path("bin")), station.path("Plugins/Processing/Scribo/libScribo.so"));
}

TEST(Places, WorksOnlyWhereThereIsAModelFolder)
{
    const Station station;
    station.write("empty/file", {});
    QString folder;
    QString error;
    EXPECT_TRUE(findWorkFolder(station.path("."), "/program", &folder, &error));
    EXPECT_FALSE(findWorkFolder(station.path("empty"), "/program", &folder, &error));
    EXPECT_EQ(error, station.path("empty") + ": has no folder \"model\"");
    EXPECT_FALSE(findWorkFolder(station.path("none"), "/program", &folder, &error));
    EXPECT_EQ(error, station.path("none") + ": is not a folder");
    station.write("work/model/a", {});
    EXPECT_TRUE(findWorkFolder({}, station.path("bin"), &folder, &error));
    EXPECT_EQ(folder, station.path("work"));
}
