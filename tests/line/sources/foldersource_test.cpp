#include "sources/foldersource.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <opencv2/imgcodecs.hpp>
#include <thread>

namespace scribo::line {
namespace {

using namespace std::chrono_literals;

class Folder : public testing::Test
{
protected:
    Folder() { options.folder = folder.path(); }

    void add(const QString& name, int grey) const
    {
        cv::imwrite(folder.filePath(name).toStdString(), cv::Mat(4, 6, CV_8UC1, cv::Scalar(grey)));
    }

    QTemporaryDir folder;
    FolderOptions options;
};

TEST_F(Folder, IsShownInTheOrderOfItsNames)
{
    add(QStringLiteral("b.png"), 2);
    add(QStringLiteral("a.png"), 1);
    QFile(folder.filePath(QStringLiteral("notes.txt"))).open(QIODevice::WriteOnly);
    FolderSource source(options);
    source.open(PictureSource::Mode::triggered);
    EXPECT_EQ(source.watch(), QString());
    const auto first = source.take(1s);
    ASSERT_TRUE(first) << first.error().message.toStdString();
    EXPECT_EQ(first->name, QStringLiteral("a.png"));
    EXPECT_EQ(first->picture.at<uchar>(0, 0), 1);
    EXPECT_EQ(first->takenAt.timeSpec(), Qt::UTC);
    EXPECT_EQ(source.take(1s)->name, QStringLiteral("b.png"));
    const auto end = source.take(1s);
    ASSERT_FALSE(end);
    EXPECT_EQ(end.error().fault, CaptureFault::ended);
    EXPECT_EQ(end.error().message, folder.path() + QStringLiteral(": there are no more pictures"));
    source.close();
    source.open(PictureSource::Mode::triggered);
    EXPECT_EQ(source.take(1s)->name, QStringLiteral("a.png"));
}

TEST_F(Folder, BeginsAnewWhereThatIsWanted)
{
    add(QStringLiteral("a.png"), 1);
    options.repeats = true;
    FolderSource source(options);
    source.open(PictureSource::Mode::triggered);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(source.take(1s)->name, QStringLiteral("a.png"));
    }
}

TEST_F(Folder, CallsAFileThatCannotBeReadIncomplete)
{
    QFile file(folder.filePath(QStringLiteral("a.png")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("\x89PNG\r\n");
    file.close();
    add(QStringLiteral("b.png"), 2);
    FolderSource source(options);
    source.open(PictureSource::Mode::triggered);
    const auto broken = source.take(1s);
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().fault, CaptureFault::incomplete);
    EXPECT_THAT(broken.error().message.toStdString(), testing::StartsWith("a.png: "));
    EXPECT_TRUE(source.take(1s));
}

TEST_F(Folder, WithoutPicturesIsAFaultUntilThereAreSome)
{
    FolderSource source(options);
    source.open(PictureSource::Mode::triggered);
    EXPECT_EQ(source.watch(), folder.path() + QStringLiteral(": holds no picture"));
    EXPECT_EQ(source.take(1s).error().fault, CaptureFault::lost);
    add(QStringLiteral("a.png"), 1);
    EXPECT_TRUE(source.take(1s));
    EXPECT_EQ(source.watch(), QString());
}

TEST_F(Folder, ThatIsNotThereIsAFault)
{
    options.folder = folder.filePath(QStringLiteral("missing"));
    FolderSource source(options);
    source.open(PictureSource::Mode::free);
    const auto taken = source.take(1s);
    ASSERT_FALSE(taken);
    EXPECT_EQ(taken.error().fault, CaptureFault::lost);
    EXPECT_EQ(taken.error().message, options.folder + QStringLiteral(": there is no such folder"));
}

TEST_F(Folder, KeepsTheTimeBetweenFreePictures)
{
    add(QStringLiteral("a.png"), 1);
    add(QStringLiteral("b.png"), 2);
    options.interval = 60s;
    FolderSource source(options);
    source.open(PictureSource::Mode::free);
    EXPECT_TRUE(source.take(1s));
    const auto early = source.take(1ms);
    ASSERT_FALSE(early);
    EXPECT_EQ(early.error().fault, CaptureFault::timeout);
    EXPECT_EQ(early.error().message, QStringLiteral("the next picture is not due yet"));
}

TEST_F(Folder, IsInterruptedWhileItWaits)
{
    add(QStringLiteral("a.png"), 1);
    options.interval = 60s;
    FolderSource source(options);
    source.open(PictureSource::Mode::free);
    EXPECT_TRUE(source.take(1s));
    std::thread other([&source] { source.interrupt(); });
    EXPECT_EQ(source.take(60s).error().fault, CaptureFault::interrupted);
    EXPECT_EQ(source.take(60s).error().message, QStringLiteral("the source was interrupted"));
    other.join();
}

TEST_F(Folder, HasNothingToSetUp)
{
    FolderSource source(options);
    EXPECT_TRUE(source.configure({}));
    EXPECT_EQ(source.description(), QStringLiteral("folder ") + folder.path());
}

} // namespace
} // namespace scribo::line
