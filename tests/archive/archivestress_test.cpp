#include "picturearchive.h"

#include "pluginsettings.h"
#include "sanitizers.h"
#include "scribo.h"
#include "scriptedtool.h"
#include "testpictures.h"

#include <QDir>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr int threadCount = 8;
constexpr int pictureCount = underSanitizer ? 2000 : 10000;

/// How often each picture was handed to a writer, and how many more may be queued without an overflow.
std::array<std::atomic<int>, pictureCount> conversions;
QSemaphore freePlaces;

QImage countingConverter(const cv::Mat& mat)
{
    ++conversions[pictureNumber(mat)];
    freePlaces.release();
    return Scribo::cvMat2QImage(mat);
}

class ArchivesUnderStress : public testing::Test
{
protected:
    ArchivesUnderStress()
    {
        for (auto& conversion : conversions) {
            conversion = 0;
        }
        freePlaces.tryAcquire(freePlaces.available());
        freePlaces.release(PictureQueue::maxWaiting);
        QThreadPool::globalInstance()->setMaxThreadCount(threadCount);
    }

    QString pathOf(int number) const { return directory.filePath(QString::number(number) + ".bmp"); }

    /// Queues all pictures from eight threads, calling `pace` before each, and waits for the writers.
    template <typename Pace>
    void queueAll(Pace pace)
    {
        PictureArchive archive(settings, countingConverter);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&, thread] {
                for (int number = thread; number < pictureCount; number += threadCount) {
                    pace();
                    archive.queuePicture(&tool, numberedPicture(number), pathOf(number));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QThreadPool::globalInstance()->waitForDone();
    }

    /// Expects a whole file for each picture that was handed to a writer, exactly once, and no other file.
    /// Returns how many there are.
    int expectOneFileForEachConversion() const
    {
        int written = 0;
        for (int number = 0; number < pictureCount; ++number) {
            EXPECT_LE(conversions[number], 1) << number;
            if (conversions[number] == 0) {
                continue;
            }
            ++written;
            EXPECT_TRUE(fileShows(pathOf(number), numberedPicture(number))) << number;
        }
        EXPECT_EQ(filesIn(directory.path()).size(), written);
        return written;
    }

    QTemporaryDir directory;
    ScriptedTool tool;
    PluginSettings settings;
};

} // namespace

TEST_F(ArchivesUnderStress, WithNeverMoreThanTwentyWaitingEveryPictureIsWritten)
{
    queueAll([] { freePlaces.acquire(); });
    EXPECT_EQ(expectOneFileForEachConversion(), pictureCount);
}

TEST_F(ArchivesUnderStress, WithMoreOnlyTheSurplusIsMissing)
{
    queueAll([] {});
    EXPECT_GE(expectOneFileForEachConversion(), PictureQueue::maxWaiting + 1);
    // Nothing but an overflow drops a picture, and an overflow drops the greatest path.
    std::vector<QString> paths;
    for (int number = 0; number < pictureCount; ++number) {
        paths.push_back(pathOf(number));
    }
    const auto smallest = std::min_element(paths.begin(), paths.end()) - paths.begin();
    EXPECT_EQ(conversions[smallest], 1);
}

TEST_F(ArchivesUnderStress, SeveralArchivesFillOneFolder)
{
    tool.directory = directory.path() + '/';
    std::vector<std::thread> threads;
    constexpr int each = pictureCount / 40;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([this, thread] {
            PluginSettings own;
            own.saveSwitch[0] = true;
            own.okSaveLimit = pictureCount;
            PictureArchive archive(own, countingConverter);
            for (int i = 0; i < each; ++i) {
                const int number = thread * each + i;
                freePlaces.acquire();
                archive.savePicture(&tool, "model", okRecord(std::to_string(thread)), 1, numberedPicture(number));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QThreadPool::globalInstance()->waitForDone();

    const QString folder = directory.filePath("AISavePic/model_C1_T1/OK/");
    const QStringList files = filesIn(folder);
    EXPECT_EQ(files.size(), each * threadCount);
    for (const QString& file : files) {
        EXPECT_FALSE(QImage(folder + file).isNull()) << file.toStdString();
    }
}
