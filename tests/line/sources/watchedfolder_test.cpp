#include "sources/watchedfoldersource.h"

#include "sources/wholepicture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <opencv2/imgcodecs.hpp>
#include <thread>

namespace scribo::line {
namespace {

using namespace std::chrono_literals;

class WatchedFolder : public testing::Test
{
protected:
    WatchedFolder()
    {
        options.folder = folder.filePath(QStringLiteral("in"));
        QDir().mkdir(options.folder);
        const cv::Mat picture(64, 64, CV_8UC1, cv::Scalar(7));
        cv::imencode(".png", picture, png);
        cv::imencode(".jpg", picture, jpeg);
        cv::imencode(".bmp", picture, bmp);
    }

    void start()
    {
        source = std::make_unique<WatchedFolderSource>(options);
        source->open(PictureSource::Mode::free);
    }

    QString path(const QString& name) const { return options.folder + QLatin1Char('/') + name; }

    void write(
        const QString& name, const std::vector<uchar>& bytes, std::size_t from = 0, std::size_t to = SIZE_MAX) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(from == 0 ? QIODevice::WriteOnly : QIODevice::Append));
        const std::size_t end = std::min(to, bytes.size());
        file.write(reinterpret_cast<const char*>(bytes.data()) + from, static_cast<qint64>(end - from));
    }

    QTemporaryDir folder;
    WatchedFolderOptions options;
    std::vector<uchar> png;
    std::vector<uchar> jpeg;
    std::vector<uchar> bmp;
    std::unique_ptr<WatchedFolderSource> source;
};

TEST_F(WatchedFolder, TakesAPictureThatIsWrittenAtOnce)
{
    start();
    write(QStringLiteral("a.png"), png);
    const auto frame = source->take(10s);
    ASSERT_TRUE(frame) << frame.error().message.toStdString();
    EXPECT_EQ(frame->name, QStringLiteral("a.png"));
    EXPECT_EQ(frame->picture.at<uchar>(5, 5), 7);
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("a.png"))));
    EXPECT_TRUE(QFile::exists(path(QStringLiteral("done/a.png"))));
    EXPECT_EQ(source->take(1ms).error().fault, CaptureFault::timeout);
}

TEST_F(WatchedFolder, TakesAPictureThatWasThereBefore)
{
    write(QStringLiteral("a.png"), png);
    start();
    EXPECT_TRUE(source->take(10s));
}

TEST_F(WatchedFolder, TakesAPictureThatIsRenamedIntoItsPlace)
{
    start();
    write(QStringLiteral(".a.png"), png);
    write(QStringLiteral("a.part"), png);
    EXPECT_EQ(source->take(700ms).error().fault, CaptureFault::timeout);
    ASSERT_TRUE(QFile::rename(path(QStringLiteral("a.part")), path(QStringLiteral("a.png"))));
    EXPECT_TRUE(source->take(10s));
}

TEST_F(WatchedFolder, WaitsForASlowWriter)
{
    start();
    std::thread writer([this] {
        QFile file(path(QStringLiteral("a.bmp")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        for (std::size_t at = 0; at < bmp.size(); at += 500) {
            file.write(reinterpret_cast<const char*>(bmp.data()) + at,
                static_cast<qint64>(std::min<std::size_t>(500, bmp.size() - at)));
            std::this_thread::sleep_for(80ms);
        }
    });
    const auto frame = source->take(30s);
    writer.join();
    ASSERT_TRUE(frame) << frame.error().message.toStdString();
    EXPECT_EQ(frame->picture.at<uchar>(63, 63), 7);
}

TEST_F(WatchedFolder, WaitsForAWriterThatClosesTheFileInBetween)
{
    start();
    write(QStringLiteral("a.jpg"), jpeg, 0, jpeg.size() / 2);
    EXPECT_EQ(source->take(900ms).error().fault, CaptureFault::timeout);
    write(QStringLiteral("a.jpg"), jpeg, jpeg.size() / 2);
    EXPECT_TRUE(source->take(10s));
}

TEST_F(WatchedFolder, GivesUpAFileThatStaysCutOff)
{
    start();
    write(QStringLiteral("a.jpg"), jpeg, 0, jpeg.size() / 2);
    const auto cut = source->take(30s);
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().fault, CaptureFault::incomplete);
    EXPECT_EQ(cut.error().message, QStringLiteral("a.jpg: the file is cut off"));
    EXPECT_TRUE(QFile::exists(path(QStringLiteral("unreadable/a.jpg"))));
}

TEST_F(WatchedFolder, PutsAFileAsideThatIsNoPicture)
{
    start();
    write(QStringLiteral("a.tif"), {'n', 'o', 'n', 'e'});
    const auto broken = source->take(10s);
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().fault, CaptureFault::incomplete);
    EXPECT_TRUE(QFile::exists(path(QStringLiteral("unreadable/a.tif"))));
}

