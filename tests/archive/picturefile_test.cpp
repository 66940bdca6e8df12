#include "picturefile.h"

#include "fulldisk.h"
#include "testpictures.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QImage colourImage(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgb(x * 7, y * 5, x ^ y));
        }
    }
    return image;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class PictureFiles : public testing::Test
{
protected:
    QTemporaryDir directory;
    QString path = directory.filePath(QStringLiteral("picture.bmp"));
};

} // namespace

TEST_F(PictureFiles, WritesTheBytesThatQtWrites)
{
    QImage grey(13, 7, QImage::Format_Indexed8);
    grey.setColorCount(256);
    for (int i = 0; i < 256; ++i) {
        grey.setColor(i, qRgb(i, i, i));
    }
    grey.fill(200);
    for (const QImage& image : {colourImage(31, 9), grey, colourImage(8, 8).convertToFormat(QImage::Format_ARGB32)}) {
        ASSERT_TRUE(writePictureFile(image, path));
        const QString reference = directory.filePath(QStringLiteral("reference.bmp"));
        ASSERT_TRUE(image.save(reference, "bmp", 100));
        EXPECT_EQ(contentOf(path), contentOf(reference));
        EXPECT_EQ(QImage(path).convertToFormat(QImage::Format_RGB32), image.convertToFormat(QImage::Format_RGB32));
    }
}

TEST_F(PictureFiles, LeavesNothingButThePicture)
{
    ASSERT_TRUE(writePictureFile(colourImage(31, 9), path));
    EXPECT_EQ(filesIn(directory.path()), QStringList{"picture.bmp"});
}

TEST_F(PictureFiles, OthersMayReadThePicture)
{
    const mode_t mask = umask(022);
    ASSERT_TRUE(writePictureFile(colourImage(4, 4), path));
    umask(mask);
    struct stat status
    {
    };
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

TEST_F(PictureFiles, ReplacesAnOlderPictureOfThatName)
{
    ASSERT_TRUE(writePictureFile(colourImage(300, 300), path));
    ASSERT_TRUE(writePictureFile(colourImage(3, 2), path));
    EXPECT_EQ(QImage(path).size(), QSize(3, 2));
}

TEST_F(PictureFiles, TakesANameAsLongAsTheFileSystemAllows)
{
    const QString longest = directory.filePath(QString(251, 'A') + ".bmp");
    EXPECT_TRUE(writePictureFile(colourImage(3, 2), longest));
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), directory.filePath(QString(252, 'A') + ".bmp")));
    EXPECT_EQ(filesIn(directory.path()).size(), 1);
}

TEST_F(PictureFiles, TakesADoubledSeparator)
{
    EXPECT_TRUE(writePictureFile(colourImage(3, 2), directory.path() + "//picture.bmp"));
    EXPECT_EQ(filesIn(directory.path()), QStringList{"picture.bmp"});
}

TEST_F(PictureFiles, TakesARelativePath)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.path()));
    EXPECT_TRUE(writePictureFile(colourImage(3, 2), QStringLiteral("picture.bmp")));
    QDir::setCurrent(before);
    EXPECT_EQ(filesIn(directory.path()), QStringList{"picture.bmp"});
}

TEST_F(PictureFiles, AnImageWithoutPixelsIsNotWritten)
{
    EXPECT_FALSE(writePictureFile(QImage(), path));
    EXPECT_TRUE(filesIn(directory.path()).isEmpty());
}

TEST_F(PictureFiles, ANameWithANullCharacterIsNotWritten)
{
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), directory.filePath("A") + QChar::Null + ".bmp"));
    EXPECT_TRUE(filesIn(directory.path()).isEmpty());
}

TEST_F(PictureFiles, AMissingOrForbiddenFolderIsNotWrittenTo)
{
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), directory.filePath("missing/picture.bmp")));
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), QStringLiteral("/proc/picture.bmp")));
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), QStringLiteral("/proc/version/picture.bmp")));
    EXPECT_FALSE(QDir(directory.filePath("missing")).exists());
}

TEST_F(PictureFiles, AFolderOfThatNameIsLeftAlone)
{
    ASSERT_TRUE(QDir().mkdir(path));
    EXPECT_FALSE(writePictureFile(colourImage(3, 2), path));
    EXPECT_TRUE(QDir(path).exists());
    EXPECT_TRUE(filesIn(directory.path()).isEmpty());
}

TEST_F(PictureFiles, AFullDiskLeavesNoTrace)
{
    const QImage image = colourImage(200, 100);
    QBuffer bytes;
    ASSERT_TRUE(bytes.open(QIODevice::WriteOnly) && image.save(&bytes, "bmp", 100));
    for (const qint64 room : {qint64(0), qint64(1), qint64(54), bytes.size() / 2, bytes.size() - 1}) {
        const FullDisk full(static_cast<rlim_t>(room));
        EXPECT_FALSE(writePictureFile(image, path)) << room;
        EXPECT_TRUE(filesIn(directory.path()).isEmpty()) << room;
    }
    const FullDisk full(static_cast<rlim_t>(bytes.size()));
    EXPECT_TRUE(writePictureFile(image, path));
}

TEST_F(PictureFiles, AFullDiskLeavesTheOlderPicture)
{
    ASSERT_TRUE(writePictureFile(colourImage(3, 2), path));
    const FullDisk full(1000);
    EXPECT_FALSE(writePictureFile(colourImage(200, 100), path));
    EXPECT_EQ(QImage(path).size(), QSize(3, 2));
    EXPECT_EQ(filesIn(directory.path()), QStringList{"picture.bmp"});
}

TEST_F(PictureFiles, AKilledProcessLeavesNoPartOfAPicture)
{
    const QImage image = colourImage(700, 500);
    for (int round = 0; round < 8; ++round) {
        const QString folder = directory.filePath(QString::number(round));
        ASSERT_TRUE(QDir().mkdir(folder));
        const pid_t writer = fork();
        if (writer == 0) {
            for (int i = 0; i < 1000; ++i) {
                writePictureFile(image, folder + '/' + QString::number(i) + ".bmp");
            }
            _exit(0);
        }
        ASSERT_GT(writer, 0);
        while (filesIn(folder).size() < 2 + round) {
            usleep(100);
        }
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        const QStringList pictures = QDir(folder).entryList(QDir::Files);
        EXPECT_GE(pictures.size(), 1);
        for (const QString& picture : pictures) {
            EXPECT_EQ(QImage(folder + '/' + picture), QImage(image).convertToFormat(QImage::Format_RGB32)) << round;
        }
        EXPECT_LE(filesIn(folder).size(), pictures.size() + 1) << "at most the hidden file of the one writer";
    }
}
