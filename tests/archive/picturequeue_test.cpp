#include "picturearchive.h"

#include "blockedpool.h"
#include "pluginsettings.h"
#include "scribo.h"
#include "scriptedtool.h"
#include "testpictures.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <opencv2/core.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace {

/// The numbers of the pictures in the order in which writers took them. For tests with a single writer.
std::vector<int> taken;

QImage recordingConverter(const cv::Mat& mat)
{
    taken.push_back(pictureNumber(mat));
    return Scribo::cvMat2QImage(mat);
}

QImage throwingConverter(const cv::Mat& mat)
{
    if (pictureNumber(mat) % 3 == 0) {
        throw std::bad_alloc();
    }
    return Scribo::cvMat2QImage(mat);
}

class PictureQueues : public testing::Test
{
protected:
    PictureQueues() { taken.clear(); }

    QString pathOf(int number) const
    {
        return directory.filePath(QStringLiteral("%1.bmp").arg(number, 6, 10, QChar('0')));
    }

    void queue(PictureArchive& archive, int number)
    {
        archive.queuePicture(&tool, numberedPicture(number), pathOf(number));
    }

    /// Whether the folder holds exactly the pictures with numbers from 0 to `count` - 1, each as it was queued.
    void expectPictures(int count) const
    {
        ASSERT_EQ(filesIn(directory.path()).size(), count);
        for (int number = 0; number < count; ++number) {
            EXPECT_TRUE(fileShows(pathOf(number), numberedPicture(number))) << number;
        }
    }

    QTemporaryDir directory;
    ScriptedTool tool;
    PluginSettings settings;
};

} // namespace

TEST_F(PictureQueues, OfThirtyQueuedAtOnceOneIsTakenAndTwentyWait)
{
    BlockedPool pool;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    for (int i = 0; i < 30; ++i) {
        queue(archive, (i * 7) % 30);
    }
    pool.release();
    expectPictures(21);
}

TEST_F(PictureQueues, QueuesAgainAfterAnOverflow)
{
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    {
        const BlockedPool pool;
        for (int number = 30; number < 90; ++number) {
            queue(archive, number);
        }
    }
    EXPECT_EQ(filesIn(directory.path()).size(), 21);
    queue(archive, 500);
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(filesIn(directory.path()).size(), 22);
}

TEST_F(PictureQueues, WritesTheSmallestPathFirst)
{
    BlockedPool pool;
    PictureArchive archive(settings, recordingConverter);
    for (const int number : {5, 2, 9, 0, 7}) {
        queue(archive, number);
    }
    archive.drainPendingPictures();
    EXPECT_EQ(taken, (std::vector<int>{0, 2, 5, 7, 9}));
    pool.release();
    EXPECT_EQ(taken.size(), 5U) << "the writers found nothing left";
}

TEST_F(PictureQueues, APictureWaitingUnderTheSamePathIsReplaced)
{
    BlockedPool pool;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    for (const int number : {1, 2, 3}) {
        archive.queuePicture(&tool, numberedPicture(number), pathOf(0));
    }
    pool.release();
    EXPECT_EQ(filesIn(directory.path()).size(), 1);
    EXPECT_TRUE(fileShows(pathOf(0), numberedPicture(3)));
}

TEST_F(PictureQueues, TheCallersBufferMayBeReusedAtOnce)
{
    BlockedPool pool;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    cv::Mat buffer = numberedPicture(0);
    archive.queuePicture(&tool, buffer, pathOf(0));
    buffer.setTo(0);
    pool.release();
    expectPictures(1);
}

TEST_F(PictureQueues, APartOfAPictureIsSavedAsThatPart)
{
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    const cv::Mat picture = numberedPicture(1, {200, 100});
    const cv::Mat part = picture(cv::Rect(31, 17, 63, 41));
    archive.queuePicture(&tool, part, pathOf(0));
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_TRUE(fileShows(pathOf(0), part));
}