TEST_F(WatchedFolder, TakesPicturesInTheOrderOfTheirArrival)
{
    start();
    for (const char* const name : {"c.png", "a.png", "b.png"}) {
        write(QString::fromLatin1(name), png);
        EXPECT_EQ(source->take(10s)->name, QString::fromLatin1(name));
    }
}

TEST_F(WatchedFolder, ReplacesAnOlderPictureOfTheSameName)
{
    start();
    for (int i = 0; i < 2; ++i) {
        write(QStringLiteral("a.png"), png);
        EXPECT_TRUE(source->take(10s));
    }
    EXPECT_EQ(QDir(path(QStringLiteral("done"))).entryList(QDir::Files).size(), 1);
}

TEST_F(WatchedFolder, RemovesPicturesWhereThatIsWanted)
{
    options.removes = true;
    start();
    write(QStringLiteral("a.png"), png);
    EXPECT_TRUE(source->take(10s));
    EXPECT_TRUE(QDir(options.folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
}

TEST_F(WatchedFolder, IsLookedForUntilItIsBack)
{
    start();
    EXPECT_EQ(source->watch(), QString());
    ASSERT_TRUE(QDir(options.folder).removeRecursively());
    const auto lost = source->take(1s);
    ASSERT_FALSE(lost);
    EXPECT_EQ(lost.error().fault, CaptureFault::lost);
    EXPECT_EQ(lost.error().message, options.folder + QStringLiteral(": there is no such folder"));
    EXPECT_EQ(source->watch(), lost.error().message);

    ASSERT_TRUE(QDir().mkdir(options.folder));
    write(QStringLiteral("a.png"), png);
    EXPECT_TRUE(source->take(10s));
    EXPECT_EQ(source->watch(), QString());
}

TEST_F(WatchedFolder, IsInterruptedWhileItWaits)
{
    start();
    std::thread other([this] { source->interrupt(); });
    EXPECT_EQ(source->take(60s).error().fault, CaptureFault::interrupted);
    other.join();
}

TEST_F(WatchedFolder, SaysThatNothingCame)
{
    start();
    EXPECT_EQ(source->take(1ms).error().message, QStringLiteral("no picture arrived in ") + options.folder);
    EXPECT_TRUE(source->configure({}));
    EXPECT_EQ(source->description(), QStringLiteral("watched folder ") + options.folder);
}

TEST_F(WatchedFolder, KnowsWholeFilesByTheirEnds)
{
    for (const auto& [name, bytes] : {std::pair("a.png", &png), std::pair("a.jpg", &jpeg), std::pair("a.bmp", &bmp)}) {
        const QString file = QString::fromLatin1(name);
        write(file, *bytes);
        EXPECT_TRUE(isWholePicture(path(file))) << name;
        write(file, *bytes, 0, bytes->size() - 10);
        EXPECT_FALSE(isWholePicture(path(file))) << name;
    }
    write(QStringLiteral("empty.png"), {});
    EXPECT_FALSE(isWholePicture(path(QStringLiteral("empty.png"))));
    EXPECT_FALSE(isWholePicture(path(QStringLiteral("missing.png"))));
    write(QStringLiteral("a.pgm"), {'P', '5'});
    EXPECT_TRUE(isWholePicture(path(QStringLiteral("a.pgm"))));
}

} // namespace
} // namespace scribo::line
