#include "files/picturelist.h"

#include <QFileInfo>

namespace scribo::host {

namespace {

const QStringList pictureNames = {
    QStringLiteral("*.bmp"),
    QStringLiteral("*.dib"),
    QStringLiteral("*.jp2"),
    QStringLiteral("*.jpe"),
    QStringLiteral("*.jpeg"),
    QStringLiteral("*.jpg"),
    QStringLiteral("*.pbm"),
    QStringLiteral("*.pgm"),
    QStringLiteral("*.png"),
    QStringLiteral("*.pnm"),
    QStringLiteral("*.ppm"),
    QStringLiteral("*.tif"),
    QStringLiteral("*.tiff"),
    QStringLiteral("*.webp"),
};

void addFolder(const QString& argument, const QString& path, QList<PictureFile>* pictures)
{
    const QDir folder(path);
    if (!folder.isReadable()) {
        pictures->append({argument, path, QStringLiteral("cannot be read")});
        return;
    }
    // Name filters ignore case.
    const QStringList names = folder.entryList(pictureNames, QDir::Files, QDir::Name);
    if (names.isEmpty()) {
        pictures->append({argument, path, QStringLiteral("holds no pictures")});
    }
    for (const QString& name : names) {
        pictures->append({QDir(argument).filePath(name), folder.filePath(name), {}});
    }
}

} // namespace

QList<PictureFile> listPictures(const QStringList& arguments, const QDir& base)
{
    QList<PictureFile> pictures;
    for (const QString& argument : arguments) {
        const QString path = QDir::cleanPath(base.absoluteFilePath(argument));
        const QFileInfo info(path);
        if (info.isDir()) {
            addFolder(argument, path, &pictures);
        } else {
            pictures.append({argument, path, info.exists() ? QString() : QStringLiteral("does not exist")});
        }
    }
    return pictures;
}

} // namespace scribo::host
