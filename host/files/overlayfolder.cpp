#include "files/overlayfolder.h"

#include "files/outputfile.h"
#include "resulttext.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>

namespace scribo::host {

Result<void> OverlayFolder::open(const QString& path, const QList<PictureFile>& pictures)
{
    folder = path;
    if (!QDir().mkpath(path)) {
        return failure(path + QStringLiteral(": the folder cannot be made"));
    }
    const QString place = QFileInfo(path).canonicalFilePath();
    for (const PictureFile& picture : pictures) {
        if (QFileInfo(QFileInfo(picture.path).path()).canonicalFilePath() == place) {
            return failure(path + QStringLiteral(": holds pictures to inspect, overlays could replace them"));
        }
    }
    return {};
}

Result<void> OverlayFolder::write(const QString& picture, const QImage& overlay)
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
    if (!writer.write(overlay)) {
        return unwritable(path, writer.errorString());
    }
    return saveOutput(path, png.data());
}

} // namespace scribo::host
