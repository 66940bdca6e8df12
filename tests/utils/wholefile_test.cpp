#include "wholefile.h"

#include "fulldisk.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

using scribo::isReplaceable;
using scribo::Result;
using scribo::writeWholeFile;

namespace {

class WholeFile : public testing::Test
{
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    QByteArray read(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
};

} // namespace

TEST_F(WholeFile, TakesThePlaceOfAnEarlierOne)
{
    for (const char* const bytes : {"old", "new"}) {
        const Result<void> written = writeWholeFile(path("file"), bytes);
        EXPECT_TRUE(written) << written.error().message;
    }
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"file"});
}

TEST_F(WholeFile, HoldsExactlyTheBytes)
{
    const QByteArray bytes("a\0\r\n\xff", 5);
    ASSERT_TRUE(writeWholeFile(path("file"), bytes.constData(), 4));
    EXPECT_EQ(read("file"), bytes.left(4));
    ASSERT_TRUE(writeWholeFile(path("empty"), nullptr, 0));
    EXPECT_TRUE(QFile::exists(path("empty")));
    EXPECT_EQ(read("empty"), "");
}

TEST_F(WholeFile, SaysWhyItCannotBeWritten)
{
    const Result<void> written = writeWholeFile(path("none/file"), "new");
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().message, "No such file or directory");
}

TEST_F(WholeFile, LeavesTheEarlierOneWhenTheDiskIsFull)
{
    ASSERT_TRUE(writeWholeFile(path("file"), "old"));
    // Small enough to wait in a buffer until it is flushed, and too large for one.
    for (const int size : {3, 100'000}) {
        Result<void> written;
        {
            const FullDisk full;
            written = writeWholeFile(path("file"), QByteArray(size, 'x'));
        }
        ASSERT_FALSE(written) << size;
        EXPECT_EQ(written.error().message, "File too large");
        EXPECT_EQ(read("file"), "old");
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"file"});
    }
}

TEST_F(WholeFile, ReplacesOnlyFiles)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path("fifo")).constData(), 0600), 0);
    ASSERT_TRUE(QDir().mkdir(path("folder")));
    ASSERT_TRUE(QFile::link(path("fifo"), path("link")));
    for (const char* const name : {"fifo", "folder", "link"}) {
        EXPECT_FALSE(isReplaceable(path(name))) << name;
        const Result<void> written = writeWholeFile(path(name), "new");
        ASSERT_FALSE(written) << name;
        EXPECT_EQ(written.error().message, "this is no file that could be replaced");
        EXPECT_TRUE(QFileInfo::exists(path(name)) && !QFileInfo(path(name)).isFile()) << name;
    }
}

TEST_F(WholeFile, IsReplacedThroughALink)
{
    ASSERT_TRUE(writeWholeFile(path("file"), "old"));
    ASSERT_TRUE(QFile::link(path("file"), path("link")));
    EXPECT_TRUE(isReplaceable(path("link")));
    EXPECT_TRUE(isReplaceable(path("none")));
    ASSERT_TRUE(writeWholeFile(path("link"), "new"));
    EXPECT_TRUE(QFileInfo(path("link")).isSymLink());
    EXPECT_EQ(read("file"), "new");
}
