#include "overlayfolder.h"

#include "wholefile.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>

bool OverlayFolder::open(const QString& path, const QList<PictureFile>& pictures, QString* error)
{
    folder = path;
    if (!QDir().mkpath(path)) {
        *error = path + QStringLiteral(": the folder cannot be made");
        return false;
    }
    const QString place = QFileInfo(path).canonicalFilePath();
    for (const PictureFile& picture : pictures) {
        if (QFileInfo(QFileInfo(picture.path).path()).canonicalFilePath() == place) {
            *error = path + QStringLiteral(": holds pictures to inspect, overlays could replace them");
            return false;
        }
    }
    return true;
}

bool OverlayFolder::write(const QString& picture, const QImage& overlay, QString* error)
{
    const QString base = QFileInfo(picture).completeBaseName();
    QString name = base;
    for (int number = 2; used.contains(name); ++number) {
        name = base + QStringLiteral("_%1").arg(number);
    }
    used.insert(name);

    const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
    // Not into the file itself: the writer does not notice when the last bytes meet a full disk.
    QBuffer png;
    QImageWriter writer(&png, "png");
    if (writer.write(overlay)) {
        return writeWholeFile(path, png.data(), error);
    }
    *error = path + QStringLiteral(": cannot be written: ") + writer.errorString();
    return false;
}
