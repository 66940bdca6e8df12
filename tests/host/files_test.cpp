#include "errortext.h"
#include "files/outputfile.h"
#include "files/picturelist.h"
#include "files/picturereader.h"
#include "files/regionplan.h"
#include "fulldisk.h"
#include "places.h"
#include "processorplugin.h"
#include "station.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <limits>

#include <sys/stat.h>

using namespace scribo::host;

namespace {

const QSize pictureSize(100, 50);

/// What is said about a regions file with this content.
QString regionsError(const Station& station, const QByteArray& json)
{
    station.write("regions.json", json);
    const auto plan = RegionPlan::fromFile(station.path("regions.json"));
    EXPECT_FALSE(plan) << json.constData();
    return errorText(plan).mid(station.path("regions.json").size());
}

QList<TaughtRegion> regionsOf(const RegionPlan& plan, const QString& picture)
{
    const auto regions = plan.regionsFor(picture, pictureSize);
    EXPECT_EQ(errorText(regions), "");
    return regions.value_or(QList<TaughtRegion>());
}

RegionPlan planOf(const Station& station, const QByteArray& json)
{
    station.write("r.json", json);
    const auto plan = RegionPlan::fromFile(station.path("r.json"));
    EXPECT_EQ(errorText(plan), "");
    return plan.value_or(RegionPlan());
}

cv::Mat pictureOf(const Station& station, const QString& name)
{
    const auto picture = readPicture(station.path(name));
    EXPECT_EQ(errorText(picture), "");
    return picture.value_or(cv::Mat());
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
    const RegionPlan plan
        = planOf(station, R"([[1, 2.5, 30, 20], {"rect": [5, 6, 7, 8], "reference": "Ä,\"1", "count": [2, 9]}])");
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
    const RegionPlan plan = planOf(station, R"({"a.png": [[1, 1, 5, 5]], "left/a.png": [[2, 2, 5, 5]]})");
    EXPECT_EQ(regionsOf(plan, "right/a.png")[0].rect.x(), 1);
    EXPECT_EQ(regionsOf(plan, "left/a.png")[0].rect.x(), 2);
    EXPECT_EQ(errorText(plan.regionsFor("b.png", pictureSize)), "has no regions in " + station.path("r.json"));
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

TEST(RegionPlan, RefusesARegionThatHasNoPixelOfThePicture)
{
    const RegionPlan plan({{QRectF(0, 0, 5, 5), {}, {}}, {QRectF(99.5, 0, 20, 20), {}, {}}});
    EXPECT_EQ(errorText(plan.regionsFor("a.png", pictureSize)),
        "region 2 (99.5,0,20,20) lies outside the picture, which is 100 x 50");
}

TEST(RegionPlan, KnowsWhetherSomeRegionHasItsOwnReferenceOrCount)
{
    const Station station;
    EXPECT_FALSE(RegionPlan().hasReferences());
    const RegionPlan common = planOf(station, R"([[1, 1, 5, 5], {"rect": [1, 1, 5, 5], "reference": ""}])");
    EXPECT_TRUE(common.hasReferences());
    EXPECT_FALSE(common.hasCounts());
    const RegionPlan byPicture
        = planOf(station, R"({"a": [[1, 1, 5, 5]], "b": [{"rect": [1, 1, 5, 5], "count": [1, 2]}]})");
    EXPECT_FALSE(byPicture.hasReferences());
    EXPECT_TRUE(byPicture.hasCounts());
}