TEST_F(PictureQueues, AColourPictureInRedGreenBlueOrderKeepsItsColours)
{
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    cv::Mat picture(5, 7, CV_8UC3, cv::Scalar(250, 120, 10));
    picture.at<cv::Vec3b>(2, 3) = {1, 2, 3};
    const cv::Mat untouched = picture.clone();
    archive.queuePicture(&tool, picture, pathOf(0));
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_TRUE(fileShows(pathOf(0), untouched));
    EXPECT_EQ(cv::norm(picture, untouched, cv::NORM_INF), 0) << "the host's pixels stay as they are";
}

TEST_F(PictureQueues, AToolThatForbidsSavingStopsAPictureBeforeTheQueue)
{
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    tool.maySave = false;
    queue(archive, 0);
    QThreadPool::globalInstance()->waitForDone();
    expectPictures(0);
}

TEST_F(PictureQueues, APictureThatCannotBeConvertedDoesNotStopTheOthers)
{
    BlockedPool pool;
    PictureArchive archive(settings, throwingConverter);
    for (int number = 0; number < 9; ++number) {
        queue(archive, number);
    }
    archive.queuePicture(&tool, cv::Mat(4, 4, CV_32FC1, cv::Scalar(1)), pathOf(9));
    pool.release();
    EXPECT_EQ(filesIn(directory.path()).size(), 6);
}

TEST_F(PictureQueues, AFolderRemovedWhileWritingLosesItsPicturesOnly)
{
    BlockedPool pool;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    const QString gone = directory.filePath(QStringLiteral("gone/"));
    ASSERT_TRUE(QDir().mkpath(gone));
    for (int number = 0; number < 5; ++number) {
        queue(archive, number);
        archive.queuePicture(&tool, numberedPicture(number), gone + QString::number(number) + ".bmp");
    }
    QDir(gone).removeRecursively();
    pool.release();
    expectPictures(5);
    EXPECT_FALSE(QDir(gone).exists());
}

TEST_F(PictureQueues, AFolderThatComesAndGoesNeverHoldsAPartOfAPicture)
{
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    const QString folder = directory.filePath(QStringLiteral("folder/"));
    std::atomic<bool> done{false};
    std::thread remover([&] {
        while (!done) {
            QDir(folder).removeRecursively();
        }
    });
    const cv::Mat picture = numberedPicture(1, {400, 300});
    for (int number = 0; number < 100; ++number) {
        QDir().mkpath(folder);
        archive.queuePicture(&tool, picture, folder + QString::number(number) + ".bmp");
        QThread::usleep(500);
    }
    done = true;
    remover.join();
    QDir().mkpath(folder);
    archive.queuePicture(&tool, picture, folder + "last.bmp");
    QThreadPool::globalInstance()->waitForDone();
    const QStringList files = filesIn(folder);
    EXPECT_TRUE(files.contains("last.bmp"));
    for (const QString& file : files) {
        EXPECT_TRUE(fileShows(folder + file, picture)) << file.toStdString();
    }
}

// What outlives the archive

TEST_F(PictureQueues, AnArchiveDestroyedWithTwentyWaitingStillWritesThem)
{
    BlockedPool pool;
    auto archive = std::make_unique<PictureArchive>(settings, &Scribo::cvMat2QImage);
    for (int number = 0; number < 20; ++number) {
        queue(*archive, number);
    }
    archive.reset(); // returns although no writer can run
    expectPictures(0);
    pool.release();
    expectPictures(20);
}

TEST_F(PictureQueues, ArchivesDestroyedWhileWritersRunStillWriteTheirPictures)
{
    constexpr int archives = 40;
    for (int i = 0; i < archives; ++i) {
        PictureArchive archive(settings, &Scribo::cvMat2QImage);
        for (int number = 0; number < 5; ++number) {
            queue(archive, 5 * i + number);
        }
    }
    QThreadPool::globalInstance()->waitForDone();
    expectPictures(5 * archives);
}

TEST_F(PictureQueues, TheApplicationsEndWaitsForTheWriters)
{
    EXPECT_EQ(QProcess::execute(SCRIBO_APPLICATION_END, {directory.path()}), 0);
    expectPictures(PictureQueue::maxWaiting);
}
