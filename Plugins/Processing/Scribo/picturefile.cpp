#include "picturefile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <cstdio>

namespace {

/// Room for the headers and the colour table of a BMP file, so that encoding does not reallocate.
constexpr int headerBytes = 2048;

QByteArray encodeBmp(const QImage& image)
{
    QByteArray bytes;
    bytes.reserve(static_cast<int>(image.sizeInBytes()) + headerBytes);
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "bmp", 100)) {
        return {};
    }
    return bytes;
}

/// A name that no other writer uses, neither in this process nor on another machine that shares the folder. The file is
/// hidden, so that it is not counted among the pictures. The name's length does not depend on the picture's name, which
/// may be as long as the file system allows.
QString temporaryName(const QString& path)
{
    return QFileInfo(path).path() + QLatin1String("/.scribo-") + QUuid::createUuid().toString(QUuid::Id128);
}

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return false;
    }
    const bool written = file.write(bytes) == bytes.size();
    file.close(); // some file systems report a full disk only now
    return written && file.error() == QFileDevice::NoError;
}

} // namespace

bool writePictureFile(const QImage& image, const QString& path)
{
    if (path.contains(QChar::Null)) { // the system would take the name only as far as that
        return false;
    }
    const QByteArray bytes = encodeBmp(image);
    if (bytes.isEmpty()) {
        return false;
    }

    const QString temporary = temporaryName(path);
    // QFile::rename() does not replace an existing file, the system's rename does.
    if (writeBytes(temporary, bytes)
        && std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) == 0) {
        return true;
    }
    QFile::remove(temporary);
    return false;
}