TEST(RegionPlan, ParsesRegionsAndCountsOfTheCommandLine)
{
    EXPECT_EQ(parseRegion("1, -2.5,3,4e1"), QRectF(1, -2.5, 3, 40));
    for (const char* const text :
        {"", "1,2,3", "1,2,3,4,5", "1,2,3,x", "1,2,nan,4", "1,inf,3,4", "1,2,0,4", "1,2,3,-4"}) {
        EXPECT_FALSE(parseRegion(text)) << text;
    }
    const auto range = parseCount("3:12");
    ASSERT_TRUE(range);
    EXPECT_EQ(range->low, 3);
    EXPECT_EQ(range->high, 12);
    for (const char* const text : {"", "3", "3:", ":3", "4:3", "-1:3", "1:2:3", "a:b", "0:100000"}) {
        EXPECT_FALSE(parseCount(text)) << text;
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
    EXPECT_EQ(pictureOf(station, "colour.png").at<cv::Vec3b>(0, 0), cv::Vec3b(30, 20, 10));
    const cv::Mat grey = pictureOf(station, "grey.pgm");
    EXPECT_EQ(grey.type(), CV_8UC1);
    EXPECT_EQ(grey.at<uchar>(0, 0), 40);
}

TEST(PictureReader, ScalesSixteenBitsAndLaysTransparencyOnWhite)
{
    const Station station;
    station.writePicture("deep.png", cv::Mat(1, 1, CV_16UC1, cv::Scalar(65535)));
    station.writePicture("half.png", cv::Mat(1, 1, CV_16UC1, cv::Scalar(128 * 257)));
    station.writePicture("clear.png", cv::Mat(1, 1, CV_8UC4, cv::Scalar(1, 2, 3, 0)));
    station.writePicture("solid.png", cv::Mat(1, 1, CV_8UC4, cv::Scalar(1, 2, 3, 255)));
    const cv::Mat deep = pictureOf(station, "deep.png");
    EXPECT_EQ(deep.type(), CV_8UC1);
    EXPECT_EQ(deep.at<uchar>(0, 0), 255);
    EXPECT_EQ(pictureOf(station, "half.png").at<uchar>(0, 0), 128);
    EXPECT_EQ(pictureOf(station, "clear.png").at<cv::Vec3b>(0, 0), cv::Vec3b(255, 255, 255));
    EXPECT_EQ(pictureOf(station, "solid.png").at<cv::Vec3b>(0, 0), cv::Vec3b(3, 2, 1));
}

TEST(PictureReader, SaysWhyAFileIsNoPicture)
{
    const Station station;
    station.write("empty.png", {});
    station.write("text.png", "no picture");
    station.writePicture("float.tiff", cv::Mat(2, 2, CV_32FC1, cv::Scalar(0.5)));
    const auto errorOf = [&](const QString& name) { return errorText(readPicture(station.path(name))); };
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
    EXPECT_EQ(errorText(readPicture(file.fileName())), "is larger than 2 GB, the most that can be read");
}

TEST(OutputFile, IsWrittenAsAWhole)
{
    const Station station;
    for (const char* const bytes : {"old", "new"}) {
        EXPECT_EQ(errorText(saveOutput(station.path("file"), bytes)), "");
    }
    EXPECT_EQ(station.read("file"), "new");
    EXPECT_TRUE(errorText(saveOutput("/proc/none/file", "new")).startsWith("/proc/none/file: cannot be written: "));
}

TEST(OutputFile, LeavesTheEarlierOneWhenTheDiskIsFull)
{
    const Station station;
    station.write("file", "old");
    scribo::Result<void> saved;
    {
        const FullDisk full;
        saved = saveOutput(station.path("file"), "new");
    }
    EXPECT_TRUE(errorText(saved).startsWith(station.path("file") + ": cannot be written: "));
    EXPECT_EQ(station.read("file"), "old");
    EXPECT_EQ(QDir(station.path(".")).entryList(QDir::Files), QStringList{"file"});
}

TEST(OutputFile, ReplacesOnlyFiles)
{
    const Station station;
    ASSERT_EQ(mkfifo(QFile::encodeName(station.path("fifo")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(station.path("fifo"), station.path("link")));
    for (const char* const name : {"fifo", "link", "model"}) {
        const QString path = station.path(name);
        EXPECT_EQ(errorText(saveOutput(path, "new")), path + ": is no file that could be replaced");
        EXPECT_TRUE(QFileInfo::exists(path) && !QFileInfo(path).isFile()) << name;
    }
}

TEST(ProcessorPlugin, SaysWhyAFileIsNoProcessor)
{
    const Station station;
    station.write("text.so", "not a library");
    const auto errorOf = [](const QString& file) {
        const QString error = errorText(ProcessorPlugin::load(file));
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
    EXPECT_EQ(errorText(findWorkFolder(station.path("."), "/program")), "");
    EXPECT_EQ(errorText(findWorkFolder(station.path("empty"), "/program")),
        station.path("empty") + ": has no folder \"model\"");
    EXPECT_EQ(errorText(findWorkFolder(station.path("none"), "/program")), station.path("none") + ": is not a folder");
    station.write("work/model/a", {});
    EXPECT_EQ(findWorkFolder({}, station.path("bin")), station.path("work"));
}
