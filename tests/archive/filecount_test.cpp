#include "filecount.h"

#include "testpictures.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace std::chrono_literals;

TEST(FileCount, CountsRegularFilesOfAnyName)
{
    const QTemporaryDir directory;
    fillFolder(directory.path(), 12);
    EXPECT_EQ(countFiles(directory.path()), 12);
    EXPECT_EQ(countFiles(directory.path() + '/'), 12);
}

TEST(FileCount, LeavesOutFoldersHiddenFilesAndWhatIsNoFile)
{
    const QTemporaryDir directory;
    fillFolder(directory.path(), 1);
    QDir(directory.path()).mkdir(QStringLiteral("folder"));
    QFile hidden(directory.filePath(QStringLiteral(".hidden")));
    ASSERT_TRUE(hidden.open(QIODevice::WriteOnly));
    ASSERT_EQ(mkfifo(QFile::encodeName(directory.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    EXPECT_EQ(countFiles(directory.path()), 1);
}

TEST(FileCount, CountsLinksToFilesButNotToFoldersOrToNothing)
{
    const QTemporaryDir directory;
    fillFolder(directory.path(), 1);
    QFile::link(directory.filePath(QStringLiteral("old0")), directory.filePath(QStringLiteral("toFile")));
    QFile::link(directory.path(), directory.filePath(QStringLiteral("toFolder")));
    QFile::link(directory.filePath(QStringLiteral("gone")), directory.filePath(QStringLiteral("toNothing")));
    EXPECT_EQ(countFiles(directory.path()), 2);
}

TEST(FileCount, AFolderThatCannotBeReadIsEmpty)
{
    EXPECT_EQ(countFiles(QStringLiteral("/proc/version/none")), 0);
    EXPECT_EQ(countFiles(QStringLiteral("/proc/version")), 0);
    EXPECT_EQ(countFiles(QString()), 0);
}

namespace {

/// A folder whose count takes as long and says as much as the test likes.
struct SlowFolder
{
    std::chrono::nanoseconds now = 100s;
    std::chrono::nanoseconds duration = 0ns;
    int files = 0;
    int counts = 0;

    PacedFileCount pacedCount()
    {
        return PacedFileCount(
            [this](const QString&) {
                ++counts;
                now += duration;
                return files;
            },
            [this] { return now; });
    }
};

} // namespace

TEST(PacedFileCount, RepeatsAQuickCountEveryTime)
{
    SlowFolder folder;
    folder.duration = 20ms;
    PacedFileCount count = folder.pacedCount();
    for (folder.files = 0; folder.files < 10; ++folder.files) {
        EXPECT_EQ(count(QStringLiteral("OK")), folder.files);
    }
    EXPECT_EQ(folder.counts, 10);
}

TEST(PacedFileCount, GivesASlowCountAgainForFiftyTimesItsDuration)
{
    SlowFolder folder;
    folder.duration = 40ms;
    folder.files = 40000;
    PacedFileCount count = folder.pacedCount();
    EXPECT_EQ(count(QStringLiteral("OK")), 40000);
    folder.files = 40001;
    folder.now += 2s - 1ns;
    EXPECT_EQ(count(QStringLiteral("OK")), 40000);
    folder.now += 1ns;
    EXPECT_EQ(count(QStringLiteral("OK")), 40001);
    EXPECT_EQ(folder.counts, 2);
}

TEST(PacedFileCount, CountsAnotherFolderAtOnce)
{
    SlowFolder folder;
    folder.duration = 1s;
    folder.files = 100000;
    PacedFileCount count = folder.pacedCount();
    EXPECT_EQ(count(QStringLiteral("Monday")), 100000);
    folder.files = 0;
    EXPECT_EQ(count(QStringLiteral("Tuesday")), 0);
}

TEST(PacedFileCount, TakesTurnsBetweenSlowFoldersWithoutCountingEachTime)
{
    SlowFolder folder;
    folder.duration = 40ms;
    folder.files = 40000;
    PacedFileCount count = folder.pacedCount();
    for (int item = 0; item < 10; ++item) {
        EXPECT_EQ(count(QStringLiteral("NG/ng")), 40000);
        EXPECT_EQ(count(QStringLiteral("NG/ng_notype")), 40000);
    }
    EXPECT_EQ(folder.counts, 2);

    folder.now += 2s; // behind the end of the second count
    folder.files = 40001;
    EXPECT_EQ(count(QStringLiteral("NG/ng_notype")), 40001);
    EXPECT_EQ(count(QStringLiteral("NG/ng")), 40001);
}
